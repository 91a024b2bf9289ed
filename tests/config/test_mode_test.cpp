#include "config/test_mode.h"
#include "core/colour.h"
#include "core/host_error.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

using namespace kdx;

namespace {

// Ticks TestTmr as the window does while it is enabled; returns what was sent.
std::vector<std::vector<int>> runTimer(TestMode& t, bool qvane, int axis, int maxTicks = 5)
{
    std::vector<std::vector<int>> sent;
    for (int i = 0; i < maxTicks && t.TestTmrEnabled(); ++i) {
        OutMsgBuffer out{};
        t.TestTmr_Timer(out, qvane, axis);
        sent.emplace_back(out.begin(), out.begin() + out[0]);
    }
    return sent;
}

} // namespace

TEST(TestMode, CommandsOnTheWire)
{
    const std::tuple<std::function<void(TestMode&)>, bool, std::vector<int>> cases[] = {
        // 50 % is 127.5 and rounds to the even 128
        {[](TestMode& t) { t.applyTestRate(10), t.applyTestPower(50), t.Testcb_Click(1); }, false, {6, 116, 2, 10, 128, 6}},
        // defaults 30 % (76.5 -> 76) and rate 8
        {[](TestMode& t) { t.Testcb_Click(0); }, false, {6, 116, 1, 8, 76, 207}},
        {[](TestMode& t) { t.applyTestPower(100), t.TestOffcb_Click(0), t.TestOffcb_Click(1); }, true,
         {7, 130, 116, 12 + 128 + 16, 8, 255, (7 + 130 + 116 + 156 + 8 + 255) % 256}},
        {[](TestMode& t) { t.applyTestRate(2.5f), t.Testcb_Click(1); }, false, {6, 116, 2, 2, 76, 202}},
    };
    for (const auto& [clicks, qvane, want] : cases) {
        TestMode t;
        clicks(t);
        EXPECT_EQ(runTimer(t, qvane, 1, 1).at(0), want);
    }
    const std::tuple<int, bool, int, std::vector<int>> drives[] = {
        {1, true, 2, {5, 130, 117, 162, 158}}, {0, false, 0, {4, 117, 1, 122}}, {0, true, 0, {5, 130, 117, 129, 125}}};
    for (const auto& [index, qvane, axis, want] : drives) {
        OutMsgBuffer out{};
        buildTuningDrive(out, index, qvane, axis);
        EXPECT_EQ(std::vector<int>(out.begin(), out.begin() + out[0]), want);
    }
    OutMsgBuffer out{};
    EXPECT_THROW(buildTuningDrive(out, 2, false, 0), HostError);
}

TEST(TestMode, TimerSendsOneLastCommandWhenEverythingStops)
{
    TestMode t;
    EXPECT_EQ(runTimer(t, false, 0).size(), 1u) << "enabled from start: one tick, then off";
    t.Testcb_Click(0);
    t.Testcb_Click(0);
    EXPECT_EQ(runTimer(t, false, 0), (std::vector<std::vector<int>>{{6, 116, 0, 8, 76, 206}}));
    t.Testcb_Click(1);
    EXPECT_EQ(runTimer(t, true, 2, 3).size(), 3u) << "keeps running while a test is on";
    t.Testcb_Click(1);
    const auto last = runTimer(t, true, 2);
    EXPECT_TRUE(last.size() == 1 && last[0][3] == 128 + 32) << "relay bits only";
    t.TestOffcb_Click(0);
    t.Testcb_Click(1);
    t.CancelTest();
    const auto off = runTimer(t, false, 0, 3);
    EXPECT_TRUE(off.size() == 3 && off[2][2] == 4) << "Cancel leaves a switched-off motor off";
}

TEST(TestMode, ButtonsSwitchBetweenDirectionAndOff)
{
    using Click = std::function<void(TestMode&)>;
    const Click dir0 = [](TestMode& t) { t.Testcb_Click(0); }, dir1 = [](TestMode& t) { t.Testcb_Click(1); };
    const Click off0 = [](TestMode& t) { t.TestOffcb_Click(0); }, off1 = [](TestMode& t) { t.TestOffcb_Click(1); };
    const std::pair<Click, std::vector<bool>> steps[] = { // direction 0, off 0, direction 1, off 1
        {dir0, {1, 0, 0, 0}}, {off0, {0, 1, 0, 0}}, {dir1, {0, 1, 1, 0}}, {off0, {0, 0, 1, 0}},
        {[](TestMode& t) { t.CancelTest(); }, {0, 0, 0, 0}}, {off1, {0, 0, 0, 1}}, {dir1, {0, 0, 1, 0}}};
    TestMode t;
    int n = 0;
    for (const auto& [click, want] : steps) {
        click(t);
        EXPECT_EQ((std::vector<bool>{t.direction(0), t.off(0), t.direction(1), t.off(1)}), want) << "step " << n;
        EXPECT_EQ(t.TestcbColour(1), want[2] ? colours::Green : colours::LightGrey) << "step " << n;
        EXPECT_EQ(t.TestOffcbColour(0), want[1] ? colours::Green : colours::LightGrey) << "step " << n++;
    }
    EXPECT_THROW(t.Testcb_Click(2), HostError);
}

TEST(TestMode, PowerAndRateEntries)
{
    const std::tuple<bool, float, bool, const char*> cases[] = {
        {true, 100, true, "100%"}, {true, 100.5f, false, "30%"}, {true, -1, false, "30%"},
        {true, 12.5f, true, "13%"}, {false, 256, false, "8"},    {false, 0, true, "0"}};
    for (const auto& [power, value, accepted, caption] : cases) {
        TestMode t;
        EXPECT_EQ(power ? t.applyTestPower(value) : t.applyTestRate(value), accepted) << value;
        EXPECT_EQ(power ? t.TestPtbCaption() : t.TestRatetbCaption(), caption) << value;
    }
}
