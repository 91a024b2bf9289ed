#pragma once
// A clock that moves only when the test moves it: `now` in nanoseconds, plus `step`
// added at every reading (a clock that runs while the program works).
#include "platform/clock.h"

#include <cmath>
#include <cstdint>

namespace kdx::test {

class ManualClock : public Clock {
public:
    ManualClock() = default;
    explicit ManualClock(int64_t startNs) : now(startNs) {}

    int64_t now = 0;
    int64_t step = 0;
    int64_t nowNs() override { return now += step; }
    void setSeconds(double s) { now = std::llround(s * 1e9); }
};

} // namespace kdx::test
