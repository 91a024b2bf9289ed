#include "sim/motor_config.h"

#include "config/conversions.h"
#include "config/memory_layout.h"
#include "core/host_numeric.h"

#include <cmath>

namespace kdx::sim {

namespace {

// Writes a signed 16-bit value low byte first, rounding half to even as the tool does.
void putWord(MotorBlock& b, int offset, double value)
{
    const long v = std::lrint(value);
    b[static_cast<std::size_t>(offset)] = static_cast<uint8_t>(lowByte(v));
    b[static_cast<std::size_t>(offset + 1)] = static_cast<uint8_t>(highByte(v));
}

struct Factory {
    double pwmHz = 20000;
    double staticPower = 15, dynamicPower = 40;
    double pTerm = 100, dTerm = 50, gain = 100;
    double iAngle = 2, powerErrorAngle = 4;
    int iRate = 20, dTermLimit = 255, poles = 14, recoveryAngle = 0;
    double driveRatio = 1;
};

} // namespace

MotorBlock defaultMotorBlock(int qvaneAxis)
{
    namespace L = layout;
    constexpr Factory f;
    MotorBlock b{};
    putWord(b, L::PwmPeriod, 40'000'000.0 / f.pwmHz);
    putWord(b, L::StaticPower, f.staticPower * 256);
    putWord(b, L::DynamicPower, f.dynamicPower * 256);
    putWord(b, L::PTerm, f.pTerm / 100 * 128);
    b[L::IAngle] = static_cast<uint8_t>(std::lrint(f.iAngle * 16));
    b[L::IRate] = static_cast<uint8_t>(f.iRate);
    putWord(b, L::DTerm, f.dTerm / 100 * 128);
    b[L::PowerErrorAngle] = static_cast<uint8_t>(std::lrint(f.powerErrorAngle * 16));
    b[L::AxisFlags] = static_cast<uint8_t>(qvaneAxis & 3);
    b[L::DTermLimit] = static_cast<uint8_t>(f.dTermLimit);
    b[L::Poles] = static_cast<uint8_t>(f.poles);
    putWord(b, L::GainPerc, f.gain / 100 * 256);
    putWord(b, L::DriveRatio, 16384 / f.driveRatio);
    b[L::RecoveryAngle] = static_cast<uint8_t>(f.recoveryAngle);
    return b;
}

DriveGains gainsFromBlock(std::span<const uint8_t, 30> b)
{
    namespace L = layout;
    auto at = [&](int k) { return static_cast<int>(b[static_cast<std::size_t>(k)]); };
    DriveGains g;
    g.staticPower = RawToVoltage(at(L::StaticPower), at(L::StaticPower + 1));
    g.dynamicPower = RawToVoltage(at(L::DynamicPower), at(L::DynamicPower + 1));
    g.pTerm = RawToAngle2(at(L::PTerm), at(L::PTerm + 1)) * 100.0;
    g.iAngle = at(L::IAngle) / 16.0;
    g.iRate = at(L::IRate);
    g.dTerm = RawToAngle2(at(L::DTerm), at(L::DTerm + 1)) * 100.0;
    g.powerErrorAngle = at(L::PowerErrorAngle) / 16.0;
    g.reverse = (at(L::AxisFlags) & L::ReverseBit) != 0;
    g.poles = at(L::Poles);
    g.gainPerc = RawToGain(at(L::GainPerc), at(L::GainPerc + 1));
    const int ratioWord = at(L::DriveRatio) + 256 * at(L::DriveRatio + 1);
    g.driveRatio = ratioWord == 0 ? 0.0 : 16384.0 / ratioWord;
    return g;
}

} // namespace kdx::sim
