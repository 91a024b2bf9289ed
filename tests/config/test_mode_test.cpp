#include "config/test_mode.h"
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
        {[](TestMode& t) { t.applyTestRate(10), t.applyTestPower(50), t.Testcb_Click(1); },
         false,
         {6, 116, 2, 10, 128, 6}},
        // defaults 30 % (76.5 -> 76) and rate 8
        {[](TestMode& t) { t.Testcb_Click(0); }, false, {6, 116, 1, 8, 76, 207}},
        {[](TestMode& t) { t.applyTestPower(100), t.TestOffcb_Click(0), t.TestOffcb_Click(1); },
         true,
         {7, 130, 116, 12 + 128 + 16, 8, 255, (7 + 130 + 116 + 156 + 8 + 255) % 256}},
        {[](TestMode& t) { t.applyTestRate(2.5f), t.Testcb_Click(1); }, false, {6, 116, 2, 2, 76, 202}},
    };
    for (const auto& [clicks, qvane, want] : cases) {
        TestMode t;
        clicks(t);
        EXPECT_EQ(runTimer(t, qvane, 1, 1).at(0), want);
    }
    // The window's buttons give motors 0 and 1; any other index is the host's subscript error.
    EXPECT_THROW(TestMode().Testcb_Click(2), HostError);
    OutMsgBuffer out{};
    EXPECT_THROW(buildTuningDrive(out, 2, false, 0), HostError);
}
