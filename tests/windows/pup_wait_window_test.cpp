#include "fakes/program_rig.h"
#include "telemetry/cyclic_frames.h"
#include "tuning/graph_win_model.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

using namespace kdx;
using namespace kdx::test;

namespace {

using Rig = ProgramRig;

std::string readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

} // namespace

TEST(PUPWaitWindow, AlternatesDirectAndRelayedProbingEveryTick)
{
    Rig r;
    r.wait.InputSwitchTimer_Timer(); // direct: nothing sent
    EXPECT_TRUE(r.port.written.empty());
    r.wait.InputSwitchTimer_Timer(); // relayed: ask the Q-Vane for Tilt, then read
    EXPECT_EQ(r.port.written, (std::vector<uint8_t>{0x5A, 3, 131, 134, 0x5A, 3, 112, 115}));
    r.port.written.clear();
    r.wait.InputSwitchTimer_Timer();
    EXPECT_TRUE(r.port.written.empty());
}

TEST(PUPWaitWindow, FirstTelemetryRevealsTheWorkingWindows)
{
    Rig r;
    r.wait.show();
    r.wait.InputSwitchTimer->start();
    r.wait.Image1_Click(); // a plain click does nothing
    EXPECT_TRUE(r.wait.isVisible());
    std::vector<uint8_t> payload(45, 0);
    payload[43] = 1; // firmware 1.05
    payload[44] = 5;
    r.port.deliver(buildFrame(121, payload));
    EXPECT_FALSE(r.wait.isVisible());
    EXPECT_FALSE(r.wait.InputSwitchTimer->isActive());
    EXPECT_TRUE(r.main.isVisible());
    EXPECT_EQ(r.main.Versiontb->text(), "1.05");
    EXPECT_EQ(r.port.written, (std::vector<uint8_t>{0x5A, 3, 112, 115})); // the first read
}

TEST(PUPWaitWindow, StandsCentredOverTheMainWindowWhichAShiftClickBringsUpThere)
{
    Rig r;
    ASSERT_TRUE(r.wait.isVisible());
    EXPECT_FALSE(r.main.isVisible());
    EXPECT_FALSE(r.graph.isVisible());
    EXPECT_FALSE(r.logging.isVisible());
    const QRect wait = r.wait.geometry();
    r.keys.shift = true;
    r.wait.Image1_Click(); // without a module
    EXPECT_FALSE(r.wait.isVisible());
    ASSERT_TRUE(r.main.isVisible());
    ASSERT_GT(r.main.width(), wait.width());
    EXPECT_LE((wait.center() - r.main.geometry().center()).manhattanLength(), 1);
}

