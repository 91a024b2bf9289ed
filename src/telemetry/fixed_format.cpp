#include "telemetry/fixed_format.h"

#include "core/host_numeric.h"

#include <cmath>
#include <cstdint>

namespace kdx {

namespace {

constexpr const char* kPatterns[] = {"0", "0.0", "0.00", "0.000", "0.0000"};
constexpr uint64_t kPow10[] = {1, 10, 100, 1000, 10000};

// Below this magnitude a whole number of 1/256ths has at most 15 significant digits
// (7 before the point, 8 after), so the general formatter's 15-digit rounding step is
// exact and plain integer rounding gives the same text.
constexpr double kFastLimit = 1e7;

} // namespace

void appendFixed(std::string& out, double value, int decimals)
{
    if (decimals < 0 || decimals > 4) {
        out += Format(value, "0");
        return;
    }
    const double in256ths = value * 256.0; // exact: a power of two
    if (!(std::fabs(value) < kFastLimit) || in256ths != std::floor(in256ths)) {
        out += Format(value, kPatterns[decimals]);
        return;
    }
    const uint64_t p = kPow10[decimals];
    const uint64_t magnitude = static_cast<uint64_t>(std::fabs(in256ths));
    // magnitude / 256 * p, rounded half away from zero.
    const uint64_t q = (magnitude * p + 128) >> 8;
    uint64_t whole = q / p;
    uint64_t frac = q % p;

    char buf[32];
    char* end = buf + sizeof buf;
    char* s = end;
    for (int i = 0; i < decimals; ++i) {
        *--s = static_cast<char>('0' + frac % 10);
        frac /= 10;
    }
    if (decimals > 0) *--s = '.';
    do {
        *--s = static_cast<char>('0' + whole % 10);
        whole /= 10;
    } while (whole != 0);
    if (value < 0) *--s = '-';
    out.append(s, static_cast<std::size_t>(end - s));
}

} // namespace kdx
