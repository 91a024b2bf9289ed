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
    std::string name;                  // "PwmFreqHz"
    std::string meaning;               // "PWM frequency"
    std::string unit;                  // "kHz", "%", "deg" or empty
    std::array<std::string, 2> values; // the second motor empty for a single-axis configuration
};

// One row per field of kParamFields, in its order. QVaneAxis shows the axis name,
// Reverse 0 or 1.
std::vector<ParamRow> paramTable(const DriverConfig& config, bool bothMotors);

// "name<TAB>motor 1<TAB>motor 2\n" per row.
std::string paramTableTsv(const std::vector<ParamRow>& rows);

// An aligned table with a heading; the second motor's column only when bothMotors.
std::string paramTableText(const std::vector<ParamRow>& rows, bool bothMotors);

} // namespace kdx
