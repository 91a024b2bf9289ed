#include "tuning_fakes.h"

#include <gtest/gtest.h>

using namespace kdx;
using namespace kdx::test;

namespace {
// The n-th sample's value (1-based), distinct for every sample.
float sampleValue(int n) { return static_cast<float>(n) * 0.25f; }
void feed(Rig& r, int from, int to, int motor = 0)
{
    for (int n = from; n <= to; ++n) r.model->PutSample(motor, sampleValue(n), -sampleValue(n));
}
} // namespace

TEST(TraceCapture, OpensWithDispClearOnRepeatArmedDefaultScaleAndTenSecondSweeps)
{
    Rig r; // the buttons' faces: GraphWinWindow.ControlsCarryTheSystemsNamesCaptionsAndTips
    EXPECT_TRUE(r.t().DisplayClear);
    EXPECT_EQ(r.t().TraceSamples, 1000);
    EXPECT_EQ(r.gr().YAxisMax(0), 30.0f);
    EXPECT_EQ(r.gr().YAxisMin(1), -2.0);
    r.model->PutSample(1, 0, 0);
    EXPECT_TRUE(r.t().Capturing) << "the first sample after opening arms a repeat sweep";
}

TEST(TraceCapture, RepeatSweepsAreContiguous)
{
    Rig r;
    feed(r, 1, 1001);
    EXPECT_FALSE(r.t().Capturing) << "1001 samples close one 1000-sample sweep";
    EXPECT_EQ(r.t().SampleIndex, 1000);
    EXPECT_EQ(r.t().RateTrace[0], sampleValue(1));
    EXPECT_EQ(r.t().RateTrace[1000], sampleValue(1001));
    EXPECT_EQ(r.t().PrevRateTrace[1000], sampleValue(1001));
    EXPECT_EQ(r.t().PrevErrorTrace[500], -sampleValue(501));
    feed(r, 1002, 1002);
    EXPECT_TRUE(r.t().Capturing);
    EXPECT_EQ(r.t().SampleIndex, 1);
    EXPECT_EQ(r.t().RateTrace[0], sampleValue(1002));
    EXPECT_EQ(r.t().SweepStartValues[0], sampleValue(1002));
}

TEST(TraceCapture, TriggerButtonsDecideWhatIsRecorded)
{
    enum Click { None, Single, Repeat };
    struct Case {
        const char* name;
        bool repeatOffFirst; // switch repeat off before anything arrives
        Click first;         // clicked before sample 1
        Click midSweep;      // clicked after sample 500
        int samples;
        int lastStoredSample; // 1-based sample held at index 1000 at the end, 0: none
        bool capturing;
        uint32_t repeatFace, singleFace;
    };
    const Case cases[] = {
        {"single while idle records one sweep", true, Single, None, 1500, 1001, false, colours::LightGrey,
         colours::LightGrey},
        {"nothing armed records nothing", true, None, None, 50, 0, false, colours::LightGrey, colours::LightGrey},
        {"single during repeat lets the sweep finish", false, None, Single, 1500, 1001, false, colours::LightGrey,
         colours::LightGrey},
        {"repeat off during a sweep lets it finish", false, None, Repeat, 1500, 1001, false, colours::LightGrey,
         colours::LightGrey},
        // Kept: a new sweep's first sample also lands on the previous closing index.
        {"repeat keeps re-arming", false, None, None, 1500, 1002, true, colours::Green, colours::LightGrey},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Rig r;
        auto click = [&](Click k) {
            if (k == Single) r.cap().NowTrigcb_Click();
            if (k == Repeat) r.cap().RepeatTrigcb_Click();
        };
        if (c.repeatOffFirst) r.cap().RepeatTrigcb_Click();
        click(c.first);
        feed(r, 1, 500);
        click(c.midSweep);
        feed(r, 501, c.samples);
        EXPECT_EQ(r.t().Capturing, c.capturing);
        EXPECT_EQ(r.t().RateTrace[1000], c.lastStoredSample ? sampleValue(c.lastStoredSample) : 0.0f);
        EXPECT_EQ(r.cap().faces().RepeatTrigcb, c.repeatFace);
        EXPECT_EQ(r.cap().faces().NowTrigcb, c.singleFace);
        if (!c.capturing) {
            EXPECT_EQ(r.cap().TriggerMode(), trigger_mode::None);
        }
    }
}

