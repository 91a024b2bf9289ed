#include "tuning/gain_message.h"

#include "core/host_numeric.h"
#include "link/message_ids.h"

namespace kdx {

namespace {

constexpr int kDirectLength = 16;
constexpr int kRelayedLength = 17;
constexpr int kRelayedAddressBase = 128; // + 16 x axis
constexpr int kRelayedAxisStride = 16;

// Scale factors from display units to the module's fixed-point fields.
constexpr float kPercentDivisor = 100;
constexpr float kPDScale = 128;
constexpr float kGScale = 256;
constexpr float kVoltScale = 256;
constexpr float kIAScale = 16;

// The values are 32-bit floats and are scaled in that width before rounding.
int32_t scaled(float value, float divisor, float factor)
{
    const float v = static_cast<float>(value / divisor) * factor;
    return CLng(v);
}

} // namespace

void buildGainMsg(OutMsgBuffer& OutMsg, float P, float I, float IA, float D, float G, float V1, float V2,
                  int MotorIndex, const GainMsgRoute& route)
{
    const int32_t p = scaled(P, kPercentDivisor, kPDScale);
    const int32_t i = CLng(I);
    const int32_t d = scaled(D, kPercentDivisor, kPDScale);
    const int32_t g = scaled(G, kPercentDivisor, kGScale);
    const int32_t v1 = scaled(V1, 1, kVoltScale);
    const int32_t v2 = scaled(V2, 1, kVoltScale);
    const int32_t ia = scaled(IA, 1, kIAScale);

    int n = 0;
    auto put = [&](long long byte) { OutMsg[n++] = static_cast<int16_t>(byte); };
    if (route.relayed) {
        put(kRelayedLength);
        put(msg::RelayMarker);
        put(msg::Gains);
        put(kRelayedAddressBase + kRelayedAxisStride * route.qvaneAxis);
    } else {
        put(kDirectLength);
        put(msg::Gains);
        put(lowByte(MotorIndex));
    }
    put(lowByte(p));
    put(highByte(p));
    put(lowByte(i)); // only the low byte of I travels; the step clamp keeps I in 0..255
    put(lowByte(d));
    put(highByte(d));
    put(lowByte(g));
    put(highByte(g));
    put(lowByte(v1));
    put(highByte(v1));
    put(lowByte(v2));
    put(highByte(v2));
    put(lowByte(ia));
    putChecksum(OutMsg);
}

} // namespace kdx
