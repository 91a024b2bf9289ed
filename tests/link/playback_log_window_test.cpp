// Recordings played through the whole program (Comms Link, main window, Tuning Display,
// Data Logging) with its timers called at their moments of simulated time: whatever the
// rate, the log holds exactly the lines kdxctl decode makes of the same recording.
#include "cli/command.h"
#include "fakes/program_rig.h"
#include "sim/recording.h"

#include <QDir>
#include <QLabel>
#include <QRadioButton>
#include <QTemporaryDir>
#include <QTimer>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <regex>
#include <sstream>

using namespace kdx;
using namespace kdx::test;

namespace {

constexpr int64_t kMs = 1'000'000;       // ns
constexpr int64_t kClockReading = 20'000; // ns of simulated time each reading of the playback clock costs

// The lines of a file, each with its CR.
std::vector<std::string> linesOf(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

struct PlayingProgram : ProgramRig {
    int64_t now = 0; // simulated ns
    int64_t nextWatchdog = 500 * kMs, nextFlush = 250 * kMs;

    PlayingProgram() : ProgramRig([this] { return static_cast<double>(now) * 1e-9; })
    {
        comms.setPlaybackClock([this] { return now += kClockReading; });
    }

    // Time passes to `t`; each timer that fell due meanwhile fires once, as Qt delivers
    // a late timer.
    void passTimeTo(int64_t t)
    {
        now = std::max(now, t);
        if (nextFlush <= now) {
            logging.FlushTimer_Timer();
            nextFlush = (now / (250 * kMs) + 1) * 250 * kMs;
        }
        if (nextWatchdog <= now) {
            comms.CommsTimeout_Timer();
            main.CommsQualityTmr_Timer();
            nextWatchdog = (now / (500 * kMs) + 1) * 500 * kMs;
        }
    }
    // Plays the recording to its end at one of the rates, the playback timer firing at
    // its interval while it runs. (A "Max" slice that ends early is called again at once
    // by the event loop; here a millisecond later, which plays the same bytes.)
    void play(const std::string& path, int rate)
    {
        comms.SetInputFilename(path);
        comms.Rateob[static_cast<std::size_t>(rate)]->click();
        comms.StartLogIn_Click();
        for (const int64_t end = now + 3600'000 * kMs; comms.PlaybackActive && now < end;) {
            passTimeTo(now + comms.FileInputTimer->interval() * kMs);
            if (comms.FileInputTimer->isActive()) comms.FileInputTimer_Timer();
        }
        passTimeTo(nextWatchdog);
    }
};

} // namespace

// A noisy recording holds short cyclic frames whose checksum is good: each abandons the
// main window's handler and leaves the receiver's guard held until the watchdog's tick.
// Only that message may be lost, however many messages one tick is worth at the rate.
TEST(PlaybackLogWindow, TheLogHoldsExactlyTheLinesDecodeMakesOfANoisyRecordingAtAnyRate)
{
    struct Case {
        const char* rate;
        int index;
        double seconds; // of recording
    };
    for (const Case& c : {Case{"Max", 0, 180}, Case{"x1", 2, 60}}) {
        SCOPED_TRACE(c.rate);
        QTemporaryDir dir;
        const auto path = [&](const char* name) { return QDir(dir.path()).filePath(name).toStdString(); };
        std::string error;
        sim::SimOptions noisy;
        noisy.noise = 0.01;
        ASSERT_GT(sim::writeRecording(noisy, c.seconds, path("noisy.rec"), error), 0) << error;
        std::ostringstream out, counts;
        cli::CommandIo io{out, counts};
        ASSERT_EQ(cli::runKdxctl({"decode", path("noisy.rec"), "-o", path("decoded.csv")}, io), 0) << counts.str();
        std::smatch m;
        const std::string said = counts.str();
        ASSERT_TRUE(std::regex_search(said, m, std::regex("bad messages (\\d+), noise bytes (\\d+), .*undecodable")))
            << "the recording holds a short cyclic frame with a good checksum: " << said;
        const long errors = std::stol(m[1]) + std::stol(m[2]);

        PlayingProgram p;
        p.logging.LogFileName->setText(QString::fromStdString(path("Run1.csv")));
        p.logging.StartLog_Click();
        p.play(path("noisy.rec"), c.index);
        ASSERT_FALSE(p.comms.PlaybackActive) << "still playing after an hour";
        p.logging.StopLog_Click();

        const std::vector<std::string> logged = linesOf(path("Run1.csv"));
        const std::vector<std::string> decoded = linesOf(path("decoded.csv"));
        const auto [l, d] = std::mismatch(logged.begin(), logged.end(), decoded.begin(), decoded.end());
        EXPECT_TRUE(l == logged.end() && d == decoded.end())
            << logged.size() << " lines logged, " << decoded.size() << " decoded; the first difference is line "
            << (l - logged.begin()) + 1 << ": \"" << (l == logged.end() ? "" : *l) << "\" against \""
            << (d == decoded.end() ? "" : *d) << "\"";
        EXPECT_TRUE(p.comms.CommsStatuslb->text().endsWith(QString("\nErrors: %1").arg(errors)))
            << p.comms.CommsStatuslb->text().toStdString();
        EXPECT_TRUE(p.dialogs.boxes.empty());
    }
}

// The first telemetry of a recording reveals the working windows; the Comms Link window,
// whose controls run the playback, stays in view, and the status bar says what plays.
TEST(PlaybackLogWindow, PlayingKeepsTheCommsLinkWindowInViewAndTheStatusBarSaysWhatPlays)
{
    QTemporaryDir dir;
    const std::string path = QDir(dir.path()).filePath("flight.rec").toStdString();
    std::string error;
    ASSERT_GT(sim::writeRecording(sim::SimOptions{}, 5, path, error), 0) << error;
    PlayingProgram p;
    p.comms.show();
    p.comms.SetInputFilename(path);
    p.comms.Rateob[2]->click();
    p.comms.StartLogIn_Click();
    for (int tick = 0; tick < 50 && !p.main.isVisible(); ++tick) p.comms.FileInputTimer_Timer();
    ASSERT_TRUE(p.main.isVisible()) << "the recording's telemetry revealed the working windows";
    EXPECT_TRUE(p.comms.isVisible());
    p.program.statusBar.refresh();
    EXPECT_EQ(p.program.statusBar.labels[3]->text(), "playing flight.rec at x1");
}
