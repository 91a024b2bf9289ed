#pragma once
// Fast number formatting for the telemetry display and log, which format every value of
// every message (100 a second live, far more when a recording is decoded).
#include <string>

namespace kdx {

// Appends `value` exactly as Format(value, pattern) gives it for a pattern whose integer
// part holds a single required digit and which has `decimals` (0..4) decimal places:
// "0", "##0", "###0" (0), "0.0", "###0.0" (1), "0.00", "###0.00" (2). Rounds half away
// from zero; a negative value that rounds to zero keeps its sign ("-0.00").
//
// Every value the telemetry decoders produce is a whole number of 1/256ths, which is
// formatted with integer arithmetic and no allocation when `out` has room; any other
// value takes the general formatter.
void appendFixed(std::string& out, double value, int decimals);

} // namespace kdx
