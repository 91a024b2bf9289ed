#include "platform/clock.h"

#include <chrono>

namespace kdx {

namespace {

class SteadyClock final : public Clock {
public:
    int64_t nowNs() override
    {
        return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
            .count();
    }
};

} // namespace

Clock& systemClock()
{
    static SteadyClock clock;
    return clock;
}

} // namespace kdx
