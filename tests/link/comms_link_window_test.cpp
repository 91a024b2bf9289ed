#include "fakes/fake_serial_port.h"
#include "fakes/scripted_dialogs.h"
#include "link/comms_link_window.h"

#include <QCoreApplication>
#include <QDir>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

using namespace kdx;
using namespace kdx::test;

namespace {

struct CountingSink : MessageSink {
    int cyclic = 0;
    void PutCyclicMsg(const MsgView&) override { ++cyclic; }
    void PutCyclicQvaneMsg(const MsgView&) override { ++cyclic; }
    void PutMemoryMsg(const MsgView&) override {}
    void PutAxisMemoryMsg(const MsgView&) override {}
    void PutMessageReceived(bool) override {}
};

struct Rig {
    FakeSerialPort port;
    ScriptedDialogs dialogs;
    CountingSink sink;
    CommsLink link{port, dialogs};
    Rig() { link.setMessageSink(&sink); }
    // The radio buttons checked, by index.
    std::vector<int> checked() const
    {
        std::vector<int> on;
        for (int i = 0; i < CommsLink::PortCount; ++i)
            if (link.CommsPortob[static_cast<std::size_t>(i)]->isChecked()) on.push_back(i);
        return on;
    }
};

PortIdentity adapter(std::string path, std::string serial)
{
    PortIdentity p = PortIdentity::at(std::move(path));
    p.description = "FT232R USB UART";
    p.serialNumber = std::move(serial);
    p.vendorId = 0x0403;
    p.productId = 0x6001;
    return p;
}

OutMsgBuffer restart(int length)
{
    OutMsgBuffer m{};
    m[0] = static_cast<int16_t>(length);
    m[1] = 254;
    m[2] = 257;
    return m;
}

} // namespace

TEST(CommsLinkWindow, CaptionsAndTipsAreTheSystems)
{
    Rig r;
    const auto text = [](const QWidget* w) {
        if (auto* b = qobject_cast<const QAbstractButton*>(w)) return b->text();
        if (auto* l = qobject_cast<const QLabel*>(w)) return l->text();
        if (auto* g = qobject_cast<const QGroupBox*>(w)) return g->title();
        return w->windowTitle();
    };
    struct Case {
        const QWidget* control;
        const char* text;
        const char* tip; // nullptr: not checked
    };
    const Case cases[] = {
        {&r.link, "Comms Link", nullptr},
        {r.link.Frame1, "Valid Comms Ports", nullptr},
        {r.link.RescanCOMportscb, "Scan", "Scan and show available COM ports"},
        {r.link.ScanMsglb, "Please wait ...", nullptr},
        {r.link.CommsFileIPFr, "File", nullptr},
        {r.link.LogFileInChangecb, "Change", "Select a new data-file to read from"},
        {r.link.StartLogIn, "Start", "Begin reading data from file"},
        {r.link.PauseLogIn, "Pause", "Pause data-play"},
        {r.link.StopLogIn, "Stop", "Stop playing data"},
        {r.link.Rateob[0], "Max", nullptr},
        {r.link.Rateob[1], " x2", nullptr},
        {r.link.Rateob[2], "x1", nullptr},
        {r.link.Rateob[3], "x 0.5", nullptr},
        {r.link.MarkStartcb, "Mark Start", nullptr},
        {r.link.MarkEndcb, "Mark End", nullptr},
        {r.link.MarkStarttb, "0K", nullptr},
        {r.link.MarkEndtb, "0K", nullptr},
        {r.link.Trimcb, "Write File", nullptr},
        {r.link.Trimtb, "0K", nullptr},
        {r.link.KProcessedlab, "0K", nullptr},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(text(c.control).toStdString(), c.text) << c.control->objectName().toStdString();
        if (c.tip) {
            EXPECT_EQ(c.control->toolTip().toStdString(), c.tip) << c.control->objectName().toStdString();
        }
    }
    // D:\Logs\Run 0.Log, with the default folder where this system keeps it.
    EXPECT_EQ(r.link.LogFileInName->text(), QDir::homePath() + "/Logs/Run 0.Log");
}

