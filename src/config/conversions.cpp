#include "config/conversions.h"

#include "core/host_numeric.h"

namespace kdx {

double rawSigned(int low, int high)
{
    const long long u = static_cast<long long>(CLng(low)) + static_cast<long long>(high) * 256;
    return high < 128 ? static_cast<double>(checked32(u)) : -static_cast<double>(checked32(65536 - u));
}

float RawToPerc(int low, int high) { return toSingle(rawSigned(low, high) / 128.0); }
float RawToDirectPerc(int low, int high) { return toSingle(rawSigned(low, high) / 128.0); }
float RawToAngle(int low, int high) { return toSingle(rawSigned(low, high) / 64.0); }
float RawToVoltage(int low, int high) { return toSingle(rawSigned(low, high) / 256.0); }
float RawToAngle2(int low, int high) { return toSingle(rawSigned(low, high) / 128.0); }

float RawToGain(int low, int high)
{
    const float q = toSingle(rawSigned(low, high) / 256.0);
    return toSingle(static_cast<double>(q) * 100.0);
}

float scaledFromImage(const layout::WordScale& scale, int low, int high)
{
    const float units = toSingle(rawSigned(low, high) / scale.counts);
    return toSingle(static_cast<double>(units) * scale.shown);
}

int32_t scaledToImage(const layout::WordScale& scale, double shown) { return CLng(shown / scale.shown * scale.counts); }

float RawToPowerPerc(int raw) { return toSingle(static_cast<double>(raw) / 256.0 * 100.0); }

} // namespace kdx
