#include "core/host_numeric.h"

#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace kdx {

namespace {

double roundHalfEven(double x)
{
    // std::nearbyint honours the current rounding mode, which is to-nearest-even
    // unless someone changed it; compute it explicitly so it never depends on that.
    const double f = std::floor(x);
    const double diff = x - f;
    if (diff < 0.5) return f;
    if (diff > 0.5) return f + 1.0;
    return std::fmod(f, 2.0) == 0.0 ? f : f + 1.0;
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

int hexValue(char c)
{
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// A radix literal after "&H" / "&O": up to 4 hex (6 octal) digits read as 16 bits,
// more as 32 bits, as the host does.
double radixValue(std::string_view s, std::size_t i, int radix)
{
    unsigned long long v = 0;
    int digits = 0;
    while (i < s.size()) {
        const int d = hexValue(s[i]);
        if (d < 0 || d >= radix) break;
        v = v * radix + d;
        ++digits;
        ++i;
        if (v > 0xFFFFFFFFull) return 0; // too long for the host: reads as an overflow; give 0
    }
    if (digits == 0) return 0;
    const bool narrow = radix == 16 ? digits <= 4 : v <= 0xFFFF;
    if (narrow && v <= 0xFFFF) return static_cast<int16_t>(static_cast<uint16_t>(v));
    return static_cast<int32_t>(static_cast<uint32_t>(v));
}

} // namespace

int16_t CInt(double x)
{
    if (!std::isfinite(x)) raiseOverflow();
    const double r = roundHalfEven(x);
    if (r < -32768.0 || r > 32767.0) raiseOverflow();
    return static_cast<int16_t>(r);
}

int32_t CLng(double x)
{
    if (!std::isfinite(x)) raiseOverflow();
    const double r = roundHalfEven(x);
    if (r < -2147483648.0 || r > 2147483647.0) raiseOverflow();
    return static_cast<int32_t>(r);
}

int16_t checked16(long long v)
{
    if (v < std::numeric_limits<int16_t>::min() || v > std::numeric_limits<int16_t>::max()) raiseOverflow();
    return static_cast<int16_t>(v);
}

int32_t checked32(long long v)
{
    if (v < std::numeric_limits<int32_t>::min() || v > std::numeric_limits<int32_t>::max()) raiseOverflow();
    return static_cast<int32_t>(v);
}

float toSingle(double x)
{
    if (std::isfinite(x) && std::fabs(x) > static_cast<double>(FLT_MAX)) raiseOverflow();
    return static_cast<float>(x);
}

double divide(double a, double b)
{
    if (b == 0.0) raiseDivisionByZero();
    return a / b;
}

double Val(std::string_view s)
{
    std::size_t i = 0;
    while (i < s.size() && (s[i] == ' ' || s[i] == '\t' || s[i] == '\n' || s[i] == '\r')) ++i;
    if (i + 1 < s.size() && s[i] == '&') {
        const char k = s[i + 1];
        if (k == 'H' || k == 'h') return radixValue(s, i + 2, 16);
        if (k == 'O' || k == 'o') return radixValue(s, i + 2, 8);
        return 0;
    }
    // Collect sign, digits, one point, and an exponent into a plain literal.
    std::string lit;
    if (i < s.size() && (s[i] == '+' || s[i] == '-')) lit += s[i++];
    bool anyDigit = false;
    while (i < s.size() && isDigit(s[i])) {
        lit += s[i++];
        anyDigit = true;
    }
    if (i < s.size() && s[i] == '.') {
        lit += s[i++];
        while (i < s.size() && isDigit(s[i])) {
            lit += s[i++];
            anyDigit = true;
        }
    }
    if (!anyDigit) return 0;
    if (i < s.size() && (s[i] == 'e' || s[i] == 'E' || s[i] == 'd' || s[i] == 'D')) {
        std::size_t j = i + 1;
        std::string exp = "e";
        if (j < s.size() && (s[j] == '+' || s[j] == '-')) exp += s[j++];
        bool expDigit = false;
        while (j < s.size() && isDigit(s[j]) && exp.size() < 8) {
            exp += s[j++];
            expDigit = true;
        }
        if (expDigit) lit += exp;
    }
    const double v = std::strtod(lit.c_str(), nullptr);
    if (!std::isfinite(v)) raiseOverflow();
    return v;
}

std::string Format(double value, std::string_view pattern)
{
    bool percent = false;
    if (!pattern.empty() && pattern.back() == '%') {
        percent = true;
        pattern.remove_suffix(1);
    }
    const std::size_t dot = pattern.find('.');
    const std::string_view intPart = pattern.substr(0, dot);
    const std::string_view fracPart = dot == std::string_view::npos ? "" : pattern.substr(dot + 1);
    int minIntDigits = 0;
    for (char c : intPart) minIntDigits += c == '0';
    const int decimals = static_cast<int>(fracPart.size());

    if (!std::isfinite(value)) return value != value ? "NaN" : (value < 0 ? "-Inf" : "Inf");
    double v = percent ? value * 100.0 : value;
    const bool negative = v < 0;
    v = std::fabs(v);

    // Round in decimal on the value's 15 significant digits, half away from zero, so
    // 0.125 gives 0.13 and 2.675 gives 2.68 as the host shows them.
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.14e", v);
    // buf: d.dddddddddddddde[+-]xx
    std::string mant;
    mant += buf[0];
    mant.append(buf + 2, 14);
    int exp10 = std::atoi(std::strchr(buf, 'e') + 1);
    // digits = mant, value = 0.mant * 10^(exp10 + 1)
    int pointPos = exp10 + 1; // digits before the point
    if (pointPos < -decimals - 1) {
        mant = "0";
        pointPos = 1;
    }
    // Build the digit string with exactly `decimals` decimals before rounding.
    std::string intDigits, fracDigits;
    if (pointPos <= 0) {
        intDigits = "0";
        fracDigits = std::string(static_cast<std::size_t>(-pointPos), '0') + mant;
    } else if (static_cast<std::size_t>(pointPos) >= mant.size()) {
        intDigits = mant + std::string(pointPos - mant.size(), '0');
    } else {
        intDigits = mant.substr(0, pointPos);
        fracDigits = mant.substr(pointPos);
    }
    bool roundUp = static_cast<int>(fracDigits.size()) > decimals && fracDigits[decimals] >= '5';
    if (static_cast<int>(fracDigits.size()) > decimals) fracDigits.resize(decimals);
    fracDigits.append(decimals - fracDigits.size(), '0');
    std::string all = intDigits + fracDigits;
    if (roundUp) {
        int k = static_cast<int>(all.size()) - 1;
        while (k >= 0) {
            if (all[k] == '9') {
                all[k] = '0';
                --k;
            } else {
                ++all[k];
                break;
            }
        }
        if (k < 0) all.insert(all.begin(), '1');
    }
    std::string ip = all.substr(0, all.size() - decimals);
    std::string fp = all.substr(all.size() - decimals);
    // Strip leading zeros down to the required digit count.
    std::size_t strip = 0;
    while (strip < ip.size() && ip[strip] == '0' && static_cast<int>(ip.size() - strip) > minIntDigits) ++strip;
    ip = ip.substr(strip);
    if (static_cast<int>(ip.size()) < minIntDigits) ip.insert(0, minIntDigits - ip.size(), '0');

    std::string out;
    if (negative) out += '-';
    out += ip;
    if (decimals > 0) {
        out += '.';
        out += fp;
    }
    if (percent) out += '%';
    return out;
}

std::string Str(long long n) { return (n >= 0 ? " " : "") + std::to_string(n); }

} // namespace kdx