// The wait window says which port it listens on, or why none is open, so a user who
// sees nothing arrive knows where to look.
TEST(PUPWaitWindow, SaysWhichPortItListensOnOrWhyNoneIsOpen)
{
    const std::string hint = "Permission denied (add your user to the dialout group: sudo usermod -aG dialout "
                             "$USER, then log in again)";
    struct Case {
        std::vector<std::string> ports;
        std::vector<std::string> refused;
        std::string line;
    };
    const Case cases[] = {
        {{"/dev/ttyUSB0", "/dev/ttyUSB1"}, {}, "Listening on /dev/ttyUSB0"},
        {{"/dev/ttyUSB0", "/dev/ttyUSB1"}, {"/dev/ttyUSB0"}, "No port open: /dev/ttyUSB0: " + hint},
        {{"/dev/ttyS0"}, {"/dev/ttyS0"}, "No port open: /dev/ttyS0: " + hint},
        {{}, {}, "No port open: no serial port found"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        Rig r(true, [&](FakeSerialPort& port) {
            port.ports = c.ports;
            port.refuse = {c.refused.begin(), c.refused.end()};
            port.refuseReason = hint;
        });
        ASSERT_TRUE(r.wait.isVisible());
        EXPECT_EQ(r.wait.portLine->text().toStdString(), c.line);
        EXPECT_TRUE(r.dialogs.boxes.empty()); // the scan's refusals are told here, not in boxes
    }
}

TEST(PUPWaitWindow, ThePortLineFollowsAPortChosenInTheCommsLinkWindow)
{
    Rig r(true, [](FakeSerialPort& port) { port.refuse = {"/dev/ttyUSB0"}; });
    ASSERT_EQ(r.wait.portLine->text().toStdString(), "No port open: /dev/ttyUSB0: Permission denied");
    QTest::mouseClick(r.wait.choosePortButton, Qt::LeftButton);
    ASSERT_TRUE(r.comms.isVisible());
    EXPECT_FALSE(r.comms.geometry().intersects(r.wait.geometry()))
        << "the Comms Link window hides no part of the wait window";
    r.comms.CommsPortob_Click(1);
    r.wait.InputSwitchTimer_Timer();
    EXPECT_EQ(r.wait.portLine->text().toStdString(), "Listening on /dev/ttyUSB1");
    EXPECT_TRUE(r.wait.isVisible()); // still waiting for a module
}

TEST(PUPWaitWindow, OpenWithoutAModuleBringsUpTheWorkingWindowsAsAShiftClickDoes)
{
    Rig r;
    QTest::mouseClick(r.wait.openWithoutModuleButton, Qt::LeftButton); // no Shift needed
    EXPECT_FALSE(r.wait.isVisible());
    EXPECT_FALSE(r.wait.InputSwitchTimer->isActive());
    EXPECT_TRUE(r.main.isVisible());
    EXPECT_TRUE(r.graph.isVisible());
    EXPECT_TRUE(r.logging.isVisible());
    EXPECT_TRUE(r.port.written.empty()); // nothing asked of a module that is not there
}

TEST(MainEntryQuit, EveryWayOutAsksOnceAndClosesThePortAndTheLogOnlyWhenTheUserAgrees)
{
    enum class Way { WaitQuit, WaitCloseBox, MainExit, MainCloseBox, TuningExit };
    const std::string tuningAsk =
        "The Tuning Window data has been modified but not updated to the configuration data. Still Quit ?";
    const std::string settingsAsk =
        "The current settings been modified but not written to the KDX module. Still Quit ?";
    struct Case {
        Way way;
        bool tuned, edited;
        Answer answer;
        const std::string* asked; // nullptr: nothing to lose, no question
    };
    const Case cases[] = {
        {Way::WaitQuit, false, false, Answer::No, nullptr},
        {Way::WaitQuit, true, true, Answer::No, &tuningAsk},
        {Way::WaitQuit, true, true, Answer::Yes, &tuningAsk},
        {Way::WaitQuit, false, true, Answer::No, &settingsAsk},
        {Way::WaitQuit, false, true, Answer::Yes, &settingsAsk},
        {Way::WaitCloseBox, false, true, Answer::No, &settingsAsk},
        {Way::WaitCloseBox, false, true, Answer::Yes, &settingsAsk},
        {Way::MainExit, false, true, Answer::No, &settingsAsk},
        {Way::MainExit, false, true, Answer::Yes, &settingsAsk},
        {Way::MainCloseBox, false, true, Answer::No, &settingsAsk},
        {Way::MainCloseBox, false, true, Answer::Yes, &settingsAsk},
        {Way::TuningExit, false, true, Answer::No, &settingsAsk},
        {Way::TuningExit, false, true, Answer::Yes, &settingsAsk},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "way " << int(c.way) << ", tuned " << c.tuned << ", edited " << c.edited
                                        << (c.answer == Answer::Yes ? ", Yes" : ", No"));
        QTemporaryDir dir;
        Rig r;
        const std::string log = dir.filePath("Run1.csv").toStdString();
        r.logging.LogFileName->setText(QString::fromStdString(log));
        r.logging.StartLog_Click();
        const bool fromWait = c.way == Way::WaitQuit || c.way == Way::WaitCloseBox;
        if (!fromWait) r.port.deliver(CyclicBytes::direct().frame()); // a module: the working windows
        ASSERT_EQ(r.main.isVisible(), !fromWait);
        if (c.tuned) {
            r.port.deliver(buildFrame(120, std::vector<uint8_t>(60, 0))); // a configuration to tune
            r.graph.MotorSelcb_Click(0);
            r.graph.Inccb_Click(Gain::P, 1);
        }
        if (c.edited) r.main.config().SetDataModified(true);
        if (c.asked) r.dialogs.answers.push_back(c.answer);
        switch (c.way) {
        case Way::WaitQuit: QTest::mouseClick(r.wait.Quitcb, Qt::LeftButton); break;
        case Way::WaitCloseBox: r.wait.close(); break;
        case Way::MainExit: r.main.mnuExit->trigger(); break;
        case Way::MainCloseBox: r.main.close(); break;
        case Way::TuningExit: r.graph.mnuExit->trigger(); break;
        }
        const bool quit = !c.asked || c.answer == Answer::Yes;
        ASSERT_EQ(r.dialogs.boxes.size(), c.asked ? 1u : 0u);
        if (c.asked) {
            EXPECT_EQ(r.dialogs.boxes[0].prompt, *c.asked);
            EXPECT_EQ(r.dialogs.boxes[0].title, "Tuning Data Modified");
        }
        EXPECT_EQ(r.program.Ended(), quit);
        EXPECT_EQ(r.port.isOpen(), !quit);
        EXPECT_EQ(r.logging.GetLoggingDataToFile(), !quit);
        EXPECT_EQ(r.wait.isVisible(), !quit && fromWait);
        EXPECT_EQ(r.main.isVisible(), !quit && !fromWait);
        EXPECT_EQ(r.graph.isVisible(), !quit && !fromWait);
        if (quit) {
            EXPECT_EQ(readFile(log),
                      std::string(kDirectHeader) +
                          (fromWait ? "" : "0.00,0.00,0.00,0.00,0.00,0,0.0,0,0.00,0.00,0.00,0.00,0.00,0,0.0,0,0.0\r\n"))
                << "the log is closed with every line in it";
        }
    }
}

