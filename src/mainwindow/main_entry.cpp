#include "mainwindow/main_entry.h"

#include "core/host_numeric.h"
#include "link/comms_link_window.h"
#include "platform/qt_guard.h"

#include <QLabel>
#include <QStatusBar>
#include <QTimer>
#include <QVBoxLayout>

namespace kdx {

MainEntry::MainEntry(Workspace& ws, QWidget* parent) : QMainWindow(parent), ws_(ws)
{
    setObjectName("MainEntry");
    setWindowTitle("KDX Tool");
    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);
    layout->addStretch(1);
    setCentralWidget(central);

    CommsQualitylb = new QLabel(this);
    CommsQualitylb->setObjectName("CommsQualitylb");
    CommsQualitylb->setToolTip("Comms quality: messages received against the 100 per second expected");
    statusBar()->addPermanentWidget(CommsQualitylb);

    CommsQualityTmr = new QTimer(this);
    CommsQualityTmr->setObjectName("CommsQualityTmr");
    CommsQualityTmr->setInterval(500);
    connect(CommsQualityTmr, &QTimer::timeout, this, [this] { guarded([&] { CommsQualityTmr_Timer(); }); });
}

MainEntry::~MainEntry() = default;

void MainEntry::Form_Load() { CommsQualityTmr->start(); }

void MainEntry::PutCyclicMsg(const MsgView&) {}
void MainEntry::PutCyclicQvaneMsg(const MsgView&) {}
void MainEntry::PutMemoryMsg(const MsgView&) {}
void MainEntry::PutAxisMemoryMsg(const MsgView&) {}

void MainEntry::PutMessageReceived(bool good)
{
    if (good) {
        GoodMsgCount = checked16(static_cast<long long>(GoodMsgCount) + 1);
    } else if (BadMsgCount > 32760) {
        BadMsgCount = 0;
    } else {
        ++BadMsgCount;
    }
}

void MainEntry::CommsQualityTmr_Timer()
{
    // 50 messages are expected per tick; 49 is deliberately taken as a full count so one
    // message of jitter still reads as perfect.
    if (GoodMsgCount == 49 || GoodMsgCount >= 51) GoodMsgCount = 50;
    CommsQuality = toSingle(static_cast<double>(GoodMsgCount) / 50.0);
    const QString text = QString::fromStdString(Format(CommsQuality, "0%"));
    if (CommsQualitylb->text() != text) CommsQualitylb->setText(text);
    GoodMsgCount = 0;
}

void MainEntry::SendMessage()
{
    if (ws_.comms) ws_.comms->SendMessage(OutMsg);
}

} // namespace kdx

#include "moc_main_entry.cpp"
