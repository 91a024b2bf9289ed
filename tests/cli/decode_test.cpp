#include "cli/command.h"
#include "cli/run_kdxctl.h"
#include "link/frame.h"
#include "telemetry/cyclic_frames.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <csignal>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

using namespace kdx;
using namespace kdx::test;
namespace fs = std::filesystem;
using Bytes = std::vector<uint8_t>;

namespace {

Bytes cat(std::initializer_list<Bytes> parts)
{
    Bytes out;
    for (const auto& p : parts) out.insert(out.end(), p.begin(), p.end());
    return out;
}

class DecodeCommand : public ::testing::Test {
protected:
    void SetUp() override { fs::create_directories(dir_); }
    void TearDown() override { fs::remove_all(dir_); }
    std::string file(const char* name) const { return (dir_ / name).string(); }
    std::string write(const Bytes& bytes) const
    {
        std::ofstream(file("in.rec"), std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), std::ssize(bytes));
        return file("in.rec");
    }
    int run(std::vector<std::string> args)
    {
        out_.str("");
        err_.str("");
        args.insert(args.begin(), "decode");
        cli::CommandIo io{out_, err_};
        return cli::runKdxctl(args, io);
    }

    fs::path dir_ = fs::temp_directory_path() / ("kdx_decode_" + std::to_string(::getpid()) +
                                                 ::testing::UnitTest::GetInstance()->current_test_info()->name());
    std::ostringstream out_, err_;
};

} // namespace