TEST(MainEntryStartup, CommandLineOpensAFileByItsExactExtension)
{
    QTemporaryDir dir;
    const std::string record = "*" + std::string(32, '0') + "*\r\n";
    const std::string backup = "*!    VELMOR KDX Backup File     *\r\n" + record + record;
    const std::string tuning = "AxisRate, AxisError, P,I,IA,D,V1,V2,G,Spare1,Spare2\r\n"
                               "1.00,2.00,100.00,20.00,2.50,50.00,10.00,20.00,100.00,0,0\r\n3.00,4.00\r\n5.00,6.00\r\n";
    for (const char* name : {"a.kdx", "a.KDX"})
        std::ofstream(dir.filePath(name).toStdString(), std::ios::binary) << backup;
    for (const char* name : {"t.btf", "t.Btf"})
        std::ofstream(dir.filePath(name).toStdString(), std::ios::binary) << tuning;
    struct Case {
        const char* name; // quoted as the desktop passes it; nullptr: the raw line below
        const char* raw;
        bool configuration, tuningFile, recording;
    };
    const Case cases[] = {
        {"a.kdx", nullptr, true, false, false},     {"a.KDX", nullptr, false, false, false},
        {"t.btf", nullptr, false, true, false},     {"t.Btf", nullptr, false, false, false},
        {"Run 3.Log", nullptr, false, false, true}, {nullptr, "\"x\"", false, false, false},
        {nullptr, "", false, false, false},
    };
    for (const Case& c : cases) {
        const std::string path = c.name ? dir.filePath(c.name).toStdString() : "";
        SCOPED_TRACE(c.name ? c.name : c.raw);
        Rig r;
        const QString playbackBefore = r.comms.LogFileInName->text();
        r.main.handleCommandLine(c.name ? "\"" + path + "\"" : c.raw);
        EXPECT_EQ(r.main.StartupFileLoaded, c.configuration);
        EXPECT_EQ(r.main.GetGainsHaveBeenLoaded(), c.configuration);
        EXPECT_EQ(r.main.windowTitle().toStdString(), c.configuration ? "KDX Tool - a.kdx" : "KDX Tool");
        EXPECT_EQ(r.graph.model().gains().memory(0).marker, c.tuningFile ? -1.0f : 0.0f);
        EXPECT_EQ(r.comms.LogFileInName->text().toStdString(), c.recording ? path : playbackBefore.toStdString());
        EXPECT_EQ(r.comms.isVisible(), c.recording);
        // A file just opened holds nothing to save: quitting asks nothing.
        EXPECT_TRUE(r.main.GoForQuit());
        EXPECT_TRUE(r.dialogs.boxes.empty());
    }
}

// A folder given as the file once ended the program on an exception at start-up.
TEST(MainEntryStartup, AFileOnTheCommandLineThatCannotBeReadIsReportedAndTheProgramGoesOn)
{
    QTemporaryDir dir;
    for (const char* name : {"d.btf", "d.kdx"}) {
        SCOPED_TRACE(name);
        const std::string path = dir.filePath(name).toStdString();
        ASSERT_TRUE(QDir().mkpath(QString::fromStdString(path)));
        Rig r;
        EXPECT_NO_THROW(r.main.handleCommandLine("\"" + path + "\""));
        ASSERT_EQ(r.dialogs.boxes.size(), 1u);
        EXPECT_EQ(r.dialogs.boxes[0].title, "File Read");
        const std::string& prompt = r.dialogs.boxes[0].prompt;
        EXPECT_EQ(prompt.substr(prompt.size() - 16), ": Is a directory") << prompt;
        EXPECT_FALSE(r.main.GetGainsHaveBeenLoaded());
    }
}

// Ctrl+Q goes through the one quit decision from whichever window has the focus, the
// wait window included, whatever the platform's own quit key.
TEST(MainEntryQuit, CtrlQAsksAndQuitsFromEveryWindow)
{
    enum class Where { Wait, Main, Tuning, Logging };
    for (Where where : {Where::Wait, Where::Main, Where::Tuning, Where::Logging}) {
        SCOPED_TRACE(int(where));
        Rig r;
        if (where != Where::Wait) r.port.deliver(CyclicBytes::direct().frame());
        QWidget* w = where == Where::Wait     ? static_cast<QWidget*>(&r.wait)
                     : where == Where::Main   ? static_cast<QWidget*>(&r.main)
                     : where == Where::Tuning ? static_cast<QWidget*>(&r.graph)
                                              : static_cast<QWidget*>(&r.logging);
        ASSERT_TRUE(w->isVisible());
        w->activateWindow();
        QApplication::setActiveWindow(w);
        r.main.config().SetDataModified(true);
        r.dialogs.answers.push_back(Answer::No);
        QTest::keyClick(w, Qt::Key_Q, Qt::ControlModifier);
        ASSERT_EQ(r.dialogs.boxes.size(), 1u);
        EXPECT_EQ(r.dialogs.boxes[0].title, "Tuning Data Modified");
        EXPECT_FALSE(r.program.Ended());
        r.dialogs.answers.push_back(Answer::Yes);
        QTest::keyClick(w, Qt::Key_Q, Qt::ControlModifier);
        EXPECT_TRUE(r.program.Ended());
    }
}
