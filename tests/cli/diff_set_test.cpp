// kdxctl diff and set on configuration files (and diff against a module), and the exit
// codes of the commands that take files and modules on their error paths.
#include "cli/run_kdxctl.h"
#include "config/config_file.h"
#include "scripted_module.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

using namespace kdx;
using namespace kdx::test;
namespace fs = std::filesystem;

namespace {

std::string data(const char* name) { return std::string(KDX_TEST_DATA) + "/" + name; }

std::string readText(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

// The text of a configuration file with image element `element` set to the two hex
// digits `hex` (the header is line 0, element e sits in data line 1 + e / 16).
std::string withElement(std::string text, int element, const char* hex)
{
    return text.replace(static_cast<std::size_t>(36 * (1 + element / 16) + 1 + 2 * (element % 16)), 2, hex);
}

std::vector<int16_t> valuesOf(const std::string& file) { return loadConfigFile(file, false).values; }

class DiffSet : public ::testing::Test {
protected:
    void SetUp() override
    {
        fs::create_directories(dir_);
        cwd_ = fs::current_path();
        fs::current_path(dir_); // short names in the output
        const std::string sample = readText(data("config_sample.kdx"));
        std::ofstream("a.kdx", std::ios::binary) << sample;
        // Motor 1's PWM count 2000 -> 1999 (both show 20.0 kHz), its reserved byte 15,
        // and motor 2's P term -100 % -> -200 %.
        std::ofstream("b.kdx", std::ios::binary)
            << withElement(withElement(withElement(sample, 2, "CF"), 15, "AC"), 38, "00");
        // Motor 1 at a PWM count of 31746 (1.26 kHz), which a read and write turns into 31745.
        std::ofstream("drift.kdx", std::ios::binary) << withElement(withElement(sample, 2, "02"), 3, "7C");
    }
    void TearDown() override
    {
        fs::current_path(cwd_);
        fs::remove_all(dir_);
    }

    fs::path dir_ = fs::temp_directory_path() / ("kdx-diffset-" + std::to_string(::getpid()));
    fs::path cwd_;
};

} // namespace

TEST_F(DiffSet, DiffShowsEachDifferingParameterOfEachMotor)
{
    const std::string tsv =
        "PwmFreqHz\t1\t20.0 (raw 2000)\t20.0 (raw 1999)\nByte15\t1\t171\t172\nPTerm\t2\t-100\t-200\n";
    const std::tuple<std::vector<std::string>, int, std::string> cases[] = {
        {{"a.kdx", "b.kdx"},
         1,
         "Parameter  Motor  a.kdx            b.kdx\n"
         "PwmFreqHz  1      20.0 (raw 2000)  20.0 (raw 1999)\n"
         "Byte15     1      171              172\n"
         "PTerm      2      -100             -200\n"},
        {{"--tsv", "a.kdx", "b.kdx"}, 1, tsv},
        {{"--json", "b.kdx", "a.kdx"},
         1,
         "{\"a\":{\"source\":\"b.kdx\",\"type\":\"file\",\"target\":null,\"kind\":\"two-axis\"},\"b\":{\"source\":"
         "\"a.kdx\",\"type\":\"file\",\"target\":null,\"kind\":\"two-axis\"},\"equal\":false,\"differences\":[{\"name\":"
         "\"PwmFreqHz\",\"motor\":1,\"a\":\"20.0 (raw 1999)\",\"b\":\"20.0 (raw 2000)\"},{\"name\":\"Byte15\",\"motor\":1,"
         "\"a\":\"172\",\"b\":\"171\"},{\"name\":\"PTerm\",\"motor\":2,\"a\":\"-200\",\"b\":\"-100\"}]}\n"},
        {{"a.kdx", "a.kdx"}, 0, ""},
        // A single-axis file holds the first motor block of the sample.
        {{"--tsv", "a.kdx", data("config_sample.bls")}, 0, ""},
        {{"--tsv", "--motor", "2", data("config_sample.bls"), "b.kdx"}, 1, "PwmFreqHz\t2\t20.0\t15.0\n"},
    };
    for (const auto& [args, code, out] : cases) {
        std::vector<std::string> argv{"diff"};
        argv.insert(argv.end(), args.begin(), args.end());
        const KdxctlResult r = kdxctl(argv);
        EXPECT_EQ(r.code, code) << args.back();
        EXPECT_EQ(code == 1 && args[1] == "--motor" ? r.out.substr(0, r.out.find('\n') + 1) : r.out, out)
            << args.back();
        EXPECT_EQ(r.err, "");
    }
    // A module holding a.kdx, first on the command line: it is A.
    ScriptedModule module({});
    const std::vector<int16_t> sample = valuesOf("a.kdx");
    module.setMemory(std::vector<uint8_t>(sample.begin(), sample.begin() + 60));
    const KdxctlResult r = kdxctl({"diff", "--tsv", "--port", module.path(), "b.kdx"});
    EXPECT_EQ(r.code, 1) << r.err;
    EXPECT_EQ(r.out, tsv);
}

TEST_F(DiffSet, SetChangesOnlyTheNamedParametersByTheEntryRules)
{
    struct Case {
        std::vector<std::string> args;
        int code;
        std::string out, err;
        std::vector<std::pair<int, int>> changed; // image elements, as saved
    };
    const Case cases[] = {
        // The drifting count of motor 1 stays as it is.
        {{"--motor", "1", "PTerm=120"}, 0, "PTerm motor 1: 100 -> 120\nsaved out.kdx\n", "", {{8, 154}, {9, 0}}},
        {{"--motor", "2", "PwmFreqHz=1.2", "FixedPosTrim=3"},
         0,
         "PwmFreqHz motor 2: 15.0 -> 1.0\nFixedPosTrim motor 2: 2 -> 3\nsaved out.kdx\n",
         "kdxctl: warning: PWM frequency 1.20 kHz will read back as 8.0 kHz\n"
         "kdxctl: warning: power-up fixed position trim 3 deg will read back as 4 deg\n",
         {{32, 0x35}, {33, 0x82}, {54, 2}}}, // 33333 counts; 1.5 counts round to 2
        // Motor "0" is motor 1, as scripts once said; the axis byte's other bits stay.
        {{"--motor", "0", "QVaneAxis=pan", "Reverse=0", "DriveRatio=3:1"},
         0,
         "QVaneAxis motor 1: Tilt -> Pan\nReverse motor 1: 1 -> 0\nDriveRatio motor 1: 1:1 -> 3.0:1\nsaved out.kdx\n",
         "",
         {{16, 2}, {21, 0x55}, {22, 0x15}}},
        {{"--motor", "2", "PTerm=3000", "GainPerc=5"},
         1,
         "PTerm motor 2: 3000 dropped: outside -2550 .. 2550\nGainPerc motor 2: -50 -> 5\n",
         "kdxctl: 1 value was dropped as out of range; out.kdx was not written\n",
         {}},
    };
    const std::vector<int16_t> before = valuesOf("drift.kdx");
    for (const Case& c : cases) {
        fs::remove("out.kdx");
        std::vector<std::string> argv{"set", "drift.kdx", "-o", "out.kdx"};
        argv.insert(argv.end(), c.args.begin(), c.args.end());
        const KdxctlResult r = kdxctl(argv);
        EXPECT_EQ(r.code, c.code) << c.args.back();
        EXPECT_EQ(r.out, c.out);
        EXPECT_EQ(r.err, c.err);
        if (c.code != 0) {
            EXPECT_FALSE(fs::exists("out.kdx"));
            continue;
        }
        std::vector<int16_t> want = before;
        for (auto [element, value] : c.changed) want[static_cast<std::size_t>(element)] = static_cast<int16_t>(value);
        int sum = 0;
        for (int i = 0; i < 60; ++i) sum += want[static_cast<std::size_t>(i)];
        want[60] = static_cast<int16_t>(sum % 256);
        EXPECT_EQ(valuesOf("out.kdx"), want) << c.args.back();
    }
    // Without -o the file itself is replaced, and only motor 2's P term changes.
    EXPECT_EQ(kdxctl({"set", "a.kdx", "--motor", "2", "PTerm=-200"}).code, 0);
    EXPECT_EQ(kdxctl({"diff", "--tsv", "a.kdx", "b.kdx"}).out,
              "PwmFreqHz\t1\t20.0 (raw 2000)\t20.0 (raw 1999)\nByte15\t1\t171\t172\n");
}

TEST_F(DiffSet, ErrorPathsSayWhatIsWrongAndChangeNothing)
{
    std::ofstream("notes.txt") << "PTerm 100\n";
    const std::string bls = data("config_sample.bls");
    auto usage = [](const char* command, const std::string& what) {
        return "kdxctl " + std::string(command) + ": " + what + " (try kdxctl " + command + " --help)\n";
    };
    const std::tuple<std::vector<std::string>, int, std::string> cases[] = {
        {{"diff", "a.kdx"}, 2, usage("diff", "expected two configurations: files, or --port DEV for a module")},
        {{"diff", "a.kdx", "--axis", "roll", "b.kdx"}, 2, usage("diff", "--axis goes with --port")},
        {{"diff", "--motor", "3", "a.kdx", "b.kdx"}, 2, usage("diff", "--motor is 1 or 2")},
        {{"diff", "a.kdx", "none.kdx"}, 2, "kdxctl: none.kdx: Error opening config file: No such file or directory\n"},
        {{"diff", "a.kdx", "--port", "/dev/kdx-none"},
         2,
         "kdxctl: cannot open /dev/kdx-none: No such file or directory\n"},
        {{"set", "a.kdx"}, 2, usage("set", "expected a configuration file and NAME=VALUE")},
        {{"set", "a.kdx", "PTerm=1"}, 2, usage("set", "a.kdx holds two motors: say which with --motor 1 or 2")},
        {{"set", bls, "--motor", "2", "PTerm=1"}, 2, usage("set", bls + " holds one motor block: --motor 1")},
        {{"set", "a.kdx", "--motor", "1", "Gain=1"},
         2,
         usage("set", "no parameter 'Gain' (the names are those kdxctl show --tsv prints)")},
        {{"set", "a.kdx", "--motor", "1", "PTerm=12abc"}, 2, usage("set", "PTerm=12abc: not a number")},
        {{"set", "a.kdx", "--motor", "1", "Reverse=yes"}, 2, usage("set", "Reverse=yes: Reverse is 0 or 1")},
        {{"set", "notes.txt", "PTerm=1"}, 1, "kdxctl: notes.txt: not a configuration file\n"},
        {{"show", "--tsv", "--json", "a.kdx"}, 2, usage("show", "give --tsv or --json, not both")},
        {{"read", "--port", "/dev/x", "-o", "f.kdx", "--no-backup"},
         2,
         usage("read", "give one of -o, --backup-dir and --no-backup")},
        {{"read", "--port", "/dev/x", "--port", "/dev/y", "-o", "f.kdx"},
         2,
         usage("read", "-o names one file; with several ports use --backup-dir")},
        {{"write", "--port", "/dev/x", "--port", "/dev/x", "a.kdx"}, 2, usage("write", "port /dev/x given twice")},
        {{"write", "--port", "/dev/x", "--no-backup", "--backup-dir", "d", "a.kdx"},
         2,
         usage("write", "--no-backup and --backup-dir exclude each other")},
        {{"write", "--port", "/dev/x", "--motor", "3", "a.kdx"}, 2, usage("write", "--motor is 1 or 2")},
        {{"write", "--port", "/dev/x", "--port", "/dev/y", "--axis", "roll", "--axis", "pan", "--axis", "tilt",
          "a.kdx"},
         2,
         usage("write", "give --axis once for every port, or once per --port")},
        // The backup folder made for a batch in which no module answered goes again.
        {{"write", "--port", "/dev/kdx-none", "a.kdx"},
         1,
         "kdxctl: cannot open /dev/kdx-none: No such file or directory\n"},
        {{"write", "--port", "/dev/kdx-none", "--backup-dir", "a.kdx", "b.kdx"},
         1,
         "kdxctl: cannot make the backup folder a.kdx: Not a directory\n"},
    };
    const std::string before = readText("a.kdx");
    for (const auto& [args, code, err] : cases) {
        const KdxctlResult r = kdxctl(args);
        EXPECT_EQ(r.code, code) << err;
        EXPECT_EQ(r.err, err);
        EXPECT_EQ(r.out, "") << err;
    }
    EXPECT_EQ(readText("a.kdx"), before);
    EXPECT_EQ(std::distance(fs::directory_iterator(dir_), {}), 4) << "nothing was created";
}
