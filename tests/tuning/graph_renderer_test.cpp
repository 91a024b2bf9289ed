#include "tuning_fakes.h"

#include <gtest/gtest.h>

using namespace kdx;
using namespace kdx::test;

TEST(GraphRenderer, YRangesAreSymmetricAtLeastOneAndAsWideAsTheLargerEnd)
{
    struct Case {
        double min;
        float max;
        int axis;
        double lo;
        float hi;
    };
    for (const Case& c : {Case{0, 0.5f, 0, -1, 1},
                          {-5, 3, 0, -5, 5},
                          {2, 10, 1, -10, 10},
                          {-0.2, 0.3f, 1, -1, 1},
                          {-7.5, 7.5f, 0, -7.5, 7.5f},
                          {5, 3, 0, -3, 3} /* an empty automatic pass */}) {
        Rig r;
        r.gr().PutYAxisMinMax(c.min, c.max, c.axis);
        EXPECT_EQ(r.gr().YAxisMin(c.axis), c.lo) << c.min << ".." << c.max;
        EXPECT_EQ(r.gr().YAxisMax(c.axis), c.hi) << c.min << ".." << c.max;
    }
    Rig r;
    EXPECT_THROW(r.gr().PutYAxisMinMax(0, 1, 2), HostError);
}

TEST(GraphRenderer, LabelsShowNineValuesInTenthsUntilAutoScalingFindsLargeValues)
{
    Rig r; // default scale: -30..30 and -2..2, never auto-scaled
    const auto texts = [&](int axis) {
        std::vector<std::string> out;
        for (const AxisLabel& l : r.canvas.labels[axis]) out.push_back(l.text);
        return out;
    };
    EXPECT_EQ(texts(0),
              (std::vector<std::string>{"24.0", "18.0", "12.0", "6.0", "0.0", "-6.0", "-12.0", "-18.0", "-24.0"}));
    EXPECT_DOUBLE_EQ(r.canvas.labels[0][4].y, 300) << "the zero label is level with the middle line";

    r.cap().TraceDurationcb_Click(0);
    for (int i = 0; i <= 400; ++i) r.t().RateTrace[i] = 10 + (i % 11);
    r.t().ErrorTrace.fill(0.0f);
    r.t().Capturing = false;
    r.cap().AutoScalecb_Click();
    EXPECT_EQ(r.gr().YAxisMin(0), -21.5);
    EXPECT_EQ(r.gr().YAxisMax(0), 21.5f);
    EXPECT_EQ(texts(0), (std::vector<std::string>{"17", "13", "9", "4", "0", "-4", "-9", "-13", "-17"}));
    EXPECT_EQ(r.gr().YAxisMax(1), 1.0f);
    EXPECT_EQ(texts(1).front(), "0.8") << "an all-zero channel stays in tenths";
}

TEST(GraphRenderer, TheMiddleLabelOfAnAutoScaledNegativeChannelIsAPlainZero)
{
    // A channel that never goes above zero: the range is its minimum less a 30 % margin,
    // mirrored; after the 32-bit rounding of the maximum it must still be exactly
    // symmetric, or the zero label reads "-0.0".
    struct Case {
        float error;
        const char* top;
    };
    for (const Case& c : {Case{-1.1f, "1.0"}, {-2.0f, "1.8"}, {-4.3f, "4.0"}}) {
        Rig r;
        r.cap().TraceDurationcb_Click(0);
        r.t().ErrorTrace.fill(c.error);
        r.cap().AutoScalecb_Click();
        EXPECT_EQ(r.canvas.labels[1][4].text, "0.0") << c.error;
        EXPECT_EQ(r.canvas.labels[1][0].text, c.top) << c.error;
        EXPECT_EQ(r.gr().YAxisMin(1), -r.gr().YAxisMax(1)) << c.error;
    }
}

TEST(GraphRenderer, ValuesOutsideTheRangeRunFortyUnitsInsideTheEdge)
{
    struct Case {
        double value;
        double y;
    };
    const double inset = 40.0 / 15.0; // 40 picture units on a pixel canvas
    for (const Case& c : {Case{1e6, inset}, {-1e6, 600 - inset}, {29.99, inset}, {15, 150}, {0, 300}}) {
        Rig r;
        r.canvas.lines.clear();
        r.gr().DrawTraceSegment(10, 11, c.value, c.value, 0, false);
        ASSERT_EQ(r.canvas.lines.size(), 1u);
        EXPECT_NEAR(r.canvas.lines[0].y0, c.y, 1e-9) << c.value;
        EXPECT_EQ(r.canvas.lines[0].colour, graph_colour::RateTrace);
    }
    Rig r;
    r.canvas.lines.clear();
    r.gr().DrawTraceSegment(999, 1001, 0, 0, 1, false); // beyond the time axis
    r.gr().DrawTraceSegment(-1, 0, 0, 0, 1, false);
    EXPECT_TRUE(r.canvas.lines.empty());
}

