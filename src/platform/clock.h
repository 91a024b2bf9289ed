#pragma once
// The one clock the program reads: monotonic time from an arbitrary origin. The program
// runs on the system's; tests and benchmarks pass one that steps in simulated time.
#include <cstdint>

namespace kdx {

class Clock {
public:
    virtual ~Clock() = default;
    // Nanoseconds since the clock's origin; never decreases.
    virtual int64_t nowNs() = 0;
    double nowSeconds() { return static_cast<double>(nowNs()) * 1e-9; }
};

// The system's monotonic clock. It holds no state: one, shared by everything.
Clock& systemClock();

} // namespace kdx
