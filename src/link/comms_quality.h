#pragma once
// The link quality the main window shows: good messages counted between two ticks of
// its 500 ms timer, against the 50 a module sends at 100 messages a second; and the
// count of bad ones, which only ever grows and restarts past a limit.
#include <cstdint>

namespace kdx {

class CommsQualityCount {
public:
    // Messages a module sends between two ticks.
    static constexpr int16_t ExpectedPerTick = 50;
    // One short of the expected count: deliberately taken as full, so one message of
    // jitter still reads as perfect. More than expected reads as full too.
    static constexpr int16_t JitterCount = ExpectedPerTick - 1;
    // The bad count restarts from 0 once it has passed this.
    static constexpr int32_t BadCountLimit = 32760;

    // One message, good or bad. A 16-bit good count that overflows raises the host's
    // overflow error (the tick resets it long before at any real rate).
    void PutMessageReceived(bool good);
    // The tick: the quality of the count since the last one (0 .. 1, a 32-bit float),
    // and the good count starts again.
    float tick();

    int16_t GoodMsgCount = 0;
    int32_t BadMsgCount = 0;
};

} // namespace kdx
