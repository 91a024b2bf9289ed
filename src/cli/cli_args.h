#pragma once
// Option declarations and value helpers that more than one of kdxctl's commands use.
#include "cli/option_parser.h"

#include <charconv>
#include <optional>
#include <string>

namespace kdx::cli {

// --port of the commands that read or write a module's memory.
inline constexpr OptionSpec kPortOption{
    .name = "--port", .takes = Takes::Value, .metavar = "DEV", .required = true,
    .help = "serial port, e.g. /dev/ttyUSB0"};

// --axis of the same commands: the Q-Vane axis to select first (see parseAxis).
inline constexpr OptionSpec kAxisOption{
    .name = "--axis", .takes = Takes::Value, .metavar = "A",
    .help = "through a Q-Vane: select the axis first, tilt, roll or pan (or 0,\n"
            "1, 2; default tilt); fails for a KDX wired directly"};

// "tilt"/"roll"/"pan" (or 0/1/2) to the Q-Vane axis number.
std::optional<int> parseAxis(const std::string& s);

// A finite decimal number that fills the whole text ("2.5", "1e3"), or nothing.
std::optional<double> parseNumber(const std::string& s);

// A whole number of type T, in T's range, that fills the whole text (no sign for an
// unsigned T), or nothing.
template <class T>
std::optional<T> parseWhole(const std::string& s)
{
    T value{};
    const char* end = s.data() + s.size();
    const auto [stop, ec] = std::from_chars(s.data(), end, value);
    if (s.empty() || ec != std::errc() || stop != end) return std::nullopt;
    return value;
}

} // namespace kdx::cli
