#include "config/config_file.h"
#include "core/atomic_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

using namespace kdx;

namespace {

std::vector<uint8_t> readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), {});
}

std::string dataPath(const char* name) { return std::string(KDX_TEST_DATA) + "/" + name; }
std::vector<uint8_t> bytesOf(const std::string& s) { return std::vector<uint8_t>(s.begin(), s.end()); }

const std::string kHeader = "*!    VELMOR KDX Backup File     *\r\n";

// A file whose data records hold 0, 1, 2, ... in order.
std::string countingFile(int records)
{
    std::string s = kHeader;
    for (int r = 0; r < records; ++r) {
        s += '*';
        for (int k = 0; k < 16; ++k) s += "0123456789ABCDEF"[r] + std::string(1, "0123456789ABCDEF"[k]);
        s += "*\r\n";
    }
    return s;
}

// The image stored in config_sample.kdx (elements 61 .. 63 included).
const MemoryImage kSample{7,   0,  208, 7,  0,   30,  0,  50,  128, 0,   32,  5,   32,  0,   20, 171, 128,
                          100, 14, 0,   1,  0,   64,  30, 45,  193, 194, 195, 196, 197, 0,   0,  106, 10,
                          0,   20, 0,   40, 128, 255, 8,  255, 192, 255, 16,  0,   2,   255, 12, 128, 255,
                          85,  21, 0,   1,  0,   0,   0,  0,   0,   251, 17,  34,  51,  0};

MemoryImage filled(int16_t v)
{
    MemoryImage m;
    m.fill(v);
    return m;
}

} // namespace

TEST(ConfigFile, SavesAndLoadsTheGoldenFiles)
{
    EXPECT_EQ(configFileBytes(MemoryImage{}, true), readFile(dataPath("config_all_zero.kdx")));
    EXPECT_EQ(readFile(dataPath("config_all_zero.kdx")).size(), 180u);
    EXPECT_EQ(parseConfigFile(bytesOf(countingFile(2).replace(37, 2, "1g")), false).values[0], 1);
    EXPECT_EQ(configFileBytes(kSample, true), readFile(dataPath("config_sample.kdx")));
    EXPECT_EQ(configFileBytes(kSample, false), readFile(dataPath("config_sample.bls")));
    MemoryImage high{};
    high[15] = 256; // an element left above a byte saves the byte the module gets
    EXPECT_EQ(configFileBytes(high, false), configFileBytes(MemoryImage{}, false));

    for (auto [file, twoAxis] :
         {std::pair{"config_sample.kdx", true}, {"config_sample_lowercase.kdx", true}, {"config_sample.bls", false}}) {
        const ConfigLoad load = loadConfigFile(dataPath(file), false);
        ASSERT_EQ(load.status, ConfigLoadStatus::Loaded) << file << ": " << load.box.prompt;
        EXPECT_EQ(load.twoAxis(), twoAxis) << file;
        MemoryImage image = filled(-1);
        ASSERT_TRUE(applyConfigLoad(load, image));
        for (int i = 0; i < 65; ++i) EXPECT_EQ(image[i], i < (twoAxis ? 64 : 32) ? kSample[i] : -1) << file << " " << i;
    }
}

TEST(ConfigFile, RejectedFilesSayWhyAndChangeNothing)
{
    std::string missingStar = countingFile(4);
    missingStar[36 * 2 + 33] = ' ';
    std::string badStart = countingFile(4);
    badStart[36 * 4] = '#';
    std::string afterComment = countingFile(2);
    afterComment.insert(36, "*! a note" + std::string(24, ' ') + "*\r\n");
    afterComment[36 * 3] = 'X';
    const std::string bad = "Invalid data format on input line ", insufficient = "Insufficent Data In Config File";
    const std::pair<std::string, std::string> cases[] = {
        {missingStar, bad + "3"},
        {badStart, bad + "5"},
        {afterComment, bad + "4"},
        {countingFile(4).substr(0, 150), bad + "5"},
        {"hello\nworld\n", bad + "1"},
        {countingFile(3), insufficient},
        {countingFile(5), insufficient},
        {kHeader, insufficient},
        {"", insufficient},
    };
    for (const auto& [bytes, prompt] : cases) {
        for (bool qvane : {false, true}) {
            const ConfigLoad load = parseConfigFile(bytesOf(bytes), qvane);
            EXPECT_EQ(load.status, ConfigLoadStatus::Failed) << prompt;
            EXPECT_EQ(load.box.prompt, prompt);
            EXPECT_EQ(load.box.title + std::to_string(load.box.style), "File Read16");
            MemoryImage image = filled(-1);
            EXPECT_FALSE(applyConfigLoad(load, image));
            EXPECT_EQ(image, filled(-1)) << prompt;
        }
    }
}