TEST(GraphRenderer, OneVerticalGridLinePerSecondWithTheMiddleOneBright)
{
    struct Case {
        int duration;
        int lines;
        int bright;
    };
    for (const Case& c : {Case{0, 4, 2}, {1, 10, 5}, {2, 30, 15}, {3, 60, 30}}) {
        Rig r;
        r.cap().TraceDurationcb_Click(c.duration); // redraws
        std::vector<const Line*> vertical, horizontal;
        for (const Line& l : r.canvas.lines) {
            if (l.colour != graph_colour::Grid && l.colour != graph_colour::GridBright) continue;
            if (l.pen != 1) continue; // the border
            if (l.x0 == l.x1 && l.y0 == 0 && l.y1 == 600) vertical.push_back(&l);
            if (l.y0 == l.y1 && l.x0 == 0 && l.x1 == 1200) horizontal.push_back(&l);
        }
        ASSERT_GE(vertical.size(), static_cast<size_t>(c.lines));
        ASSERT_GE(horizontal.size(), 10u);
        vertical.erase(vertical.begin(), vertical.end() - c.lines); // the last redraw's lines
        horizontal.erase(horizontal.begin(), horizontal.end() - 10);
        for (int i = 1; i <= c.lines; ++i) {
            EXPECT_NEAR(vertical[i - 1]->x0, 1200.0 * i / c.lines, 1e-3);
            EXPECT_EQ(vertical[i - 1]->colour == graph_colour::GridBright, i == c.bright) << i;
        }
        for (int i = 1; i <= 10; ++i) EXPECT_EQ(horizontal[i - 1]->colour == graph_colour::GridBright, i == 5) << i;
    }
}

TEST(GraphRenderer, CursorMarksSitEightSamplesAheadAroundTheZeroLine)
{
    Rig r;
    r.canvas.lines.clear();
    r.gr().DrawSweepCursor(100); // 1000 samples over 1200 pixels
    ASSERT_EQ(r.canvas.lines.size(), 4u);
    const double inner = 300 - 80 / 15.0, outer = 300 - 200 / 15.0;
    for (int k = 0; k < 4; ++k) {
        const Line& l = r.canvas.lines[k];
        const bool white = k >= 2, below = k % 2 == 1; // old position erased first
        EXPECT_NEAR(l.x0, white ? 129.6 : 127.2, 1e-6);
        EXPECT_NEAR(below ? 600 - l.y1 : l.y0, outer, 1e-6);
        EXPECT_NEAR(below ? 600 - l.y0 : l.y1, inner, 1e-6);
        EXPECT_EQ(l.colour, white ? graph_colour::Cursor : graph_colour::Background);
        EXPECT_EQ(l.pen, white ? 2 : 5);
    }
}

TEST(GraphRenderer, RedrawShowsOnlyTheRecordedPartOfAClearedSweep)
{
    Rig r;
    for (int k = 1; k <= 301; ++k) r.model->PutSample(0, k, 0);
    r.canvas.lines.clear();
    r.gr().RedrawTraces();
    EXPECT_EQ(r.canvas.withColour(graph_colour::RateTrace).size(), 300u) << "segments up to index 300";
    r.cap().DisplayClearcb_Click(); // off: the old sweep ahead is valid too
    r.canvas.lines.clear();
    r.gr().RedrawTraces();
    EXPECT_EQ(r.canvas.withColour(graph_colour::RateTrace).size(), 1000u);
}

TEST(GraphRenderer, NothingIsDrawnOnAMinimisedWindow)
{
    for (auto size : {std::pair{0.0, 600.0}, {1200.0, 0.0}}) {
        Rig r;
        r.canvas.w = size.first;
        r.canvas.h = size.second;
        r.canvas.lines.clear();
        const int clears = r.canvas.clears, labels = r.canvas.labelCalls;
        r.gr().RedrawTraces();
        r.cap().DisplayClearcb_Click();
        for (int k = 0; k < 1100; ++k) r.model->PutSample(0, k, 0);
        r.cap().AutoScalecb_Click();
        EXPECT_TRUE(r.canvas.lines.empty());
        EXPECT_EQ(r.canvas.clears, clears);
        EXPECT_EQ(r.canvas.labelCalls, labels);
    }
}
