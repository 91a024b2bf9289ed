#pragma once
// The cyclic telemetry a KDX sends about 100 times a second, decoded into display
// units: identifier 121 straight from a KDX (two motors), identifier 122 relayed by a
// Q-Vane (the one axis it is talking to, in motor entry 0).
#include "link/frame.h"

#include <array>
#include <cstdint>

namespace kdx {

// One motor's live values, in display units.
struct MotorTelemetry {
    float AxisRate = 0;  // degrees per second
    float AxisError = 0; // degrees
    float Pcomp = 0;     // PID components
    float Icomp = 0;
    float Dcomp = 0;
    float ElecAngle = 0;   // electrical (phase) angle, degrees
    float Power = 0;       // drive power, per cent
    float AxisAngle = 0;   // degrees
    float LoggedAngle = 0; // the angle the log carries; relayed messages only, 0 on direct ones
    int16_t ExtGain = 0;   // external gain, per cent (the raw byte)
    bool TestDriveActive = false;
    bool operator==(const MotorTelemetry&) const = default;
};

// Bit 3 of MotorConfigBits: the module drives one motor, and motor 1's panels go.
inline constexpr int16_t SingleMotorBit = 8;
// Bit 0 of SwitchBits: the module has a button; its frame is shown from then on.
inline constexpr int16_t ButtonSwitchBit = 1;

// The main window's live values after one cyclic message.
struct CyclicTelemetry {
    bool TargetIsQVane = false; // the message was relayed (122); direct (121) clears it
    int32_t QVaneAxis = 3;      // axis the Q-Vane reported (0 Tilt, 1 Roll, 2 Pan); 3 after a direct message
    std::array<MotorTelemetry, 2> motor{};
    float Voltage = 0;      // supply volts
    int16_t SwitchBits = 0; // 0..15; bit 0 (ButtonSwitchBit): the module's button
    bool SelectedInputValid = false;
    std::array<bool, 3> InputValid{}; // PPM, Spektrum, SBUS; relayed messages only
    int16_t MotorConfigBits = 0;      // direct messages only; bit 3 (SingleMotorBit) hides motor 1
    std::array<uint8_t, 7> debug{};   // direct messages only: the debug display's bytes
    int16_t VersionMajor = 0;         // direct messages only
    int16_t VersionMinor = 0;
    bool operator==(const CyclicTelemetry&) const = default;
};

// Decoders. Both read the whole layout into a fresh value and return it only when it
// is complete: a message shorter than its layout raises the subscript error (through
// MsgView) and nothing is returned, so a display fed from the result never shows half
// a message. The message's checksum byte is part of the view, so a message one byte
// short decodes that byte as data, as the module's tools always have.
//
// What the caller did before calling (the target mode and the axis buttons, which
// depend only on the identifier and byte 2) stays done when the decode fails.

// Identifier 121: both motors, voltage, flags, configuration bits, external gains,
// the seven debug bytes and the firmware version. LoggedAngle is 0 for both motors.
CyclicTelemetry decodeCyclicMsg(const MsgView& msg);

// Identifier 122: the reported axis, motor entry 0, voltage, flags, external gain and
// LoggedAngle. SelectedInputValid is the validity of the input of the reported axis;
// an axis byte of 3 or more raises the subscript error. Motor entry 1, the
// configuration bits, debug bytes and version are left at their defaults: use
// applyDecoded to keep the values a relayed message does not carry.
CyclicTelemetry decodeCyclicQvaneMsg(const MsgView& msg);

// Copies into `live` what the decoded message carries and keeps the rest, as the main
// window's live-value variables behave: a relayed message leaves motor 1, the
// configuration bits, the debug bytes and the version as the last direct message set
// them; a direct message leaves the three input validities as they were.
void applyDecoded(CyclicTelemetry& live, const CyclicTelemetry& decoded);

} // namespace kdx
