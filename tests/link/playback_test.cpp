#include "link/playback.h"

#include <gtest/gtest.h>

using namespace kdx;

TEST(Playback, PacerAllowsABurstThenItsRate)
{
    MessagePacer pacer(40000, 2000); // per second, at once
    pacer.reset(0);
    struct Step {
        int64_t atNs;
        double allowance; // before spending
        double spent;
    };
    // An overshoot is repaid before anything more is allowed; the burst is the ceiling.
    const Step steps[] = {{0, 2000, 2100}, {1'000'000, 0, 0}, {5'000'000, 100, 0}, {1'000'000'000, 2000, 0}};
    for (const Step& s : steps) {
        EXPECT_DOUBLE_EQ(pacer.allowance(s.atNs), s.allowance) << s.atNs;
        pacer.spend(s.spent);
    }
}