TEST(TraceCapture, TheOtherMotorArmsButIsNeverStored)
{
    Rig r;
    feed(r, 1, 3, /*motor=*/1);
    EXPECT_TRUE(r.t().Capturing);
    EXPECT_TRUE(r.cap().SweepStartPending());
    EXPECT_EQ(r.t().SampleIndex, 0);
    EXPECT_EQ(r.t().RateTrace[0], 0.0f);
    feed(r, 4, 5, 0);
    EXPECT_EQ(r.t().RateTrace[0], sampleValue(4));
    EXPECT_EQ(r.t().RateTrace[1], sampleValue(5));
}

TEST(TraceCapture, TheCursorIsNotDrawnForTheLastEightSamples)
{
    for (int duration : {0, 1}) {
        Rig r;
        r.cap().DisplayClearcb_Click();
        r.cap().TraceDurationcb_Click(duration);
        const int n = r.t().TraceSamples;
        feed(r, 1, n - 12);
        for (int index = n - 12; index <= n; ++index) {
            r.canvas.lines.clear();
            feed(r, index + 1, index + 1);
            const bool drawn = !r.canvas.withColour(graph_colour::Cursor).empty();
            EXPECT_EQ(drawn, index <= n - 8) << "index " << index << " of " << n;
        }
    }
}

TEST(TraceCapture, SweepsRescaleAtHalfTimeAndOneSampleBeforeTheEnd)
{
    for (int duration = 0; duration < 4; ++duration) {
        Rig r;
        r.cap().TraceDurationcb_Click(duration);
        r.cap().AutoScalecb_Click();
        const int n = r.t().TraceSamples;
        std::vector<int> redrawnAt;
        for (int k = 1; k <= n + 1; ++k) {
            const int clears = r.canvas.clears;
            r.model->PutSample(0, 100.0 * k / n, 0);
            if (r.canvas.clears != clears && k > 1) redrawnAt.push_back(r.t().SampleIndex);
        }
        EXPECT_EQ(redrawnAt, (std::vector<int>{n / 2, n - 1})) << n;
        EXPECT_GT(r.gr().YAxisMax(0), 99.0f) << "rescaled from the data at n - 1";
    }
}

TEST(TraceCapture, DurationButtonsSetSamplesAndTimeAxis)
{
    struct Case {
        int index;
        float seconds;
        int samples;
    };
    for (const Case& c : {Case{0, 4, 400}, {1, 10, 1000}, {2, 30, 3000}, {3, 60, 6000}}) {
        Rig r;
        r.cap().TraceDurationcb_Click(c.index);
        EXPECT_EQ(r.t().TraceSeconds, c.seconds);
        EXPECT_EQ(r.t().TraceSamples, c.samples);
        EXPECT_EQ(r.gr().XAxisMax(), static_cast<float>(c.samples));
        for (int k = 0; k < 4; ++k)
            EXPECT_EQ(r.cap().faces().TraceDurationcb[k], k == c.index ? colours::Green : colours::LightGrey);
    }
    Rig r; // shortening a running sweep ends it with the next sample
    r.cap().TraceDurationcb_Click(3);
    feed(r, 1, 700);
    r.cap().TraceDurationcb_Click(0);
    EXPECT_TRUE(r.t().Capturing);
    feed(r, 701, 701);
    EXPECT_FALSE(r.t().Capturing);
    EXPECT_EQ(r.t().PrevRateTrace[400], sampleValue(401));
}
