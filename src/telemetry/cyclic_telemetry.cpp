#include "telemetry/cyclic_telemetry.h"

#include "config/conversions.h"
#include "core/host_numeric.h"

namespace kdx {

namespace {

// Byte positions (InBuf indices: 0 = length, 1 = identifier) of one motor's block.
// Word fields are low byte first.
struct MotorLayout {
    int AxisRate, AxisError, Pcomp, Icomp, Dcomp, ElecAngle, Power, AxisAngle;
};

namespace direct {
constexpr MotorLayout Motor[2] = {{2, 4, 6, 8, 10, 12, 14, 15}, {17, 19, 21, 23, 25, 27, 29, 30}};
constexpr int Voltage = 32;
constexpr int Flags = 34;
constexpr int MotorConfigBits = 35;
constexpr int ExtGain[2] = {36, 37};
constexpr int Debug = 38; // seven bytes
constexpr int VersionMajor = 45;
constexpr int VersionMinor = 46;
// Flag bits; bit 6 is not assigned.
constexpr int SwitchMask = 0x0F;
constexpr int TestDriveActive[2] = {0x10, 0x20};
constexpr int SelectedInputValid = 0x80;
} // namespace direct

namespace relayed {
constexpr int Axis = 2;
constexpr MotorLayout Motor = {3, 5, 7, 9, 11, 13, 15, 16};
constexpr int Voltage = 18;
constexpr int Flags = 20;
constexpr int ExtGain = 21;
constexpr int LoggedAngle = 22;
constexpr int SwitchMask = 0x0F;
constexpr int InputValid[3] = {0x10, 0x20, 0x40}; // PPM, Spektrum, SBUS
constexpr int TestDriveActive = 0x80;
} // namespace relayed

using WordConversion = float (*)(int low, int high);

float word(const MsgView& m, int at, WordConversion conv) { return conv(m[at], m[at + 1]); }

// The eight fields of one motor block, in the order the layout lists them.
void decodeMotor(const MsgView& m, const MotorLayout& at, MotorTelemetry& out)
{
    out.AxisRate = word(m, at.AxisRate, RawToAngle2);
    out.AxisError = word(m, at.AxisError, RawToAngle2);
    out.Pcomp = word(m, at.Pcomp, RawToAngle);
    out.Icomp = word(m, at.Icomp, RawToAngle);
    out.Dcomp = word(m, at.Dcomp, RawToAngle);
    out.ElecAngle = word(m, at.ElecAngle, RawToAngle);
    out.Power = RawToPowerPerc(m[at.Power]);
    out.AxisAngle = word(m, at.AxisAngle, RawToAngle2);
}

} // namespace

CyclicTelemetry decodeCyclicMsg(const MsgView& m)
{
    CyclicTelemetry t;
    t.TargetIsQVane = false;
    t.QVaneAxis = 3;
    for (int motor = 0; motor < 2; ++motor) decodeMotor(m, direct::Motor[motor], t.motor[motor]);
    t.Voltage = word(m, direct::Voltage, RawToVoltage);
    const int flags = m[direct::Flags];
    t.SwitchBits = static_cast<int16_t>(flags & direct::SwitchMask);
    for (int motor = 0; motor < 2; ++motor)
        t.motor[motor].TestDriveActive = (flags & direct::TestDriveActive[motor]) != 0;
    t.SelectedInputValid = (flags & direct::SelectedInputValid) != 0;
    t.MotorConfigBits = m[direct::MotorConfigBits];
    for (int motor = 0; motor < 2; ++motor) {
        t.motor[motor].ExtGain = m[direct::ExtGain[motor]];
        t.motor[motor].LoggedAngle = 0;
    }
    for (int i = 0; i < 7; ++i) t.debug[i] = static_cast<uint8_t>(m[direct::Debug + i] & 0xFF);
    t.VersionMajor = m[direct::VersionMajor];
    t.VersionMinor = m[direct::VersionMinor];
    return t;
}

CyclicTelemetry decodeCyclicQvaneMsg(const MsgView& m)
{
    CyclicTelemetry t;
    t.TargetIsQVane = true;
    t.QVaneAxis = m[relayed::Axis];
    MotorTelemetry& motor = t.motor[0];
    decodeMotor(m, relayed::Motor, motor);
    t.Voltage = word(m, relayed::Voltage, RawToVoltage);
    const int flags = m[relayed::Flags];
    for (int i = 0; i < 3; ++i) t.InputValid[i] = (flags & relayed::InputValid[i]) != 0;
    t.SwitchBits = static_cast<int16_t>(flags & relayed::SwitchMask);
    motor.TestDriveActive = (flags & relayed::TestDriveActive) != 0;
    motor.ExtGain = m[relayed::ExtGain];
    motor.LoggedAngle = word(m, relayed::LoggedAngle, RawToAngle2);
    // The validity that applies is the reported axis's; there are only three inputs.
    t.SelectedInputValid = at(t.InputValid, t.QVaneAxis);
    return t;
}

void applyDecoded(CyclicTelemetry& live, const CyclicTelemetry& d)
{
    if (!d.TargetIsQVane) {
        const auto validities = live.InputValid;
        live = d;
        live.InputValid = validities;
        return;
    }
    live.TargetIsQVane = true;
    live.QVaneAxis = d.QVaneAxis;
    live.motor[0] = d.motor[0];
    live.Voltage = d.Voltage;
    live.SwitchBits = d.SwitchBits;
    live.SelectedInputValid = d.SelectedInputValid;
    live.InputValid = d.InputValid;
}

} // namespace kdx
