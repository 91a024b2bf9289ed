#include "fakes/manual_clock.h"
#include "fakes/scripted_dialogs.h"
#include "telemetry/telemetry_setup_window.h"

#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

using namespace kdx;
using namespace kdx::test;

namespace {

const std::string kHeader = "AxisRate0,Voltage\r\n";
std::string line(int n) { return std::to_string(n) + ",12.5\r\n"; }

std::string read(const std::string& p)
{
    std::ifstream in(p, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

struct Rig {
    QTemporaryDir dir;
    ScriptedDialogs dialogs;
    ManualClock clock;
    TelemetrySetup win{dialogs, clock};
    Rig()
    {
        win.setHeaderProvider([] { return kHeader; });
        win.Form_Load();
    }
    std::string path(const std::string& name) const { return dir.filePath(QString::fromStdString(name)).toStdString(); }
    // The file name as the user picks it with Change.
    void choose(const std::string& p)
    {
        dialogs.files.push_back(p);
        win.ChangeLogFile_Click();
    }
    std::string shown() const { return win.LogFileName->text().toStdString(); }
    bool green(QPushButton* b) const { return b->palette().color(QPalette::Button) == Qt::green; }
};

} // namespace

TEST(TelemetrySetupWindow, LoadNamesRunOneInTheTempFolder)
{
    QTemporaryDir tmp;
    const bool hadTmpDir = qEnvironmentVariableIsSet("TMPDIR");
    const QByteArray old = qgetenv("TMPDIR");
    qputenv("TMPDIR", tmp.path().toUtf8());
    Rig r;
    EXPECT_EQ(r.shown(), QDir(tmp.path()).filePath("Run1.csv").toStdString());
    if (hadTmpDir) qputenv("TMPDIR", old);
    else qunsetenv("TMPDIR");
}

TEST(TelemetrySetupWindow, StartReplacesTheFilePauseDropsLinesStartResumes)
{
    Rig r;
    const std::string p = r.path("Run1.csv");
    std::ofstream(p) << "an older, much longer log that must not survive\r\n";
    std::string mode = "Axis,AxisID\r\n";
    r.win.setHeaderProvider([&] { return mode; });
    r.choose(p);
    struct Step {
        void (TelemetrySetup::*click)();
        bool startGreen, pauseGreen;
    };
    const Step steps[] = {{&TelemetrySetup::StartLog_Click, true, false},
                          {&TelemetrySetup::PauseLog_Click, false, true},
                          {&TelemetrySetup::StartLog_Click, true, false}};
    int n = 0;
    for (const Step& s : steps) {
        (r.win.*s.click)();
        ++n;
        mode = "AxisRate0\r\n"; // a mode change while logging does not rewrite the header
        r.win.PutStringToLog(line(n));
        EXPECT_EQ(r.green(r.win.StartLog), s.startGreen) << n;
        EXPECT_EQ(r.green(r.win.PauseLog), s.pauseGreen) << n;
    }
    r.win.StopLog_Click();
    EXPECT_FALSE(r.green(r.win.StartLog));
    EXPECT_EQ(read(p), "Axis,AxisID\r\n" + line(1) + line(3));
    EXPECT_TRUE(r.dialogs.boxes.empty());
}

TEST(TelemetrySetupWindow, StopAdvancesTheNameSoTheNextLogIsANewFile)
{
    struct Case {
        const char* first;
        const char* next;
    };
    for (const Case& c : {Case{"Run1.csv", "Run2.csv"}, {"Run9.csv", "RunA.csv"}, {"RunZ.log", "Run[.log"}}) {
        Rig r;
        r.choose(r.path(c.first));
        r.win.StartLog_Click();
        r.win.NextLogFile_Click(); // ignored while the log is open
        r.win.PutStringToLog(line(1));
        r.win.StopLog_Click();
        r.win.StartLog_Click();
        r.win.StopLog_Click();
        EXPECT_EQ(read(r.path(c.first)), kHeader + line(1)) << c.first;
        EXPECT_EQ(read(r.path(c.next)), kHeader) << c.first;
    }
}

TEST(TelemetrySetupWindow, LogEventsShowsTheCountEveryTenthLine)
{
    Rig r;
    r.choose(r.path("Run1.csv"));
    r.win.StartLog_Click();
    struct Case {
        int lines;
        const char* shown;
    };
    int sent = 0;
    for (const Case& c : {Case{0, " 0"}, {9, " 0"}, {10, " 10"}, {19, " 10"}, {20, " 20"}}) {
        while (sent < c.lines) r.win.PutStringToLog(line(++sent));
        EXPECT_EQ(r.win.LogEvents->text().toStdString(), c.shown) << c.lines;
    }
}

TEST(TelemetrySetupWindow, ChangeTakesTheChosenNameAndAddsCsvWithoutAnExtension)
{
    Rig r;
    struct Case {
        std::optional<std::string> chosen;
        std::string shown;
    };
    const Case cases[] = {{r.path("flight"), r.path("flight.csv")},
                          {r.path("flight.txt"), r.path("flight.txt")},
                          {r.path("v1.2/flight"), r.path("v1.2/flight.csv")},
                          {std::nullopt, r.path("v1.2/flight.csv")}}; // cancel keeps the name
    for (const Case& c : cases) {
        r.dialogs.files.push_back(c.chosen);
        r.win.ChangeLogFile_Click();
        EXPECT_EQ(r.shown(), c.shown);
    }
    EXPECT_EQ(r.dialogs.fileRequests.at(0).title, "Log File Select");
}

TEST(TelemetrySetupWindow, ALogThatCannotBeOpenedSaysSoOnceAndStaysOff)
{
    Rig r;
    r.choose(r.path("no such folder/Run1.csv"));
    r.win.StartLog_Click();
    r.win.PutStringToLog(line(1));
    r.clock.setSeconds(5);
    r.win.FlushTimer_Timer();
    r.win.StopLog_Click();
    ASSERT_EQ(r.dialogs.boxes.size(), 1u);
    EXPECT_EQ(r.dialogs.boxes[0].prompt.rfind("Error opening log file: ", 0), 0u) << r.dialogs.boxes[0].prompt;
    EXPECT_EQ(r.dialogs.boxes[0].style, 16);
    EXPECT_EQ(r.dialogs.boxes[0].title, "File Open");
    EXPECT_FALSE(r.win.GetLoggingDataToFile());
    EXPECT_FALSE(r.green(r.win.StartLog));
}

TEST(TelemetrySetupWindow, LinesReachTheDiskOnTheTickWhileTheCloseBoxOnlyHides)
{
    Rig r;
    const std::string p = r.path("Run1.csv");
    r.choose(p);
    r.win.show();
    r.win.StartLog_Click();
    EXPECT_TRUE(r.win.FlushTimer->isActive());
    EXPECT_LE(r.win.FlushTimer->interval(), 500);
    r.win.PutStringToLog(line(1));
    r.win.PutStringToLog(line(2));
    r.clock.setSeconds(0.6); // no more telemetry: only the tick can write them out
    r.win.FlushTimer_Timer();
    EXPECT_EQ(read(p), kHeader + line(1) + line(2));
    EXPECT_FALSE(r.win.close());
    EXPECT_FALSE(r.win.isVisible());
    r.win.PutStringToLog(line(3));
    r.win.unload();
    EXPECT_FALSE(r.win.GetLoggingDataToFile());
    EXPECT_EQ(read(p), kHeader + line(1) + line(2) + line(3));
}
