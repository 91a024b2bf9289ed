#pragma once
// The main window: the module's configuration, its live values and the connection
// choices. It is the message sink of the link.
#include "link/frame.h"
#include "link/message_sink.h"
#include "mainwindow/workspace.h"

#include <QMainWindow>

class QLabel;
class QTimer;

namespace kdx {

class MainEntry : public QMainWindow, public MessageSink {
    Q_OBJECT
public:
    explicit MainEntry(Workspace& ws, QWidget* parent = nullptr);
    ~MainEntry() override;

    void Form_Load();

    // Message sink.
    void PutCyclicMsg(const MsgView& msg) override;
    void PutCyclicQvaneMsg(const MsgView& msg) override;
    void PutMemoryMsg(const MsgView& msg) override;
    void PutAxisMemoryMsg(const MsgView& msg) override;
    void PutMessageReceived(bool good) override;

    // Sends the shared outgoing buffer through the link.
    void SendMessage();

    void CommsQualityTmr_Timer();

    // Comms quality: messages counted between 500 ms ticks (50 expected).
    int16_t GoodMsgCount = 0;
    int32_t BadMsgCount = 0;
    float CommsQuality = 0;
    OutMsgBuffer OutMsg{};

    QLabel* CommsQualitylb = nullptr;
    QTimer* CommsQualityTmr = nullptr;

private:
    Workspace& ws_;
};

} // namespace kdx
