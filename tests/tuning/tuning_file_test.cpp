#include "tuning/tuning_file.h"
#include "tuning_fakes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

using namespace kdx;
using namespace kdx::test;

namespace {
std::string readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}
std::span<const uint8_t> bytesOf(const std::string& s)
{
    return {reinterpret_cast<const uint8_t*>(s.data()), s.size()};
}
const std::string kGolden = std::string(KDX_TEST_DATA) + "/tuning_three_samples.btf";
const std::string kHeader = "AxisRate, AxisError, P,I,IA,D,V1,V2,G,Spare1,Spare2\r\n";
const std::string kFirst = "1.00,-0.50,100.00,20.00,2.06,50.00,10.00,20.50,100.00,0,0\r\n";

// Three samples captured with the panel holding P 100, I 20, IA 2.0625, D 50, V1 10,
// V2 20.5, G 100.
void fillThreeSamples(Rig& r)
{
    r.store.stored[0] = GainSet{100, 20, 2.0625f, 50, 10, 20.5f, 100};
    r.model->MotorSelcb_Click(0);
    const float rates[] = {1, 2, 3}, errors[] = {-0.5f, 0.25f, 0.125f};
    for (int i = 0; i < 3; ++i) r.t().RateTrace[i] = rates[i], r.t().ErrorTrace[i] = errors[i];
    r.t().SampleIndex = 2;
}
} // namespace

TEST(TuningFile, SaveWritesTheHeaderGainsAndSamplesAsTwoDecimalText)
{
    Rig r;
    fillThreeSamples(r);
    EXPECT_EQ(r.model->traceFileText(), readFile(kGolden));

    const auto dir = std::filesystem::temp_directory_path() / "kdx_tuning_file_test";
    std::filesystem::create_directories(dir);
    const std::string path = (dir / "run.btf").string();
    ASSERT_TRUE(r.model->SaveTraceFile(path));
    EXPECT_EQ(readFile(path), readFile(kGolden));
    std::filesystem::remove_all(dir);

    EXPECT_FALSE(r.model->SaveTraceFile((dir / "missing" / "run.btf").string()));
    ASSERT_EQ(r.dialogs.boxes.size(), 1u);
    EXPECT_EQ(r.dialogs.boxes[0].title, "File Write");
    EXPECT_EQ(r.dialogs.boxes[0].prompt.rfind("Error writing trace file: ", 0), 0u);
}

TEST(TuningFile, SavingDuringASweepWritesTheSamplesRecordedSoFar)
{
    Rig r;
    for (int k = 0; k < 11; ++k) r.model->PutSample(0, k, 0);
    const std::string text = r.model->traceFileText();
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 12);
    EXPECT_NE(text.find("\r\n10.00,0.00\r\n"), std::string::npos);
}

TEST(TuningFile, LoadKeepsTheShiftedSamplesAndPutsTheGainsIntoMemoryOne)
{
    Rig r;
    r.store.stored[0] = GainSet{1, 2, 3, 4, 5, 6, 7};
    r.model->MotorSelcb_Click(0);
    r.t().RateTrace[1] = 77;
    const std::string golden = readFile(kGolden);
    const TuningFileLoad load = r.model->LoadTraceBytes(bytesOf(golden));
    EXPECT_TRUE(load.complete);
    // Kept as designed: the second line lands on sample 0, the last pair is not stored.
    EXPECT_EQ(r.t().RateTrace[0], 2.0f);
    EXPECT_EQ(r.t().ErrorTrace[0], 0.25f);
    EXPECT_EQ(r.t().RateTrace[1], 77.0f) << "sample 1 untouched";
    const GainMemory& m = r.gains().memory(0);
    EXPECT_EQ(m.marker, -1.0f);
    EXPECT_EQ(m.values, (GainSet{100, 20, 2.06f, 50, 10, 20.5f, 100}));
    EXPECT_EQ(r.gains().values(), (GainSet{1, 2, 3, 4, 5, 6, 7})) << "tuning values unchanged";
    EXPECT_EQ(r.cap().TriggerMode(), trigger_mode::None);
}