TEST_F(DecodeCommand, RecordingsWithNoiseGiveTheLogTheWindowWrites)
{
    const std::string roll = std::string("Roll,1,") + kRelayedSampleLine;
    const Bytes badChecksum = {0x5A, 5, 9, 0x5A, 4, 0}; // the 0x5A inside is not rescanned
    const std::string counts = "decode: bytes ";
    struct Case {
        const char* name;
        Bytes recording;
        std::string log, counts;
    };
    const Case cases[] = {
        {"noise, a bad frame, a memory reply, undecodable messages, an inverted checksum",
         cat({{1, 2, 3},
              directSample().frame(),
              badChecksum,
              buildFrame(120, Bytes(60, 1)),
              relayedSample(1).frame(),
              CyclicBytes::direct(20).frame(),
              {0},
              relayedSample(3).frame(),
              directSample().frame(true)}),
         std::string(kDirectHeader) + kDirectSampleLine + roll + kDirectSampleLine,
         "245, good messages 6, bad messages 1, noise bytes 4, log lines 3, undecodable cyclic messages 2\n"},
        // The header keeps the mode of the first cyclic message, decodable or not; lines follow their own.
        {"relayed first", cat({relayedSample(1).frame(), directSample().frame()}),
         kRelayedHeader + roll + kDirectSampleLine,
         "75, good messages 2, bad messages 0, noise bytes 0, log lines 2\n"},
        {"relayed with a bad axis first", cat({relayedSample(3).frame(), directSample().frame()}),
         kRelayedHeader + std::string(kDirectSampleLine),
         "75, good messages 2, bad messages 0, noise bytes 0, log lines 1, undecodable cyclic messages 1\n"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(run({write(c.recording)}), 0) << c.name;
        EXPECT_EQ(out_.str(), c.log) << c.name;
        EXPECT_EQ(err_.str(), counts + c.counts) << c.name;
    }
}

TEST_F(DecodeCommand, LongRecordingAcrossReadBlocksReplacesTheOutputFile)
{
    const Bytes frame = directSample().frame();
    Bytes rec;
    std::string expected = kDirectHeader;
    for (int i = 0; i < 40000; ++i) { // about 2 MB: read blocks end inside frames
        rec.insert(rec.end(), frame.begin(), frame.end());
        if (i % 7 == 0) rec.push_back(0x11);
        expected += kDirectSampleLine;
    }
    const std::string in = write(rec), out = file("Run1.csv");
    std::ofstream(out) << "an older log\r\n";
    ASSERT_EQ(run({in, "-o", out}), 0) << err_.str();
    EXPECT_EQ(out_.str(), "");
    std::ifstream log(out, std::ios::binary);
    EXPECT_TRUE(std::string(std::istreambuf_iterator<char>(log), {}) == expected);
    EXPECT_EQ(err_.str(),
              "decode: bytes 1965715, good messages 40000, bad messages 0, noise bytes 5715, log lines 40000\n");
    EXPECT_EQ(std::distance(fs::directory_iterator(dir_), {}), 2); // no temporary file left
    // With -o the counts as JSON go to standard output.
    ASSERT_EQ(run({in, "-o", out, "--json"}), 0) << err_.str();
    EXPECT_EQ(out_.str(), "{\"recording\":\"" + in + "\",\"output\":\"" + out +
                              "\",\"bytes\":1965715,\"goodMessages\":40000,\"badMessages\":0,\"noiseBytes\":5715,"
                              "\"logLines\":40000,\"undecodable\":0}\n");
    EXPECT_EQ(err_.str(), "");
}

TEST_F(DecodeCommand, UsageAndFileErrors)
{
    const std::string rec = write(directSample().frame()), missing = file("missing.rec"), noDir = file("x/y.csv");
    // No log at all for a recording without telemetry: a memory reply and an undecodable
    // cyclic message.
    const std::string quiet = file("quiet.rec"), out = file("quiet.csv");
    const Bytes noTelemetry = cat({{7, 7}, buildFrame(120, Bytes(60, 1)), relayedSample(3).frame()});
    std::ofstream(quiet, std::ios::binary)
        .write(reinterpret_cast<const char*>(noTelemetry.data()), std::ssize(noTelemetry));
    const std::string noLog = "no telemetry in " + quiet +
                              " (92 bytes, 2 good messages, 1 undecodable cyclic messages); no log was written\n";
    struct Case {
        std::vector<std::string> args;
        int exit;
        std::string err;
    };
    for (const Case& c : {Case{{}, 2, "no recording given\n"},
                          {{rec, "--fast"}, 2, "unknown option '--fast'\n"},
                          {{quiet}, 1, noLog},
                          {{quiet, "-o", out}, 1, noLog},
                          {{missing}, 1, "cannot open " + missing + ": No such file or directory\n"},
                          {{rec, "-o", noDir}, 1, "cannot write " + noDir + ": No such file or directory\n"}}) {
        EXPECT_EQ(run(c.args), c.exit) << c.err;
        EXPECT_EQ(err_.str().rfind("kdxctl: decode: " + c.err, 0), 0u) << err_.str();
        EXPECT_EQ(out_.str(), "") << c.err;
    }
    EXPECT_FALSE(fs::exists(out));
}

// The partial log is the command's own: a link planted where it might go redirects
// nothing, and an interrupted decode leaves nothing behind.
TEST_F(DecodeCommand, PartialLogIsPrivateAndNeverLeftBehind)
{
    const std::string out = file("out.csv"), victim = file("victim");
    std::ofstream(victim) << "keep";
    fs::create_symlink(victim, out + ".kdxctl-part");
    ASSERT_EQ(run({write(directSample().frame()), "-o", out}), 0) << err_.str();
    EXPECT_EQ(fs::file_size(victim), 4u);
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(out)));
    fs::remove_all(dir_);
    fs::create_directories(dir_);

    // The built program reads a recording from a pipe; once it has taken more than the
    // pipe holds, its partial log exists, and the signal comes.
    const Bytes frame = directSample().frame();
    Bytes chunk;
    while (chunk.size() < (256u << 10)) chunk.insert(chunk.end(), frame.begin(), frame.end());
    const auto previousPipe = std::signal(SIGPIPE, SIG_IGN);
    for (int sig : {SIGINT, SIGTERM, SIGHUP}) {
        const std::string fifo = file("live.rec");
        ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
        const pid_t pid = spawnKdxctl({"decode", fifo, "-o", out}, "/dev/null", "/dev/null");
        ASSERT_GT(pid, 0);
        const int fd = ::open(fifo.c_str(), O_WRONLY);
        EXPECT_EQ(::write(fd, chunk.data(), chunk.size()), std::ssize(chunk));
        ::kill(pid, sig);
        int status = 0;
        ::waitpid(pid, &status, 0);
        ::close(fd);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == sig) << sig;
        EXPECT_EQ(std::distance(fs::directory_iterator(dir_), {}), 1) << sig << ": a partial log was left";
        fs::remove(fifo);
    }
    std::signal(SIGPIPE, previousPipe);
}
