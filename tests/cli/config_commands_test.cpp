// kdxctl show, read and write; read and write end to end over a real pseudo-terminal
// against a scripted module.
#include "cli/command.h"
#include "cli/run_kdxctl.h"
#include "config/config_file.h"
#include "scripted_module.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

using namespace kdx;
using namespace kdx::test;

namespace {

using Result = test::KdxctlResult;
using test::kdxctl;

std::string data(const char* name) { return std::string(KDX_TEST_DATA) + "/" + name; }

std::string readText(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

// n bytes of the sample configuration (config_sample.kdx) from element `from`.
std::vector<uint8_t> sample(int n = 60, int from = 0)
{
    const ConfigLoad load = loadConfigFile(data("config_sample.kdx"), false);
    return std::vector<uint8_t>(load.values.begin() + from, load.values.begin() + from + n);
}

struct TempDir {
    std::filesystem::path path = std::filesystem::temp_directory_path() / ("kdx-cli-" + std::to_string(::getpid()));
    TempDir() { std::filesystem::create_directories(path); }
    ~TempDir() { std::filesystem::remove_all(path); }
};

} // namespace

TEST(KdxctlShow, PrintsWhatTheMainWindowShows)
{
    for (auto [file, tsv] : {std::pair{"config_sample.kdx", "config_sample.tsv"},
                             {"config_sample_lowercase.kdx", "config_sample.tsv"},
                             {"config_sample.bls", "config_sample_bls.tsv"}}) {
        const Result r = kdxctl({"show", "--tsv", data(file)});
        EXPECT_EQ(r.code, 0) << file << r.err;
        EXPECT_EQ(r.out, readText(data(tsv))) << file;
    }
    // The readable table: values right-aligned under their headings.
    const std::string table = kdxctl({"show", data("config_sample.kdx")}).out;
    const std::string ratio = table.substr(table.find("DriveRatio"));
    EXPECT_EQ(ratio.find("3.0:1") + 5, table.find("Motor 2") + 7) << table;
    EXPECT_EQ(kdxctl({"show", data("config_sample.bls")}).out.find("Motor 2"), std::string::npos);
    const std::string json = kdxctl({"show", "--json", data("config_sample.bls")}).out;
    EXPECT_EQ(json.substr(0, json.find("},{")), "{\"file\":\"" + data("config_sample.bls") +
                                                    "\",\"kind\":\"single-axis\",\"parameters\":[{\"name\":"
                                                    "\"PwmFreqHz\",\"meaning\":\"PWM frequency\",\"unit\":\"kHz\","
                                                    "\"values\":[\"20.0\"]");
}

TEST(KdxctlRead, DirectKdxGivesTheTableAndATwoAxisBackup)
{
    ScriptedModule module({.shortReplies = 1}); // a short reply is not taken: it asks again
    module.setMemory(sample());
    TempDir dir;
    const std::string backup = (dir.path / "before.kdx").string();
    const Result r = kdxctl({"read", "--port", module.path(), "-o", backup, "--tsv"});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(r.out, readText(data("config_sample.tsv")));
    // The module's bytes and the image checksum; elements 61 .. 63 are never read.
    EXPECT_EQ(readText(backup), readText(data("config_sample.kdx")).replace(36 * 4 + 27, 6, "000000"));
    EXPECT_EQ(module.received(), (std::vector<std::vector<uint8_t>>{{3, 112}, {3, 112}}));
}

TEST(KdxctlRead, QVaneAxisIsSelectedFirstAndGivesASingleAxisBackup)
{
    ScriptedModule module({.qvane = true});
    module.setMemory(sample(30), 1);
    TempDir dir;
    const auto cwd = std::filesystem::current_path();
    std::filesystem::current_path(dir.path); // the default backup name lands here
    const Result r = kdxctl({"read", "--port", module.path(), "--axis", "roll", "--tsv"});
    std::filesystem::current_path(cwd);
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(r.out, readText(data("config_sample_bls.tsv")));
    EXPECT_EQ(module.received(), (std::vector<std::vector<uint8_t>>{{3, 132}, {4, 130, 129}}));
    const std::vector<std::filesystem::path> files(std::filesystem::directory_iterator(dir.path), {});
    ASSERT_EQ(files.size(), 1u);
    EXPECT_EQ(files[0].filename().string().rfind("kdx-backup-", 0), 0u);
    EXPECT_EQ(files[0].extension(), ".bls");
    const ConfigLoad back = loadConfigFile(files[0].string(), true);
    EXPECT_EQ(std::vector<uint8_t>(back.values.begin(), back.values.begin() + 30), sample(30));
    std::filesystem::current_path(dir.path);
    EXPECT_EQ(kdxctl({"read", "--port", module.path(), "--no-backup"}).code, 0);
    std::filesystem::current_path(cwd);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path), {}), 1) << "--no-backup saves nothing";
}

TEST(KdxctlWrite, WritesTheFileAndChecksItByReadingBack)
{
    const std::tuple<ModuleOptions, std::vector<std::string>, int, std::vector<uint8_t>> cases[] = {
        {{}, {data("config_sample.kdx")}, 0, sample()},
        {{.answerWrites = true}, {data("config_sample.kdx")}, 0, sample()},
        {{.qvane = true}, {"--axis", "pan", data("config_sample.bls")}, 2, sample(30)},
        {{.qvane = true}, {"--motor", "2", data("config_sample.kdx")}, 0, sample(30, 30)},
        {{.qvane = true}, {"--motor", "0", data("config_sample.kdx")}, 0, sample(30)}, // as scripts once said motor 1
    };
    for (const auto& [options, extra, written, want] : cases) {
        ScriptedModule module(options);
        std::vector<std::string> args{"write", "--no-backup", "--port", module.path()};
        args.insert(args.end(), extra.begin(), extra.end());
        const Result r = kdxctl(args);
        EXPECT_EQ(r.code, 0) << extra.back() << ": " << r.err;
        for (int axis = 0; axis < (options.qvane ? 3 : 1); ++axis)
            EXPECT_EQ(module.memory(axis), axis == written ? want : std::vector<uint8_t>(30, 0)) << extra.back();
    }
}

