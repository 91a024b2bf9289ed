#pragma once
// Option declarations and value helpers that more than one of kdxctl's commands use.
#include "cli/option_parser.h"

#include <charconv>
#include <optional>
#include <string>

namespace kdx::cli {

// --port of the commands that read or write modules' memory, many at once.
inline constexpr OptionDecl kPortsOption{.name = "--port",
                                         .takes = Takes::Value,
                                         .metavar = "DEV",
                                         .repeats = true,
                                         .required = true,
                                         .help = "serial port, e.g. /dev/ttyUSB0; give it again for more\n"
                                                 "modules, which are then served all at once"};

// --json of the commands that can print their result as one JSON object.
inline constexpr OptionDecl kJsonOption{.name = "--json",
                                        .help = "print the result as one line of JSON (its fields are\n"
                                                "listed in the README)"};

// --axis of the commands that serve many modules.
inline constexpr OptionDecl kAxesOption{.name = "--axis",
                                        .takes = Takes::Value,
                                        .metavar = "A",
                                        .repeats = true,
                                        .help = "through a Q-Vane: select the axis first, tilt, roll or\n"
                                                "pan (or 0, 1, 2; default tilt); once for every port, or\n"
                                                "once per --port"};

// "tilt"/"roll"/"pan" (or 0/1/2) to the Q-Vane axis number.
std::optional<int> parseAxis(const std::string& s);

// A motor as kdxtool numbers them, 1 or 2, to its index 0 or 1. Scripts written when
// kdxctl counted from 0 may still say 0 for the first motor.
std::optional<int> parseMotor(const std::string& s);

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
