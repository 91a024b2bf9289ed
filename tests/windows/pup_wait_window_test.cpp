#include "fakes/program_rig.h"
#include "link/comms_link_window.h"
#include "mainwindow/main_entry.h"
#include "windows/pup_wait.h"
#include "telemetry/telemetry_setup_window.h"
#include "tuning/graph_win_window.h"

#include <QDir>
#include <QLabel>
#include <QTemporaryDir>
#include <QTimer>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

using namespace kdx;
using namespace kdx::test;

namespace {

struct Rig : ProgramRig {
    PUPWait wait{ws};
    int unloads = 0;
    Rig()
    {
        ws.wait = &wait;
        main.unloadAll = [this] { ++unloads; };
    }
};

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

TEST(PUPWaitWindow, ShiftClickOnTheLogoOpensTheWindowsWithoutAModule)
{
    Rig r;
    r.wait.show();
    r.keys.shift = true;
    r.wait.Image1_Click();
    EXPECT_FALSE(r.wait.isVisible());
    EXPECT_TRUE(r.main.isVisible());
}

TEST(MainEntryQuit, AsksAtMostOneQuestion)
{
    struct Case {
        bool tuning, settings;
        std::vector<Answer> answers;
        bool quits;
        const char* asked;
    };
    const Case cases[] = {
        {false, false, {}, true, nullptr},
        {true, true, {Answer::No}, false, "The Tuning Window data has been modified but not updated to the configuration data. Still Quit ?"},
        {true, true, {Answer::Yes}, true, "The Tuning Window data has been modified but not updated to the configuration data. Still Quit ?"},
        {false, true, {Answer::No}, false, "The current settings been modified but not written to the KDX module. Still Quit ?"},
    };
    for (const Case& c : cases) {
        Rig r;
        r.main.tuningDataModified = [&] { return c.tuning; };
        if (c.settings) r.main.config().SetDataModified(true);
        r.dialogs.answers.assign(c.answers.begin(), c.answers.end());
        r.main.show();
        r.wait.Quitcb_Click();
        EXPECT_EQ(r.unloads, c.quits ? 1 : 0);
        EXPECT_EQ(r.main.isVisible(), !c.quits);
        if (c.asked) {
            ASSERT_EQ(r.dialogs.boxes.size(), 1u);
            EXPECT_EQ(r.dialogs.boxes[0].prompt, c.asked);
            EXPECT_EQ(r.dialogs.boxes[0].title, "Tuning Data Modified");
        } else {
            EXPECT_TRUE(r.dialogs.boxes.empty());
        }
    }
}

TEST(MainEntryStartup, CommandLineLoadsOnlyAQuotedKdxPath)
{
    QTemporaryDir dir;
    const std::string good = dir.filePath("a.kdx").toStdString();
    std::ofstream(good, std::ios::binary) << "*!    VELMOR KDX Backup File     *\r\n"
                                          << "*00000000000000000000000000000000*\r\n"
                                          << "*00000000000000000000000000000000*\r\n";
    const std::string upper = dir.filePath("a.KDX").toStdString();
    std::ofstream(upper, std::ios::binary) << "x";
    const std::string recording = dir.filePath("Run 3.Log").toStdString();
    // Any other name is a recording for the Comms Link window to play.
    struct Case { std::string line; bool loaded; std::string playback; };
    for (const Case& c : {Case{"\"" + good + "\"", true, ""}, {"\"" + upper + "\"", false, upper},
                          {"\"" + recording + "\"", false, recording}, {"\"x\"", false, ""}, {"", false, ""}}) {
        Rig r;
        const QString before = r.comms.LogFileInName->text();
        r.main.handleCommandLine(c.line);
        EXPECT_EQ(r.main.StartupFileLoaded, c.loaded) << c.line;
        EXPECT_EQ(r.main.GetGainsHaveBeenLoaded(), c.loaded) << c.line;
        EXPECT_EQ(r.comms.LogFileInName->text().toStdString(), c.playback.empty() ? before.toStdString() : c.playback);
        EXPECT_EQ(r.comms.isVisible(), !c.playback.empty()) << c.line;
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
        GraphWin graph(r.ws);
        r.ws.graph = &graph;
        EXPECT_NO_THROW(r.main.handleCommandLine("\"" + path + "\""));
        ASSERT_EQ(r.dialogs.boxes.size(), 1u);
        EXPECT_EQ(r.dialogs.boxes[0].title, "File Read");
        const std::string& prompt = r.dialogs.boxes[0].prompt;
        EXPECT_EQ(prompt.substr(prompt.size() - 16), ": Is a directory") << prompt;
        EXPECT_FALSE(r.main.GetGainsHaveBeenLoaded());
    }
}

TEST(MainEntryLogging, EachTelemetryMessageAddsOneLineInItsMode)
{
    QTemporaryDir dir;
    Rig r;
    TelemetrySetup logging(r.dialogs);
    r.ws.logging = &logging;
    logging.setHeaderProvider([&] { return r.main.GetTelemetryFileTitles(); });
    logging.Form_Load();
    const std::string path = dir.filePath("Run1.csv").toStdString();
    logging.LogFileName->setText(QString::fromStdString(path));
    std::vector<uint8_t> direct(45, 0);
    direct[12] = 128; // power 50 %
    r.port.deliver(buildFrame(121, direct)); // before Start: not logged
    logging.StartLog_Click();
    r.port.deliver(buildFrame(121, direct));
    r.port.deliver(buildFrame(121, direct));
    logging.StopLog_Click();
    std::ifstream in(path, std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(in)), {});
    const std::string line = "0.00,0.00,0.00,0.00,0.00,0,0.0,50,0.00,0.00,0.00,0.00,0.00,0,0.0,0,0.0\r\n";
    EXPECT_EQ(text, "AxisRate0,AxisError0,Pcomp0,Icomp0,Dcomp0,ExtGain0%,ElecAngle0,Power0%,AxisRate1,AxisError1,"
                    "Pcomp1,Icomp1,Dcomp1,ExtGain1%,ElecAngle1,Power1%,Voltage\r\n" + line + line);
}