TEST(KdxctlConfigCommands, FailuresAreOneClearLine)
{
    const std::string bls = data("config_sample.bls");
    // The sample with its second data record blanked: the program reads blanks as zeros.
    TempDir dir;
    const std::string blanks = (dir.path / "blanks.kdx").string();
    std::ofstream(blanks, std::ios::binary) << readText(data("config_sample.kdx")).replace(36 * 2 + 1, 32, 32, ' ');
    const std::tuple<ModuleOptions, std::vector<std::string>, int, std::string> cases[] = {
        // "%p": the port
        {{.telemetry = false}, {"read"}, 1, "kdxctl: no telemetry from %p within 1 s\n"},
        {{.answerReads = false}, {"read"}, 1, "kdxctl: no memory contents from %p within 1 s (asked 2 times)\n"},
        {{.shortReplies = 2}, {"read"}, 1, "kdxctl: short memory reply (40 of 60 bytes) from %p (asked 2 times)\n"},
        {{.qvane = true, .shortReplies = 2},
         {"read"},
         1,
         "kdxctl: short memory reply (12 of 32 bytes) from %p (asked 2 times)\n"},
        {{.hangUpOnRead = true},
         {"read"},
         1,
         "kdxctl: cannot read from %p: the line hung up (the device was unplugged, or the program at its "
         "other end closed it)\n"},
        {{},
         {"write", blanks},
         1,
         "kdxctl: " + blanks + ": line 3 holds characters that are not hexadecimal digits; nothing was written\n"},
        {{.storeWrites = false},
         {"write", "--no-backup", data("config_sample.kdx")},
         1,
         "kdxctl: %p holds different data after the write: byte 0 is 0, expected 7\n"},
        {{}, {"read", "--axis", "pan"}, 1, "kdxctl: --axis needs a Q-Vane, but %p is a KDX wired directly\n"},
        {{},
         {"write", "--no-backup", bls},
         1,
         "kdxctl: " + bls + " holds one motor block; a KDX wired directly needs a two-axis .kdx file\n"},
        {{},
         {"read", "--axis", "yaw"},
         2,
         "kdxctl read: unknown axis 'yaw' (tilt, roll or pan) (try kdxctl read --help)\n"},
        {{}, {"write"}, 2, "kdxctl write: expected a configuration file (try kdxctl write --help)\n"},
    };
    for (const auto& [options, args, code, says] : cases) {
        ScriptedModule module(options);
        std::vector<std::string> argv{args[0], "--port", module.path()};
        argv.insert(argv.end(), args.begin() + 1, args.end());
        const Result r = kdxctl(argv);
        std::string want = says;
        if (const auto at = want.find("%p"); at != std::string::npos) want.replace(at, 2, module.path());
        EXPECT_EQ(r.code, code) << want;
        EXPECT_EQ(r.err, want);
        const bool refused = code == 2 || args.back() == blanks;
        EXPECT_TRUE(!refused || module.received().empty()) << "nothing is sent on a usage error or a refused file";
    }
    const std::tuple<std::vector<std::string>, int, std::string> offline[] = {
        {{"read", "--port", "/dev/kdx-none"}, 1, "kdxctl: cannot open /dev/kdx-none: No such file or directory\n"},
        {{"write", "--port", bls, bls}, 1, "kdxctl: " + bls + " is not a serial port: Inappropriate ioctl for device\n"},
        {{"show", data("nothing.kdx")},
         1,
         "kdxctl: " + data("nothing.kdx") + ": Error opening config file: No such file or directory\n"},
        {{"show", data("config_sample.tsv")},
         1,
         "kdxctl: " + data("config_sample.tsv") + ": not a configuration file\n"},
        {{"show"}, 2, "kdxctl show: expected a configuration file (try kdxctl show --help)\n"},
    };
    for (const auto& [args, code, says] : offline) {
        const Result r = kdxctl(args);
        EXPECT_EQ(r.code, code) << says;
        EXPECT_EQ(r.err, says);
    }
}

// The built program with its standard output on a full device: the table is lost, so
// the command fails, and read still keeps the backup of what it read.
TEST(KdxctlConfigCommands, FullStandardOutputFails)
{
    if (::access("/dev/full", W_OK) != 0) GTEST_SKIP() << "no /dev/full";
    ScriptedModule module({});
    module.setMemory(sample());
    TempDir dir;
    const std::string backup = (dir.path / "b.kdx").string(), err = (dir.path / "err").string();
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"show", data("config_sample.kdx")}, "kdxctl: cannot write to standard output\n"},
        {{"read", "--port", module.path(), "-o", backup},
         "kdxctl: cannot write to standard output; the backup was saved to " + backup + "\n"},
        {{"read", "--port", module.path(), "-o", backup, "--tsv"},
         "kdxctl: cannot write to standard output; the backup was saved to " + backup + "\n"},
    };
    for (const auto& [args, says] : cases) {
        std::filesystem::remove(backup);
        const pid_t pid = spawnKdxctl(args, "/dev/full", err);
        ASSERT_GT(pid, 0);
        int status = 0;
        ::waitpid(pid, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 1) << says;
        EXPECT_EQ(readText(err), says);
        EXPECT_EQ(std::filesystem::exists(backup), args[0] == "read") << says;
    }
}
