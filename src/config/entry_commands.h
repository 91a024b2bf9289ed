#pragma once
// The parameter entry commands: a click on a parameter label asks for a new value in the
// input box, checks it against the command's range and stores it. The accepted range
// is the one below even where the prompt names another; those differences are kept.
#include "config/driver_config.h"
#include "config/param_label.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace kdx {

// Where an accepted value goes: a parameter-set array, or the debug identifier.
enum class EntryTarget {
    PTerm,
    DTerm,
    IAngle,
    IRate,
    DTermLimit,
    StaticPower,
    DynamicPower,
    PowerErrorAngle,
    PwmFreqHz, // the answer is in kHz; stored times 1000
    GainPerc,
    RecoveryAngle,
    Poles,
    DriveRatio,
    FixedPosTrim,
    QVaneAxis, // stored unchanged (the window warns first through a Q-Vane)
    DebugId,   // CInt(v) into the copy of image element 0
};

struct EntryCommand {
    ParamLabel label;        // control that is clicked; labelName(label) is its name
    std::string_view prompt; // the input box text
    double lower;            // accepted range, both ends inclusive
    double upper;
    EntryTarget target;
};

inline constexpr std::array<EntryCommand, 16> kEntryCommands{{
    {ParamLabel::PTermtb, "Enter new P term % -2000..2000", -2550, 2550, EntryTarget::PTerm},
    {ParamLabel::DTermtb, "Enter new D term % -2000..2000", -2550, 2550, EntryTarget::DTerm},
    {ParamLabel::IAngletb, "Enter new angle where I starts ramping to zero (0..16 degrees)", 0, 16,
     EntryTarget::IAngle},
    {ParamLabel::IRatetb, "Enter new I ramp rate", 0, 255, EntryTarget::IRate},
    {ParamLabel::DTermLimittb, "Enter new D term limit 0..255", 0, 255, EntryTarget::DTermLimit},
    {ParamLabel::Powertb, "Enter new static power %", 0, 100, EntryTarget::StaticPower},
    {ParamLabel::PowerHitb, "Enter new dynamic power %", 0, 100, EntryTarget::DynamicPower},
    {ParamLabel::PowerErrortb, "Enter new angle error for max power (0 to 16 degrees)", 0, 16,
     EntryTarget::PowerErrorAngle},
    {ParamLabel::Freqtb, "Enter new PWM frequency (KHz)", 1, 32, EntryTarget::PwmFreqHz},
    {ParamLabel::Gaintb, "Enter new Gain % 0..12,700", -12700, 12700, EntryTarget::GainPerc},
    {ParamLabel::RecoveryAngletb, "Enter new recovery angle (0..179) (0 = Disable recovery mode)", 0, 179,
     EntryTarget::RecoveryAngle},
    {ParamLabel::Polestb, "Enter number of poles for the motor", 0, 64, EntryTarget::Poles},
    {ParamLabel::Ratiotb, "Enter new drive ratio (eg 3 for 3:1) ", 0.5, 200, EntryTarget::DriveRatio},
    {ParamLabel::FPTrimtb, "Enter new power-up fixed position motor drive trim (0..360)", 0, 359,
     EntryTarget::FixedPosTrim},
    {ParamLabel::Axistb, "Enter new Q-Vane axis ( 0=Tilt, 1=Roll, 2=Pan, 3=Off )", 0, 3, EntryTarget::QVaneAxis},
    {ParamLabel::DebIDtb, "Enter new debug ID", 0, 255, EntryTarget::DebugId},
}};

// The input box title of every entry.
inline constexpr std::string_view kEntryTitle = "Brushless Motor Drive Parameter Entry";

// Axistb through a Q-Vane asks this first (Yes/No with the exclamation icon, style 52);
// anything but Yes ends the click without a refresh. Wording kept as it is.
inline constexpr std::string_view kAxisWarningTitle = "Changing KDX Axis";
inline constexpr std::string_view kAxisWarningText =
    "If the axis is changed and written to the module, the KDX will stop responding as it's current "
    "axis. If it is set to the same value as another KDX axis, you will have to connect directly to "
    "the KDX to be able to change it again. Proceed anyway ?.";

// The command of a label, or nothing for a label that has none.
const EntryCommand* findEntryCommand(ParamLabel label);

// AskValue, split around the input box: the default text offered (the current value
// formatted "0.00"), and the value the answer gives. An empty answer (cleared, or
// Cancel) gives the current value rounded to two decimals, so Cancel re-stores it;
// text that is not a number gives 0.
std::string askValueDefault(float current);
float AskValueResult(float current, std::string_view answer);

// The value offered for the label and motor: the parameter, or the debug identifier.
// A motor other than 0 or 1 raises the subscript error (DebIDtb ignores it).
float entryCurrentValue(const DriverConfig& config, const EntryCommand& command, int motor);

// Stores `value` if it lies in the command's range and marks the data modified;
// drops it silently otherwise. Refreshes in every case. Returns whether it was stored.
bool applyEntry(DriverConfig& config, const EntryCommand& command, int motor, float value);

} // namespace kdx
