#include "fakes/manual_clock.h"
#include "telemetry/log_writer.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>

#ifdef __linux__
#include <csignal>
#include <sys/resource.h>
#endif

using namespace kdx;
using kdx::test::ManualClock;
namespace fs = std::filesystem;
using Put = LogWriter::PutResult;

namespace {

constexpr const char* kHeader = "AxisRate0,Voltage\r\n";
std::string line(int n) { return std::to_string(n) + ",12.5\r\n"; }

std::string read(const std::string& p)
{
    std::ifstream in(p, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

class LogWriterTest : public ::testing::Test {
protected:
    void SetUp() override { fs::create_directories(dir_); }
    void TearDown() override { fs::remove_all(dir_); }
    std::string path(const char* name) const { return (dir_ / name).string(); }

    fs::path dir_ = fs::temp_directory_path() / ("kdx_log_" + std::to_string(::getpid()) +
                                                 ::testing::UnitTest::GetInstance()->current_test_info()->name());
    ManualClock clock_{100'000'000'000};
    LogWriter w_{clock_};
};

} // namespace

TEST_F(LogWriterTest, StartReplacesPauseDropsStopCloses)
{
    const std::string p = path("Run1.csv");
    std::ofstream(p) << "an older and much longer log that must not survive\r\n";
    EXPECT_EQ(w_.Start(p, kHeader), std::nullopt);
    EXPECT_EQ(read(p), kHeader); // the header is on the disk at once
    EXPECT_EQ(w_.PutStringToLog(line(1)), Put::Written);
    EXPECT_TRUE(w_.Pause());
    EXPECT_EQ(read(p), kHeader + line(1)); // pausing writes out what was buffered
    EXPECT_EQ(w_.PutStringToLog(line(2)), Put::NotWritten);
    EXPECT_EQ(w_.Start(p, "another header\r\n"), std::nullopt); // resumes the same log
    EXPECT_EQ(w_.PutStringToLog(line(3)), Put::Written);
    EXPECT_TRUE(w_.Stop());
    EXPECT_FALSE(w_.GetLoggingDataToFile());
    EXPECT_EQ(w_.PutStringToLog(line(4)), Put::NotWritten);
    EXPECT_EQ(read(p), kHeader + line(1) + line(3));
}

TEST_F(LogWriterTest, LogEventsShowsTheCountEveryTenthLine)
{
    for (const char* name : {"Run1.csv", "Run2.csv"}) { // each log counts from zero
        ASSERT_EQ(w_.Start(path(name), kHeader), std::nullopt);
        EXPECT_EQ(w_.LogEvents(), " 0");
        for (int n = 1; n <= 25; ++n) {
            EXPECT_EQ(w_.PutStringToLog(line(n)), n % 10 ? Put::Written : Put::CountChanged) << n;
            EXPECT_EQ(w_.LogEvents(), n < 10 ? " 0" : n < 20 ? " 10" : " 20") << n;
        }
        EXPECT_EQ(w_.LinesLogged(), 25);
        w_.Stop();
    }
}

TEST_F(LogWriterTest, BufferedLinesReachTheDiskWithinHalfASecond)
{
    const std::string p = path("Run1.csv");
    ASSERT_EQ(w_.Start(p, kHeader), std::nullopt);
    struct Step {
        double at;
        bool put;
        int linesOnDisk;
    };
    int n = 0;
    for (const Step& s : {Step{100.00, true, 0},
                          {100.30, true, 0},
                          {100.49, false, 0}, // a timer tick: the first line is not yet half a second old
                          {100.50, false, 2},
                          {100.60, true, 2},
                          {101.20, true, 4}}) { // a line that comes late goes out with the one before
        clock_.setSeconds(s.at);
        if (s.put) w_.PutStringToLog(line(++n));
        else EXPECT_TRUE(w_.flushIfDue());
        std::string want = kHeader;
        for (int i = 1; i <= s.linesOnDisk; ++i) want += line(i);
        EXPECT_EQ(read(p), want) << "at " << s.at;
    }
}

TEST_F(LogWriterTest, OpenFailuresAreReportedAndNothingLogs)
{
    fs::create_directories(dir_ / "a folder");
    struct Case {
        std::string path, message;
    };
    std::vector<Case> cases = {{path("no such folder/Run1.csv"), "No such file or directory"},
                               {path("a folder"), "Is a directory"}};
    if (fs::is_character_file("/dev/full")) cases.push_back({"/dev/full", "No space left on device"}); // header fails
    for (const Case& c : cases) {
        LogWriter w;
        EXPECT_EQ(w.Start(c.path, kHeader), "Error opening log file: " + c.message);
        EXPECT_EQ(w.PutStringToLog(line(1)), Put::NotWritten) << c.path;
    }
    EXPECT_TRUE(fs::is_directory(dir_ / "a folder"));
    EXPECT_TRUE(!fs::exists("/dev/full") || fs::is_character_file("/dev/full")); // never deleted
}

#ifdef __linux__
// In a child process (the test runner stays unlimited): a file-size limit makes the
// kernel refuse writes past it, as a full disk does. Returns which check failed, or 0.
int logUntilTheDiskIsFull(const std::string& p, std::size_t limit)
{
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit r{limit, limit};
    if (setrlimit(RLIMIT_FSIZE, &r) != 0) return 9;
    ManualClock clock;
    LogWriter w(clock);
    if (w.Start(p, kHeader)) return 10;
    int failures = 0;
    for (int n = 1; n <= 20; ++n) {
        clock.setSeconds(n * 0.25); // lines 1-3 go out with line 3, lines 4-6 with line 6
        const Put r = w.PutStringToLog(line(n));
        failures += r == Put::WriteFailed;
        if (n > 6 && r != Put::NotWritten) return 11;
    }
    if (failures != 1) return 12; // reported once
    if (w.GetLoggingDataToFile() || !w.Stop() || !w.flushIfDue()) return 13;
    return w.writeError() == "Error writing log file: File too large" ? 0 : 14;
}

TEST_F(LogWriterTest, WriteFailureStopsLoggingOnceAndKeepsWholeLines)
{
    const std::string p = path("Run1.csv");
    const std::size_t limit = std::string(kHeader).size() + 3 * line(1).size() + 4;
    EXPECT_EXIT(std::_Exit(logUntilTheDiskIsFull(p, limit)), ::testing::ExitedWithCode(0), "");
    EXPECT_EQ(read(p), kHeader + line(1) + line(2) + line(3)); // the torn fourth line is cut off
}
#endif
