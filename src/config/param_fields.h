#pragma once
// The parameters of a motor block by the names of the parameter set, as kdxctl prints
// them, with the label that shows each one and the bytes that hold it. Tools that print,
// compare or change parameters by name read this one table.
#include "config/memory_image.h"
#include "config/param_label.h"

#include <array>
#include <string>
#include <string_view>

namespace kdx {

struct ParamField {
    std::string_view name;    // "PwmFreqHz"
    std::string_view meaning; // "PWM frequency"
    std::string_view unit;    // "kHz", "%", "deg" or empty
    ParamLabel label;         // the label that shows it and whose entry prompt changes it
    int offset;               // its first element within the motor block
    int bytes;                // 1, or 2 for a low byte and a high byte
    int mask;                 // the bits of a one-byte field that belong to it
    bool reverse = false;     // the Reversecb check box, not a label
};

// In the order kdxctl show prints them.
inline constexpr std::array<ParamField, 16> kParamFields{{
    {"PwmFreqHz", "PWM frequency", "kHz", ParamLabel::Freqtb, layout::PwmPeriod, 2, 0xFF},
    {"StaticPower", "static power", "%", ParamLabel::Powertb, layout::StaticPower, 2, 0xFF},
    {"DynamicPower", "dynamic power", "%", ParamLabel::PowerHitb, layout::DynamicPower, 2, 0xFF},
    {"PTerm", "P term", "%", ParamLabel::PTermtb, layout::PTerm, 2, 0xFF},
    {"IAngle", "angle where I ramps to zero", "deg", ParamLabel::IAngletb, layout::IAngle, 1, 0xFF},
    {"IRate", "I ramp rate", "", ParamLabel::IRatetb, layout::IRate, 1, 0xFF},
    {"DTerm", "D term", "%", ParamLabel::DTermtb, layout::DTerm, 2, 0xFF},
    {"PowerErrorAngle", "angle error for max power", "deg", ParamLabel::PowerErrortb, layout::PowerErrorAngle, 1, 0xFF},
    {"QVaneAxis", "Q-Vane axis", "", ParamLabel::Axistb, layout::AxisFlags, 1, 0x03},
    {"Reverse", "drive reversed (1 = yes)", "", ParamLabel::Axistb, layout::AxisFlags, 1, layout::ReverseBit, true},
    {"DTermLimit", "D term limit", "", ParamLabel::DTermLimittb, layout::DTermLimit, 1, 0xFF},
    {"Poles", "motor poles", "", ParamLabel::Polestb, layout::Poles, 1, 0xFF},
    {"GainPerc", "gain", "%", ParamLabel::Gaintb, layout::GainPerc, 2, 0xFF},
    {"DriveRatio", "motor-to-load drive ratio", "", ParamLabel::Ratiotb, layout::DriveRatio, 2, 0xFF},
    {"RecoveryAngle", "recovery angle (0 = off)", "deg", ParamLabel::RecoveryAngletb, layout::RecoveryAngle, 1, 0xFF},
    {"FixedPosTrim", "power-up fixed position trim", "deg", ParamLabel::FPTrimtb, layout::FixedPosTrim, 1, 0xFF},
}};

// Image element 0, the module's debug identifier (DebIDtb): not a parameter of a motor,
// and never written back by the window (it only changes a copy).
inline constexpr ParamField kDebugIdField{"DebugId", "debug identifier", "", ParamLabel::DebIDtb, layout::DebugId, 1,
                                          0xFF};

class DriverConfig;

// The field of that name (exactly as printed), or nothing.
const ParamField* findParamField(std::string_view name);

// The field a label shows (QVaneAxis for Axistb, kDebugIdField for DebIDtb).
const ParamField& fieldOfLabel(ParamLabel label);

// The value as the main window shows it for a motor (0 or 1): the label's caption, or
// "1" / "0" for the reverse box.
std::string fieldValue(const DriverConfig& config, const ParamField& field, int motor);

// The field's raw value in a motor block as the module holds it: the low bytes of its
// elements, low byte first, masked.
int fieldRaw(const MemoryImage& image, const ParamField& field, int motor);

// Copies a field's bits of a motor block from one image to another as bytes (low 8 bits
// of each element); the other bits of a shared byte stay as `to` has them.
void copyField(MemoryImage& to, const MemoryImage& from, const ParamField& field, int motor);

} // namespace kdx
