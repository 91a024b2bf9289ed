// `kdxctl sim --record`: recordings the playback and the decoder can use.
#include "cli/command.h"
#include "sim_harness.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <unistd.h>

using namespace kdx;
using namespace kdx::sim::test;
namespace fs = std::filesystem;

namespace {

int kdxctl(const std::vector<std::string>& args, std::string* err = nullptr)
{
    std::ostringstream out, errs;
    cli::CommandIo io{out, errs};
    const int code = cli::runKdxctl(args, io);
    if (err) *err = errs.str();
    return code;
}

std::vector<uint8_t> slurp(const fs::path& p)
{
    std::ifstream in(p, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

class SimRecording : public ::testing::Test {
protected:
    void SetUp() override { fs::create_directories(dir); }
    void TearDown() override { fs::remove_all(dir); }
    const fs::path dir = fs::temp_directory_path() / ("kdx_sim_rec_" + std::to_string(::getpid()));
};

} // namespace

TEST_F(SimRecording, DecodesWithNoBadMessagesWithoutNoise)
{
    for (bool qvane : {false, true}) {
        const fs::path file = dir / "clean.bin";
        std::vector<std::string> args{"sim", "--seed", "3", "--record", file.string(), "--seconds", "5"};
        if (qvane) args.push_back("--qvane");
        ASSERT_EQ(kdxctl(args), 0) << qvane;
        Capture cap;
        Receiver rx(&cap);
        rx.receiveBytes(slurp(file));
        EXPECT_EQ(cap.cyclic.size(), 500u) << qvane;
        EXPECT_EQ(cap.bad(), 0) << qvane;
        EXPECT_EQ(rx.CommsErrorCount, 0) << qvane;
        EXPECT_EQ(cap.cyclic.back().id, qvane ? 122 : 121);
        EXPECT_EQ(std::distance(fs::directory_iterator(dir), fs::directory_iterator()), 1) << "no temporary left";
    }
}

TEST_F(SimRecording, NoiseCorruptsThatFractionAndTheReceiverResyncs)
{
    const fs::path clean = dir / "clean.bin", noisy = dir / "noisy.bin";
    ASSERT_EQ(kdxctl({"sim", "--record", clean.string(), "--seconds", "20"}), 0);
    ASSERT_EQ(kdxctl({"sim", "--noise", "0.01", "--record", noisy.string(), "--seconds", "20"}), 0);
    const auto a = slurp(clean), b = slurp(noisy);
    ASSERT_EQ(a.size(), b.size()) << "noise changes bytes, never the timing";
    std::size_t changed = 0;
    for (std::size_t i = 0; i < a.size(); ++i) changed += a[i] != b[i];
    EXPECT_NEAR(static_cast<double>(changed) / static_cast<double>(a.size()), 0.01, 0.0015);

    Capture cap;
    Receiver rx(&cap);
    rx.receiveBytes(b);
    EXPECT_GT(cap.bad(), 0);
    EXPECT_GT(rx.CommsErrorCount, 0);
    // About 0.99^49 of the 2000 frames arrive whole; the receiver must find nearly all.
    EXPECT_GT(cap.cyclic.size(), 1100u);
}

TEST_F(SimRecording, CommandLineMistakesAreReported)
{
    const std::string file = (dir / "x.bin").string();
    const std::vector<std::string> rec{"sim", "--record", file, "--seconds", "1"};
    auto with = [&](std::vector<std::string> more) {
        more.insert(more.begin(), rec.begin(), rec.end());
        return more;
    };
    struct Case {
        std::vector<std::string> args;
        int code;
        const char* says;
    };
    const std::vector<Case> cases = {
        {{"sim"}, 2, "either --pty or --record"},
        {with({"--pty"}), 2, "either --pty or --record"},
        {{"sim", "--record", file}, 2, "--seconds"},
        {{"sim", "--record", file, "--seconds", "ten"}, 2, "--seconds"},
        {with({"--noise", "1.5"}), 2, "--noise"},
        {{"sim", "--record", (dir / "missing" / "x.bin").string(), "--seconds", "1"}, 1, "cannot write"},
    };
    for (const auto& c : cases) {
        std::string err;
        EXPECT_EQ(kdxctl(c.args, &err), c.code) << err;
        EXPECT_NE(err.find(c.says), std::string::npos) << err;
        EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 1) << "one line: " << err;
        EXPECT_FALSE(fs::exists(file)) << err;
    }
}