TEST(CommsLinkWindow, ScanShowsOpenablePortsAndOpensTheFirst)
{
    Rig r;
    r.port.ports = {"/dev/ttyS0", "/dev/ttyUSB0", "/dev/ttyUSB1"};
    r.port.refuse = {"/dev/ttyS0"};
    r.port.identities["/dev/ttyUSB0"] = adapter("/dev/ttyUSB0", "A9X3");
    r.link.Form_Load();
    EXPECT_TRUE(r.dialogs.boxes.empty()); // port 1 is not available: refused silently
    EXPECT_FALSE(r.link.PortOpen);
    EXPECT_FALSE(r.link.CommsPortob[0]->isVisibleTo(&r.link));
    EXPECT_TRUE(r.link.CommsPortob[1]->isVisibleTo(&r.link));
    EXPECT_EQ(r.link.CommsPortob[1]->text(), "ttyUSB0");
    // Beside each button its path and what the adapter says of itself; the same in its tip.
    EXPECT_EQ(r.link.CommsPortlb[1]->text(), "/dev/ttyUSB0, FT232R USB UART, serial number A9X3");
    EXPECT_EQ(r.link.CommsPortob[1]->toolTip(),
              "/dev/ttyUSB0\nFT232R USB UART\nSerial number: A9X3\nUSB vendor:product 0403:6001");
    EXPECT_EQ(r.link.CommsPortlb[2]->text(), "/dev/ttyUSB1");
    EXPECT_EQ(r.link.CommsPortob[2]->toolTip(), "/dev/ttyUSB1");
    EXPECT_FALSE(r.link.ScanMsglb->isVisibleTo(&r.link));
    QTest::mouseClick(r.link.CommsPortob[2], Qt::LeftButton);
    EXPECT_TRUE(r.link.PortOpen);
    EXPECT_EQ(r.port.openName, "/dev/ttyUSB1");
    EXPECT_TRUE(r.link.CommsPortob[2]->isChecked());
    // Rescan while connected: closed, tested, reopened on the same port.
    QTest::mouseClick(r.link.RescanCOMportscb, Qt::LeftButton);
    EXPECT_TRUE(r.link.PortOpen);
    EXPECT_EQ(r.port.openName, "/dev/ttyUSB1");
    // No ports left: every button hidden, nothing sent, and not a word.
    r.port.ports.clear();
    r.link.RescanCOMportscb_Click();
    for (auto* b : r.link.CommsPortob) EXPECT_FALSE(b->isVisibleTo(&r.link));
    EXPECT_FALSE(r.link.PortOpen);
    r.port.written.clear();
    r.link.SendMessage(restart(3));
    QCoreApplication::processEvents();
    EXPECT_TRUE(r.port.written.empty());
    EXPECT_TRUE(r.dialogs.boxes.empty());
}

// A port that fails to open says why; a port the scan did not find is refused without
// a word, and the button of the port last opened is checked again, open or not.
TEST(CommsLinkWindow, OpenFailureSaysWhyAndARefusedChoiceChecksTheCurrentPortAgain)
{
    for (bool stillOpen : {true, false}) {
        SCOPED_TRACE(stillOpen ? "port open" : "port closed by a failed open");
        Rig r;
        r.port.ports = {"/dev/ttyUSB0", "/dev/ttyUSB1", "/dev/ttyUSB2"};
        r.link.Form_Load();
        ASSERT_EQ(r.port.openName, "/dev/ttyUSB0");
        r.link.CommsPortob_Click(1);
        ASSERT_EQ(r.link.CurrentPort, 2);
        if (!stillOpen) {
            r.port.refuse = {"/dev/ttyUSB2"};
            r.link.CommsPortob[2]->click();
            ASSERT_EQ(r.dialogs.boxes.size(), 1u);
            EXPECT_EQ(r.dialogs.boxes[0].prompt, "Error opening comms port 3 : Permission denied");
            EXPECT_EQ(r.dialogs.boxes[0].title, "Comms Port");
            EXPECT_EQ(r.dialogs.boxes[0].style, box::Critical);
            EXPECT_FALSE(r.link.PortOpen);
        }
        r.link.SelectCommsPort(9); // no such port
        EXPECT_EQ(r.checked(), std::vector<int>{1});
        EXPECT_EQ(r.link.PortOpen, stillOpen);
        EXPECT_EQ(r.dialogs.boxes.size(), stillOpen ? 0u : 1u);
    }
}

