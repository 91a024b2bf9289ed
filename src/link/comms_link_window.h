#pragma once
// The "Comms Link" window: owns the serial port, feeds the receiver, frames outgoing
// messages and runs the link watchdogs. It knows the rest of the program only through
// the message sink and the link-loss listener.
#include "link/frame.h"
#include "link/message_sink.h"
#include "link/receiver.h"

#include <QWidget>

#include <array>
#include <string>
#include <vector>

class QGroupBox;
class QLabel;
class QPushButton;
class QRadioButton;
class QTimer;

namespace kdx {

class Dialogs;
class SerialPort;

class CommsLink : public QWidget {
    Q_OBJECT
public:
    static constexpr int PortCount = 18;

    CommsLink(SerialPort& port, Dialogs& dialogs, QWidget* parent = nullptr);
    ~CommsLink() override;

    void setMessageSink(MessageSink* sink) { rx_.setSink(sink); }
    void setLinkLossListener(LinkLossListener* loss) { rx_.setLossListener(loss); }

    // Window load: settings, port scan, port selection, receiver guard cleared.
    void Form_Load();
    // Frames and transmits one message from the shared outgoing buffer.
    void SendMessage(const OutMsgBuffer& msg);
    void ResetSync() { rx_.ResetSync(); }
    bool GetCommsGood() const { return rx_.GetCommsGood(); }
    // Opens port number `port` (1 .. 18) of the last scan.
    void SelectCommsPort(int port);
    // Selects the port with this name, adding it to the list when the scan missed it.
    bool selectPortByName(const std::string& name);
    void SetBaudForKDX();
    void SetBaudForQVane();

    // Handlers.
    void RescanCOMportscb_Click();
    void CommsPortob_Click(int index);
    void CommsTimeout_Timer();
    void Comms2Timeout_Timer();
    // Bytes from the port (the receive event).
    void onPortBytes(std::span<const uint8_t> bytes);
    // Lets the window close for real (the program is ending) and closes the port.
    void unload();

    Receiver& receiver() { return rx_; }
    const Receiver& receiver() const { return rx_; }
    std::string portName(int port) const;
    std::string currentPortName() const { return PortOpen ? portName(CurrentPort) : std::string(); }

    // Port state.
    bool PortOpen = false;
    int CurrentPort = 1;
    std::array<bool, PortCount + 1> PortAvailable{}; // 1-based
    bool PlaybackActive = false;
    // The second activity watchdog: bytes seen, sampled every 200 ms.
    uint16_t ActivityCount = 0;
    uint16_t ActivitySnapshot = 0;
    bool ActivityGood = false;

    // Controls.
    QGroupBox* Frame1 = nullptr;
    std::array<QRadioButton*, PortCount> CommsPortob{};
    QPushButton* RescanCOMportscb = nullptr;
    QLabel* ScanMsglb = nullptr;
    QLabel* CommsStatuslb = nullptr;
    QTimer* CommsTimeout = nullptr;
    QTimer* Comms2Timeout = nullptr;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void PortScan();
    void onPortLost(const std::string& reason);
    void checkPortButton(int port);
    void showStatus();

    SerialPort& port_;
    Dialogs& dialogs_;
    Receiver rx_;
    std::vector<std::string> names_;
    bool unloading_ = false;
    int32_t shownErrors_ = -1;
    std::string shownStatus_;
};

} // namespace kdx