TEST(TuningFile, ALoadedSweepIsShownWholeAndNothingBeyondIt)
{
    struct Case {
        int lines;
        int duration;
    };
    for (const Case& c : {Case{401, 0}, {1001, 1}, {1200, 2}, {6001, 3}}) {
        std::string text = kHeader + kFirst;
        for (int i = 1; i < c.lines; ++i) text += std::to_string(i % 50) + ".00,1.00\r\n";
        Rig r;
        r.t().RateTrace.fill(-40.0f); // an earlier sweep, longer than the file
        r.model->LoadTraceBytes(bytesOf(text));
        const int last = c.lines - 3; // the pairs of lines 2 .. lines-1 sit at 0 .. lines-3
        EXPECT_EQ(r.t().SampleIndex, last);
        EXPECT_EQ(r.cap().faces().TraceDurationcb[c.duration], colours::Green) << c.lines;
        const std::string again = r.model->traceFileText();
        EXPECT_EQ(std::count(again.begin(), again.end(), '\n'), c.lines - 1) << "a re-save holds the loaded pairs";

        r.canvas.lines.clear();
        r.gr().RedrawTraces();
        EXPECT_EQ(r.canvas.withColour(graph_colour::RateTrace).size(), static_cast<std::size_t>(last)) << c.lines;
        // Rates 0 .. 49: the automatic range is 0 .. 49 with a 7.35 margin, the -40 left
        // beyond the file plays no part.
        r.cap().AutoScalecb_Click();
        EXPECT_EQ(r.gr().YAxisMax(0), 56.35f) << c.lines;
    }
}

TEST(TuningFile, AnyBytesLoadWhatTheyCanWithoutThrowing)
{
    struct Case {
        const char* name;
        std::string text;
        bool headerRead, complete, gains;
        int pairs;
        float rate0;
    };
    std::string tooMany = kHeader + kFirst;
    for (int i = 0; i < 6100; ++i) tooMany += "4.00,5.00\r\n";
    const Case cases[] = {
        {"empty", "", false, false, false, 0, 9},
        {"short header", "AxisRate, AxisError", false, false, false, 0, 9},
        {"truncated first line", kHeader + "1.00,2.00,3", true, false, false, 0, 1},
        // Kept as designed: with no sample line the first read runs past the end.
        {"first line only", kHeader + kFirst, true, false, false, 0, 1},
        {"no final line end", kHeader + kFirst + "5,6\r\n7,8", true, true, true, 1, 5},
        {"LF line ends", kHeader + "1,2,3,4,5,6,7,8,9,0,0\n5,6\n7,8\n", true, true, true, 1, 5},
        {"blank items read 0", kHeader + ",,,,,,,,,,\r\n,\r\n,\r\n", true, true, true, 1, 0},
        {"too large for a double", kHeader + kFirst + "1e999,1\r\n1,1\r\n", true, false, false, 0, 1},
        {"too large for a float", kHeader + kFirst + "2,1\r\n1e300,1\r\n1,1\r\n", true, false, false, 1, 2},
        {"more than 6001 pairs", tooMany, true, false, false, 6001, 4},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        TraceBuffer t;
        t.RateTrace.fill(9);
        bool reset = false;
        const TuningFileLoad load = readTuningFile(bytesOf(c.text), t, [&] { reset = true; });
        EXPECT_EQ(load.headerRead, c.headerRead);
        EXPECT_EQ(reset, c.headerRead) << "an unreadable file leaves the display alone";
        EXPECT_EQ(load.complete, c.complete);
        EXPECT_EQ(load.gains.has_value(), c.gains);
        EXPECT_EQ(load.pairsStored, c.pairs);
        EXPECT_EQ(t.RateTrace[0], c.rate0);
    }
}

TEST(TuningFile, AFileThatCannotBeLoadedSaysWhichAndWhyAndLeavesTheDisplay)
{
    const auto dir = std::filesystem::temp_directory_path() / "kdx_tuning_load_test";
    std::filesystem::create_directories(dir / "folder.btf");
    std::ofstream(dir / "empty.btf").close();
    struct Case {
        std::string path, reason;
    };
    std::vector<Case> cases = {
        {(dir / "folder.btf").string(), "Is a directory"},
        {(dir / "missing.btf").string(), "No such file or directory"},
        {(dir / "empty.btf").string(), "no tuning data in it"},
    };
#ifdef __linux__
    cases.push_back({"/proc/self/mem", "Input/output error"}); // its first page is never mapped
#endif
    for (const Case& c : cases) {
        SCOPED_TRACE(c.path);
        Rig r;
        r.t().RateTrace[0] = 9;
        bool loaded = true;
        EXPECT_NO_THROW(loaded = r.model->LoadTraceFile(c.path));
        EXPECT_FALSE(loaded);
        ASSERT_EQ(r.dialogs.boxes.size(), 1u);
        EXPECT_EQ(r.dialogs.boxes[0].prompt, "Error reading tuning file " + c.path + ": " + c.reason);
        EXPECT_EQ(r.dialogs.boxes[0].title, "File Read");
        EXPECT_EQ(r.t().RateTrace[0], 9.0f);
    }
    std::filesystem::remove_all(dir);
}