TEST(CommsLinkWindow, APortNamedOnTheCommandLineIsSelectedHoweverManyTheSystemLists)
{
    for (int listed : {2, 17, 18, 25}) {
        SCOPED_TRACE(listed);
        Rig r;
        r.port.ports.clear();
        for (int i = 0; i < listed; ++i) r.port.ports.push_back("/dev/ttyS" + std::to_string(i + 10));
        r.link.Form_Load();
        r.port.ports.push_back("/dev/kdx-line"); // openable, listed after the system's own
        ASSERT_TRUE(r.link.selectPortByName("/dev/kdx-line"));
        const int button = std::min(listed, CommsLink::PortCount - 1);
        EXPECT_EQ(r.port.openName, "/dev/kdx-line");
        EXPECT_EQ(r.link.CommsPortob[static_cast<std::size_t>(button)]->text(), "kdx-line");
        EXPECT_TRUE(r.link.CommsPortob[static_cast<std::size_t>(button)]->isVisibleTo(&r.link));
        EXPECT_EQ(r.checked(), std::vector<int>{button});
        r.link.RescanCOMportscb_Click(); // keeps its place and stays selected
        EXPECT_EQ(r.port.openName, "/dev/kdx-line");
        EXPECT_EQ(r.checked(), std::vector<int>{button});
        EXPECT_TRUE(r.dialogs.boxes.empty());
    }
}

// A failed write and an element 0 above 255 say the same, once; the start byte of the
// second has gone out already. An adapter pulled out during the write says that instead.
// Selecting the port again resumes sending.
TEST(CommsLinkWindow, AFailedSendIsReportedOnceAndClosesTheLinkUntilReselected)
{
    struct Case {
        bool failWrites, unplug;
        int length;
        std::vector<uint8_t> written;
        const char* prompt;
    };
    const Case cases[] = {
        {true, false, 3, {}, "Error writing to comms port: Input/output error. Please reselect comms port"},
        {false, false, 256, {0x5A}, "Error writing to comms port: Overflow. Please reselect comms port"},
        {false,
         true,
         3,
         {},
         "Comms port /dev/ttyUSB0 was lost: Resource temporarily unavailable. It reopens by itself when it is back; or select another port"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.prompt);
        Rig r;
        r.link.Form_Load();
        r.link.SendMessage(restart(3));
        EXPECT_EQ(r.port.written, (std::vector<uint8_t>{0x5A, 3, 0xFE, 0x01}));
        r.port.written.clear();
        r.port.failWrites = c.failWrites;
        r.port.unplugOnWrite = c.unplug;
        r.link.SendMessage(restart(c.length));
        r.link.SendMessage(restart(c.length));
        EXPECT_FALSE(r.link.PortOpen);
        QCoreApplication::processEvents(); // the box comes once the sender has returned
        EXPECT_EQ(r.port.written, c.written);
        ASSERT_EQ(r.dialogs.boxes.size(), 1u);
        EXPECT_EQ(r.dialogs.boxes[0].prompt, c.prompt);
        EXPECT_EQ(r.dialogs.boxes[0].title, "Comms Port");
        EXPECT_EQ(r.dialogs.boxes[0].style, box::Critical);
        r.port.failWrites = false;
        r.port.written.clear();
        if (c.unplug) r.port.ports.insert(r.port.ports.begin(), "/dev/ttyUSB0"); // plugged back in
        r.link.CommsPortob_Click(0);
        r.link.SendMessage(restart(3));
        EXPECT_EQ(r.port.written.size(), 4u);
    }
}

