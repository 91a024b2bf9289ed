#include "cli/command.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <unistd.h>

using namespace kdx;
namespace fs = std::filesystem;
using Bytes = std::vector<uint8_t>;

namespace {

class TrimCommand : public ::testing::Test {
protected:
    void SetUp() override
    {
        fs::create_directories(dir_);
        data_.resize(5000);
        for (std::size_t i = 0; i < data_.size(); ++i) data_[i] = static_cast<uint8_t>(i * 13 + i / 256);
        std::ofstream(recording(), std::ios::binary)
            .write(reinterpret_cast<const char*>(data_.data()), std::ssize(data_));
    }
    void TearDown() override { fs::remove_all(dir_); }
    std::string recording() const { return (dir_ / "Run 0.Log").string(); }
    Bytes copy() const
    {
        std::ifstream f(recording() + "_t", std::ios::binary);
        return Bytes(std::istreambuf_iterator<char>(f), {});
    }
    int run(std::vector<std::string> args)
    {
        err_.str("");
        args.insert(args.begin(), "trim");
        std::ostringstream out;
        cli::CommandIo io{out, err_};
        return cli::runKdxctl(args, io);
    }

    fs::path dir_ = fs::temp_directory_path() / ("kdx_trim_" + std::to_string(::getpid()) +
                                                 ::testing::UnitTest::GetInstance()->current_test_info()->name());
    Bytes data_;
    std::ostringstream err_;
};

} // namespace

// The copies the Comms Link window's "Write File" makes for the same marks (its window
// test checks the same slices): from one byte after the start mark to one after the end.
// Marks the recording cannot satisfy change nothing: the good copy before them stays.
TEST_F(TrimCommand, WritesTheWindowsCopyAndKeepsAGoodEarlierOne)
{
    struct Case {
        const char* start;
        const char* end;
        int exit;
        std::size_t from, copied; // the copy on disk afterwards
    };
    const Case cases[] = {
        {"1024", "4000", 0, 1025, 2977}, {"300", "300", 0, 301, 2},   {"4000", "4998", 0, 4001, 999},
        {"0", "100", 0, 1, 101},         {"4000", "4999", 1, 1, 101}, // one byte short
        {"5000", "5000", 1, 1, 101},     {"300", "20", 2, 1, 101},    // the end before the start
    };
    for (const Case& c : cases) {
        EXPECT_EQ(run({recording(), "--start", c.start, "--end", c.end}), c.exit) << c.start << ".." << c.end;
        EXPECT_EQ(copy(), Bytes(data_.begin() + static_cast<std::ptrdiff_t>(c.from),
                                data_.begin() + static_cast<std::ptrdiff_t>(c.from + c.copied)))
            << c.start << ".." << c.end;
    }
    EXPECT_EQ(err_.str(), "kdxctl trim: --end 20 is before --start 300 (try kdxctl trim --help)\n");
    run({recording(), "--start", "4000", "--end", "4999"});
    EXPECT_EQ(err_.str(), "kdxctl: trim: " + recording() +
                              " holds 5000 bytes; the marks need 5001 (the copy ends one byte after the end mark); "
                              "nothing was written\n");
    EXPECT_EQ(std::distance(fs::directory_iterator(dir_), {}), 2) << "no temporary file is left";
}

TEST_F(TrimCommand, UsageErrorsExitWithTwoAndWriteNothing)
{
    const std::vector<std::vector<std::string>> cases = {
        {},
        {recording(), "--start", "0"},
        {recording(), "--start", "-1", "--end", "5"},
        {recording(), "--start", "0", "--end", "2147483648"},
        {recording(), "extra", "--start", "0", "--end", "5"},
    };
    for (const auto& args : cases) {
        EXPECT_EQ(run(args), 2) << (args.empty() ? "" : args.back());
        EXPECT_NE(err_.str().find("kdxctl trim"), std::string::npos) << err_.str();
    }
    EXPECT_FALSE(fs::exists(recording() + "_t"));
    EXPECT_EQ(run({(dir_ / "missing.Log").string(), "--start", "0", "--end", "5"}), 1);
}
