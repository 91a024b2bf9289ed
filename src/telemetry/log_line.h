#pragma once
// The telemetry log file's text: the header line and one data line per cyclic message.
// Comma-separated, no quoting, every line ended by CR LF.
#include "telemetry/cyclic_telemetry.h"

#include <optional>
#include <string>
#include <string_view>

namespace kdx {

// The header line the logging window writes at Start (what GetTelemetryFileTitles
// returns), CR LF included: the relayed titles when the target is a Q-Vane, the two-motor
// titles otherwise; when the debug display's data is logged, "," and its titles are
// appended before the line end.
std::string telemetryFileTitles(bool targetIsQVane, std::optional<std::string_view> debugTitles = std::nullopt);

// Appends the log line for the live values `t` to `out`, CR LF included. The mode is
// t.TargetIsQVane: relayed lines start with the reported axis's name and number
// ("Tilt,0,", "Roll,1,", "Pan,2,"; nothing for another value) and the logged angle, and
// carry motor 0 only; direct lines carry both motors. When the debug display's data is
// logged, "," and its values follow the voltage. Allocates nothing when `out` has room
// (about 200 bytes a line without debug columns), so a caller that clears and reuses one
// string builds lines without touching the heap.
void appendTelemetryLogLine(std::string& out, const CyclicTelemetry& t,
                            std::optional<std::string_view> debugValues = std::nullopt);

} // namespace kdx
