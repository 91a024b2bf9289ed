#include "fakes/fake_serial_port.h"
#include "fakes/scripted_dialogs.h"
#include "link/comms_link_window.h"

#include <QCoreApplication>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <gtest/gtest.h>

using namespace kdx;
using namespace kdx::test;

namespace {

struct CountingSink : MessageSink, LinkLossListener {
    int cyclic = 0, good = 0, bad = 0, losses = 0;
    void PutCyclicMsg(const MsgView&) override { ++cyclic; }
    void PutCyclicQvaneMsg(const MsgView&) override { ++cyclic; }
    void PutMemoryMsg(const MsgView&) override {}
    void PutAxisMemoryMsg(const MsgView&) override {}
    void PutMessageReceived(bool g) override { g ? ++good : ++bad; }
    void PutCommsJustWentBad() override { ++losses; }
};

struct Rig {
    FakeSerialPort port;
    ScriptedDialogs dialogs;
    CountingSink sink;
    CommsLink link{port, dialogs};
    Rig()
    {
        link.setMessageSink(&sink);
        link.setLinkLossListener(&sink);
    }
};

} // namespace

TEST(CommsLinkWindow, ScanShowsOpenablePortsAndOpensTheFirst)
{
    Rig r;
    r.port.ports = {"/dev/ttyS0", "/dev/ttyUSB0", "/dev/ttyUSB1"};
    r.port.refuse = {"/dev/ttyS0"};
    r.link.Form_Load();
    EXPECT_TRUE(r.dialogs.boxes.empty()); // port 1 is not available: refused silently
    EXPECT_FALSE(r.link.PortOpen);
    EXPECT_FALSE(r.link.CommsPortob[0]->isVisibleTo(&r.link));
    EXPECT_TRUE(r.link.CommsPortob[1]->isVisibleTo(&r.link));
    EXPECT_EQ(r.link.CommsPortob[1]->text(), "ttyUSB0");
    EXPECT_FALSE(r.link.ScanMsglb->isVisibleTo(&r.link));
    QTest::mouseClick(r.link.CommsPortob[2], Qt::LeftButton);
    EXPECT_TRUE(r.link.PortOpen);
    EXPECT_EQ(r.port.openName, "/dev/ttyUSB1");
    EXPECT_TRUE(r.link.CommsPortob[2]->isChecked());
    // Rescan while connected: closed, tested, reopened on the same port.
    QTest::mouseClick(r.link.RescanCOMportscb, Qt::LeftButton);
    EXPECT_TRUE(r.link.PortOpen);
    EXPECT_EQ(r.port.openName, "/dev/ttyUSB1");
}

TEST(CommsLinkWindow, NoPortsMeansEveryButtonHiddenAndNoBox)
{
    Rig r;
    r.port.ports.clear();
    r.link.Form_Load();
    for (auto* b : r.link.CommsPortob) EXPECT_FALSE(b->isVisibleTo(&r.link));
    EXPECT_FALSE(r.link.PortOpen);
    EXPECT_TRUE(r.dialogs.boxes.empty());
    OutMsgBuffer m{};
    m[0] = 3; m[1] = 112; m[2] = 115;
    r.link.SendMessage(m); // nothing written, no error
    EXPECT_TRUE(r.port.written.empty());
    EXPECT_TRUE(r.dialogs.boxes.empty());
}

TEST(CommsLinkWindow, OpenFailureSaysWhyAndStaysClosed)
{
    Rig r;
    r.link.Form_Load();
    ASSERT_TRUE(r.link.PortOpen);
    r.port.refuse = {"/dev/ttyUSB1"};
    r.link.PortAvailable[2] = true;
    r.link.SelectCommsPort(2);
    ASSERT_EQ(r.dialogs.boxes.size(), 1u);
    EXPECT_EQ(r.dialogs.boxes[0].prompt, "Error opening comms port 2 : Permission denied");
    EXPECT_EQ(r.dialogs.boxes[0].title, "Comms Port");
    EXPECT_EQ(r.dialogs.boxes[0].style, box::Critical);
    EXPECT_FALSE(r.link.PortOpen);
}

TEST(CommsLinkWindow, SendFramesAndAWriteFailureIsReportedOnce)
{
    Rig r;
    r.link.Form_Load();
    OutMsgBuffer m{};
    m[0] = 3; m[1] = 254; m[2] = 257;
    r.link.SendMessage(m);
    EXPECT_EQ(r.port.written, (std::vector<uint8_t>{0x5A, 3, 0xFE, 0x01}));
    r.port.failWrites = true;
    r.link.SendMessage(m);
    r.link.SendMessage(m);
    QCoreApplication::sendPostedEvents();
    ASSERT_EQ(r.dialogs.boxes.size(), 1u);
    EXPECT_EQ(r.dialogs.boxes[0].prompt, "Error writing to comms port: Input/output error. Please reselect comms port");
    // Selecting the port again resumes sending.
    r.port.failWrites = false;
    r.port.written.clear();
    r.link.CommsPortob_Click(0);
    r.link.SendMessage(m);
    EXPECT_EQ(r.port.written.size(), 4u);
}

TEST(CommsLinkWindow, BytesReachTheReceiverUnlessAPlaybackRuns)
{
    Rig r;
    r.link.Form_Load();
    const auto frame = buildFrame(121, std::vector<uint8_t>(45, 0));
    r.port.deliver(frame, 1);
    EXPECT_EQ(r.sink.cyclic, 1);
    r.link.PlaybackActive = true;
    r.port.deliver(frame, 7);
    EXPECT_EQ(r.sink.cyclic, 1);
    // Watchdog: one report per loss.
    r.link.CommsTimeout_Timer();
    r.link.CommsTimeout_Timer();
    r.link.CommsTimeout_Timer();
    EXPECT_EQ(r.sink.losses, 1);
}

TEST(CommsLinkWindow, UnpluggedPortClosesWithOneMessageAndCanBeSelectedAgain)
{
    Rig r;
    r.link.Form_Load();
    ASSERT_TRUE(r.link.PortOpen);
    r.port.unplug();
    QCoreApplication::processEvents(); // the message is shown after the port's signal returns
    EXPECT_FALSE(r.link.PortOpen);
    ASSERT_EQ(r.dialogs.boxes.size(), 1u);
    EXPECT_NE(r.dialogs.boxes[0].prompt.find("/dev/ttyUSB0"), std::string::npos);
    OutMsgBuffer m{};
    m[0] = 3; m[1] = 112; m[2] = 115;
    r.link.SendMessage(m);
    EXPECT_EQ(r.dialogs.boxes.size(), 1u);
    r.port.ports.insert(r.port.ports.begin(), "/dev/ttyUSB0"); // plugged back in
    QTest::mouseClick(r.link.RescanCOMportscb, Qt::LeftButton);
    QTest::mouseClick(r.link.CommsPortob[0], Qt::LeftButton);
    EXPECT_TRUE(r.link.PortOpen);
}

TEST(CommsLinkWindow, CloseBoxHidesInsteadOfClosing)
{
    Rig r;
    r.link.show();
    r.link.close();
    EXPECT_FALSE(r.link.isVisible());
    r.link.Form_Load();
    EXPECT_TRUE(r.link.PortOpen);
    r.link.unload();
    EXPECT_FALSE(r.port.isOpen());
}