TEST(ConfigFile, TwoMotorFileThroughAQVaneAsksWhichMotor)
{
    std::string file = countingFile(4);
    file.replace(36 * 2 + 1, 2, "05");          // element 16: Roll
    file.replace(36 * 3 + 1 + 2 * 14, 2, "07"); // element 46: 3, no axis
    const ConfigLoad load = parseConfigFile(bytesOf(file), true);
    ASSERT_EQ(load.status, ConfigLoadStatus::AskMotor);
    EXPECT_EQ(load.box.prompt,
              "The config contains data for 2 motors : Roll and None. Motor 1 (Roll) will be loaded by default if "
              "you click 'Yes'. Click 'No' to load the second motor data (None) instead.");
    EXPECT_EQ(load.box.title, "Config Read");
    EXPECT_EQ(load.box.style, 4);

    for (bool no : {false, true}) {
        MemoryImage image = filled(-1);
        ASSERT_TRUE(applyConfigLoad(load, image, no));
        for (int i = 0; i < 65; ++i) {
            const int want = no ? (i < 30 ? load.values[30 + i] : -1) : (i < 64 ? load.values[i] : -1);
            EXPECT_EQ(image[i], want) << (no ? "No" : "Yes") << " element " << i;
        }
    }
    EXPECT_EQ(parseConfigFile(bytesOf(file), false).status, ConfigLoadStatus::Loaded);
    EXPECT_EQ(parseConfigFile(bytesOf(countingFile(2)), true).status, ConfigLoadStatus::Loaded);
}

TEST(ConfigFile, GarbageNeverThrows)
{
    std::mt19937 rng(12345);
    const std::vector<uint8_t> good = bytesOf(countingFile(4));
    for (int round = 0; round < 3000; ++round) {
        std::vector<uint8_t> bytes = good;
        if (round % 3 == 0) bytes.resize(rng() % 400);
        for (std::size_t k = 0, n = round % 3 == 0 ? bytes.size() : 1 + rng() % 4; k < n && !bytes.empty(); ++k)
            bytes[round % 3 == 0 ? k : rng() % bytes.size()] = static_cast<uint8_t>(rng());
        if (round % 3 == 2) bytes.resize(rng() % bytes.size());
        for (bool qvane : {false, true}) {
            ConfigLoad load;
            ASSERT_NO_THROW(load = parseConfigFile(bytes, qvane)) << "round " << round;
            for (int16_t v : load.values) ASSERT_TRUE(v >= 0 && v <= 255);
        }
    }
}

TEST(ConfigFile, SavesReplaceTheFileOrLeaveItAlone)
{
    const auto dir = std::filesystem::temp_directory_path() / ("kdx-config-test-" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir);
    const std::string path = (dir / "keep.kdx").string();
    ASSERT_FALSE(saveConfigFile(path, kSample, true).has_value());
    const ConfigLoad load = loadConfigFile(path, false);
    MemoryImage back{};
    ASSERT_TRUE(applyConfigLoad(load, back));
    EXPECT_TRUE(std::equal(back.begin(), back.begin() + 64, kSample.begin()));

    const auto before = readFile(path);
    for (AtomicSaveFault fault :
         {AtomicSaveFault::Create, AtomicSaveFault::Write, AtomicSaveFault::Sync, AtomicSaveFault::Rename}) {
        const auto box = saveConfigFile(path, MemoryImage{}, false, AtomicSaver{fault});
        ASSERT_TRUE(box.has_value());
        EXPECT_EQ(box->prompt.rfind("Error writing backup file: ", 0), 0u) << box->prompt;
        EXPECT_EQ(box->title, "File Write");
        EXPECT_EQ(readFile(path), before) << int(fault);
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir), {}), 1) << "no temporary file is left";
    }
    ASSERT_FALSE(saveConfigFile(path, MemoryImage{}, false).has_value());
    EXPECT_EQ(readFile(path).size(), 108u);

    EXPECT_EQ(loadConfigFile((dir / "nope.kdx").string(), false).box.prompt.rfind("Error opening config file: ", 0),
              0u);
    // Whatever the path turns out to be, the load says why in the "File Read" box.
    std::vector<std::pair<std::string, std::string>> unreadable = {{dir.string(), "Is a directory"}};
#ifdef __linux__
    unreadable.push_back({"/proc/self/mem", "Input/output error"});
#endif
    for (const auto& [path, reason] : unreadable) {
        const ConfigLoad load = loadConfigFile(path, false);
        EXPECT_EQ(load.status, ConfigLoadStatus::Failed);
        EXPECT_EQ(load.box.prompt, "Error reading file: " + reason);
        EXPECT_EQ(load.box.title, "File Read");
    }
    EXPECT_TRUE(saveConfigFile((dir / "no/such.kdx").string(), MemoryImage{}, true).has_value());
    std::filesystem::remove_all(dir);
}
