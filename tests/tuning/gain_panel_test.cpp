#include "tuning/gain_message.h"
#include "tuning_fakes.h"

#include <gtest/gtest.h>

using namespace kdx;
using namespace kdx::test;

namespace {
// A rig whose main window holds `stored` for motor 0, selected and active.
std::unique_ptr<Rig> activeRig(const GainSet& stored)
{
    auto r = std::make_unique<Rig>();
    r->store.stored[0] = stored;
    r->model->MotorSelcb_Click(0);
    return r;
}
const GainSet kTypical{100, 20, 2.5f, 50, 10, 20, 100};
} // namespace

TEST(GainPanel, StepsClampAtTheProgramsOwnLimits)
{
    struct Case {
        const char* name;
        GainSet start;
        Gain gain;
        int sign, index;
        Gain check;
        float expected;
        const char* caption; // of `check`, or nullptr
    };
    const Case cases[] = {
        {"P over 12700 becomes 12800", {12700, 0, 0, 0, 0, 0, 0}, Gain::P, +1, 1, Gain::P, 12800, "12800%"},
        {"D over 12700 becomes 2550", {0, 0, 0, 12695, 0, 0, 0}, Gain::D, +1, 1, Gain::D, 2550, "2550%"},
        {"G buttons stop at 12700", {0, 0, 0, 0, 0, 0, 12695}, Gain::G, +1, 1, Gain::G, 12700, "12700%"},
        {"G over 12700 after a P step becomes 2550", {0, 0, 0, 0, 0, 0, 13000}, Gain::P, +1, 0, Gain::G, 2550, nullptr},
        {"a negative I becomes 0 on any gain step", {0, -500, 0, 0, 0, 0, 0}, Gain::IA, +1, 0, Gain::I, 0, "0"},
        {"I stops at 255", {0, 250, 0, 0, 0, 0, 0}, Gain::I, +1, 1, Gain::I, 255, "255"},
        {"P never goes negative", {5, 0, 0, 0, 0, 0, 0}, Gain::P, -1, 1, Gain::P, 0, "0%"},
        {"IA below 0 becomes 0", {0, 0, 0.03f, 0, 0, 0, 0}, Gain::IA, -1, 0, Gain::IA, 0, "0.00"},
        {"IA rounds to sixteenths and stops", {0, 0, 15.9f, 0, 0, 0, 0}, Gain::IA, +1, 0, Gain::IA, 15.9375f, "15.94"},
        {"IA at the top stays", {0, 0, 15.9375f, 0, 0, 0, 0}, Gain::IA, +1, 1, Gain::IA, 15.9375f, nullptr},
        {"volts are not clamped", {0, 0, 0, 0, 0.05f, 0, 0}, Gain::V1, -1, 0, Gain::V1, -0.05f, "-0.1"},
        {"G steps down to 0", {0, 0, 0, 0, 0, 0, 4}, Gain::G, -1, 1, Gain::G, 0, "0%"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        auto r = activeRig(c.start);
        if (c.sign > 0) r->gains().Inccb_Click(c.gain, c.index);
        else r->gains().Deccb_Click(c.gain, c.index);
        EXPECT_FLOAT_EQ(r->gains().values()[c.check], c.expected);
        if (c.caption) {
            EXPECT_EQ(r->gains().faces().captions[static_cast<int>(c.check)], c.caption);
        }
        EXPECT_TRUE(r->gains().gainMsgEnabled()) << "a step ticks Enab";
    }
}

TEST(GainPanel, EntryDialogAcceptsInRangeRepliesAndRoundsOnAnEmptyOne)
{
    struct Case {
        Gain gain;
        float current;
        const char* reply;
        float expected;
        const char* proposed;
    };
    const Case cases[] = {
        {Gain::IA, 3.5f, "", 4, "4.0"}, // kept: an empty reply rounds to a whole number
        {Gain::V1, 12.5f, "", 12, "12.0"},
        {Gain::P, 100, "12800", 100, "100.0"}, // out of range: dropped silently
        {Gain::P, 100, "-12800", -12800, "100.0"},
        {Gain::I, 20, "-500 units", -500, "20.0"},
        {Gain::V2, 20, "abc", 0, "20.0"}, // no number reads 0, which is in range
        {Gain::IA, 2, "15.94", 2, "2.0"},
        {Gain::G, 100, "12700", 12700, "100.0"},
    };
    for (const Case& c : cases) {
        GainSet start = kTypical;
        start[c.gain] = c.current;
        auto r = activeRig(start);
        r->dialogs.inputs.push_back(c.reply);
        r->gains().ValueTb_Click(c.gain);
        EXPECT_FLOAT_EQ(r->gains().values()[c.gain], c.expected) << c.reply;
        ASSERT_EQ(r->dialogs.inputDefaults.size(), 1u);
        EXPECT_EQ(r->dialogs.inputDefaults[0], c.proposed);
    }
}

TEST(GainPanel, VoltageLockKeepsTheOffsetTakenAtTheClick)
{
    auto r = activeRig({0, 0, 0, 0, 12, 24, 0});
    GainPanel& g = r->gains();
    g.LockVcb_Click(true);
    g.Inccb_Click(Gain::V1, 1);
    EXPECT_EQ(g.values().V1, 13.0f);
    EXPECT_EQ(g.values().V2, 25.0f);
    g.Deccb_Click(Gain::V2, 0);
    EXPECT_FLOAT_EQ(g.values().V1, 12.9f);
    r->dialogs.inputs.push_back("10");
    g.ValueTb_Click(Gain::V1);
    EXPECT_FLOAT_EQ(g.values().V2, 24.9f) << "a typed V1 does not move V2";
    EXPECT_FLOAT_EQ(g.VoltageOffset(), 14.9f);
}

TEST(GainPanel, MemoriesStoreUndoAndRecall)
{
    auto r = activeRig(kTypical);
    GainPanel& g = r->gains();
    const GainSet first = g.values();
    r->keys.shift = true;
    g.MemStorecb_Click(1); // nothing stored yet: undo does nothing
    EXPECT_EQ(g.memory(1).marker, 0.0f);
    g.MemReccb_Click(1); // empty slot: no recall
    r->keys.shift = false;
    g.MemStorecb_Click(1);
    EXPECT_EQ(g.faces().MemStorecb[1], colours::Green);
    EXPECT_EQ(g.faces().MemReccb[1], colours::Green) << "memory matches the current gains";
    g.Inccb_Click(Gain::P, 1);
    EXPECT_EQ(g.faces().MemReccb[1], colours::LightGrey);
    r->keys.shift = true;
    g.MemStorecb_Click(1); // stored only once: still nothing to undo
    EXPECT_EQ(g.memory(1).values, first);
    r->keys.shift = false;
    g.MemStorecb_Click(1);
    EXPECT_EQ(g.memory(1).values.P, 110.0f);
    r->keys.shift = true;
    g.MemStorecb_Click(1); // undo of the second store
    EXPECT_EQ(g.memory(1).values, first);
    EXPECT_EQ(g.faces().MemStorecb[1], colours::Green) << "a Store button never turns grey again";
    g.MemReccb_Click(1);
    EXPECT_EQ(g.values(), first);
    EXPECT_EQ(g.faces().MemReccb[1], colours::Green);
    EXPECT_EQ(g.faces().MemStorecb[0], colours::LightGrey);
    EXPECT_THROW(g.MemStorecb_Click(4), HostError) << "slot 4 has no buttons";
}

TEST(GainPanel, ModifiedGainsAreWrittenBackRevertedOrConfirmedOnMotorChange)
{
    auto r = activeRig(kTypical);
    GainPanel& g = r->gains();
    EXPECT_FALSE(g.GetDataModified());
    g.Inccb_Click(Gain::D, 0);
    EXPECT_TRUE(g.GetDataModified());
    EXPECT_EQ(g.faces().SaveGaincb, colours::Green);
    g.SaveGaincb_Click();
    EXPECT_EQ(r->store.stored[0].D, 51.0f);
    EXPECT_EQ(g.faces().SaveGaincb, colours::LightGrey);
    EXPECT_FALSE(g.GetDataModified());

    g.Inccb_Click(Gain::D, 0);
    g.Revertcb_Click();
    EXPECT_EQ(g.values().D, 51.0f);

    r->store.stored[1] = kTypical;
    for (Answer a : {Answer::No, Answer::Yes}) {
        g.Inccb_Click(Gain::P, 0);
        const float tuned = g.values().P;
        const int from = g.MotorIndex();
        r->dialogs.answers.push_back(a);
        r->model->MotorSelcb_Click(1 - from);
        EXPECT_EQ(r->dialogs.boxes.back().title, "Gain Modified");
        EXPECT_EQ(r->store.stored[from].P == tuned, a == Answer::Yes);
        EXPECT_EQ(g.MotorIndex(), 1 - from);
        EXPECT_EQ(r->cap().SelectedMotor(), 1 - from) << "the graph follows the motor";
        EXPECT_EQ(g.faces().MotorSelcb[1 - from], colours::Green);
    }
}

TEST(GainMessage, OnlyTheLowByteOfIAndNegativesInTwosComplement)
{
    // P -100 % = -128, I -500 = 0xFE0C, D 12700 % = 16256, G -12800 % = -32768, V1 42 V =
    // 10752, V2 0.1 V = 25.6 -> 26, IA 15.9375 = 255 sixteenths.
    OutMsgBuffer out{};
    buildGainMsg(out, -100, -500, 15.9375f, 12700, -12800, 42, 0.1f, 0, GainMsgRoute{});
    const std::vector<uint8_t> body = frameBody(out);
    EXPECT_EQ(std::vector<int>(body.begin(), body.end()),
              (std::vector<int>{16, 115, 0, 128, 255, 12, 128, 63, 0, 128, 0, 42, 26, 0, 255, 144}));
}