TEST(CommsLinkWindow, TheCloseBoxHidesTheWindowAndTheLinkLivesOn)
{
    Rig r;
    r.link.Form_Load();
    r.link.show();
    EXPECT_FALSE(r.link.close()) << "the close is cancelled";
    EXPECT_TRUE(r.link.isHidden());
    EXPECT_TRUE(r.link.PortOpen);
    EXPECT_TRUE(r.port.isOpen());
    r.port.deliver(buildFrame(121, std::vector<uint8_t>(45, 0)));
    EXPECT_EQ(r.sink.cyclic, 1);
    r.link.unload(); // the program ends: the window closes for real, and the port with it
    EXPECT_FALSE(r.port.isOpen());
    EXPECT_FALSE(r.link.PortOpen);
}

// An adapter pulled out is one box; the link then waits for it and reopens it by itself,
// at its path or by its serial number wherever the system lists it now, never another
// adapter that took its place. Choosing a port meanwhile ends the wait.
TEST(CommsLinkWindow, AVanishedAdapterIsReopenedWhenItComesBackUnlessAnotherPortIsChosen)
{
    struct Case {
        const char* what;
        std::vector<PortIdentity> back; // listed after the unplug, in turn, one check each
        bool chooseOther;
        const char* reopened; // nullptr: nothing reopened
    };
    const Case cases[] = {
        {"same path", {adapter("/dev/ttyUSB0", "A9X3")}, false, "/dev/ttyUSB0"},
        {"new path, same serial",
         {adapter("/dev/ttyUSB0", "ZZ11"), adapter("/dev/ttyUSB2", "A9X3")},
         false,
         "/dev/ttyUSB2"},
        {"another port chosen", {adapter("/dev/ttyUSB0", "A9X3")}, true, nullptr},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Rig r;
        r.port.identities["/dev/ttyUSB0"] = adapter("/dev/ttyUSB0", "A9X3");
        std::vector<LinkState> states;
        r.link.setLinkStateListener([&](const LinkStatus& s) { states.push_back(s.state); });
        r.link.Form_Load();
        ASSERT_EQ(r.port.openName, "/dev/ttyUSB0");
        r.port.unplug();
        QCoreApplication::processEvents(); // the loss is told once the port's signal has returned
        ASSERT_EQ(r.dialogs.boxes.size(), 1u);
        EXPECT_EQ(r.link.linkStatus().state, LinkState::Reconnecting);
        EXPECT_EQ(r.link.linkStatus().port, "/dev/ttyUSB0");
        EXPECT_TRUE(r.link.reconnectTimer->isActive());
        r.link.reconnectTick(); // nothing there yet
        EXPECT_FALSE(r.link.PortOpen);
        if (c.chooseOther) r.link.CommsPortob_Click(1);
        EXPECT_EQ(r.link.reconnectTimer->isActive(), !c.chooseOther);
        for (const PortIdentity& id : c.back) {
            r.port.identities[id.path] = id;
            r.port.ports.push_back(id.path);
            r.link.reconnectTick();
        }
        if (c.reopened) {
            EXPECT_TRUE(r.link.PortOpen);
            EXPECT_EQ(r.port.openName, c.reopened);
            EXPECT_EQ(r.link.linkStatus().port, c.reopened);
            EXPECT_EQ(
                r.link.CommsPortob[static_cast<std::size_t>(r.link.CurrentPort - 1)]->toolTip().section('\n', 0, 0),
                c.reopened);
            EXPECT_FALSE(r.link.reconnectTimer->isActive());
            EXPECT_EQ(states,
                      (std::vector<LinkState>{LinkState::Waiting, LinkState::Reconnecting, LinkState::Waiting}));
        } else {
            EXPECT_EQ(r.port.openName, "/dev/ttyUSB1");
        }
        EXPECT_EQ(r.dialogs.boxes.size(), 1u);
    }
}
