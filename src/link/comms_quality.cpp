#include "link/comms_quality.h"

#include "core/host_numeric.h"

namespace kdx {

void CommsQualityCount::PutMessageReceived(bool good)
{
    if (good) GoodMsgCount = checked16(static_cast<long long>(GoodMsgCount) + 1);
    else if (BadMsgCount > BadCountLimit) BadMsgCount = 0;
    else ++BadMsgCount;
}

float CommsQualityCount::tick()
{
    if (GoodMsgCount == JitterCount || GoodMsgCount > ExpectedPerTick) GoodMsgCount = ExpectedPerTick;
    const float quality = toSingle(static_cast<double>(GoodMsgCount) / ExpectedPerTick);
    GoodMsgCount = 0;
    return quality;
}

} // namespace kdx
