#pragma once
// The parameter set as a table for text output (kdxctl show / read): one row per
// parameter, named as in the parameter set, with each motor's value exactly as the main
// window's label shows it.
#include "config/driver_config.h"

#include <array>
#include <string>
#include <vector>

namespace kdx {

struct ParamRow {
    std::string name;        // "PwmFreqHz"
    std::string meaning;     // "PWM frequency"
    std::string unit;        // "kHz", "%", "deg" or empty
    std::array<std::string, 2> values; // motor 1 empty for a single-axis configuration
};

// Rows in a fixed order: PwmFreqHz, StaticPower, DynamicPower, PTerm, IAngle, IRate,
// DTerm, PowerErrorAngle, QVaneAxis, Reverse, DTermLimit, Poles, GainPerc, DriveRatio,
// RecoveryAngle, FixedPosTrim. QVaneAxis shows the axis name, Reverse 0 or 1.
std::vector<ParamRow> paramTable(const DriverConfig& config, bool bothMotors);

// "name<TAB>motor0<TAB>motor1\n" per row.
std::string paramTableTsv(const std::vector<ParamRow>& rows);

// An aligned table with a heading; the motor-1 column only when bothMotors.
std::string paramTableText(const std::vector<ParamRow>& rows, bool bothMotors);

} // namespace kdx
