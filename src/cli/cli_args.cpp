#include "cli/cli_args.h"

#include <cmath>
#include <cstdlib>

namespace kdx::cli {

std::optional<int> parseAxis(const std::string& s)
{
    if (s == "tilt" || s == "0") return 0;
    if (s == "roll" || s == "1") return 1;
    if (s == "pan" || s == "2") return 2;
    return std::nullopt;
}

std::optional<int> parseMotor(const std::string& s)
{
    if (s == "1" || s == "0") return 0;
    if (s == "2") return 1;
    return std::nullopt;
}

std::optional<double> parseNumber(const std::string& s)
{
    char* end = nullptr;
    const double value = std::strtod(s.c_str(), &end);
    if (s.empty() || end != s.c_str() + s.size() || !std::isfinite(value)) return std::nullopt;
    return value;
}

} // namespace kdx::cli
