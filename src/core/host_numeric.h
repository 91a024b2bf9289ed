#pragma once
// The number rules of the platform the module's tools were first written for. Every
// conversion, rounding and formatting rule the program depends on has one name here,
// and nothing else re-implements them.
#include "core/host_error.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kdx {

// CInt / CLng: round half to even, then range-check; outside the width (or NaN) raises
// the overflow error. CInt(2.5) == 2, CInt(3.5) == 4.
int16_t CInt(double x);
int32_t CLng(double x);

// Integer arithmetic that leaves 16 or 32 bits raises the overflow error.
int16_t checked16(long long v);
int32_t checked32(long long v);

// Int floors: Int(-0.5) == -1.
inline double Int(double x) { return x != x ? x : __builtin_floor(x); }

// Rounds a double to a 32-bit float; a finite value outside float's range overflows.
float toSingle(double x);

// Quotient a / b, raising the division-by-zero error when b is 0.
double divide(double a, double b);

// Reads the longest leading number of a text ("&H" + hex digits, "&O" + octal digits
// as well; up to four hex digits read as a 16-bit value, so "&HFFFF" is -1). Leading
// blanks are skipped. No number gives 0.
double Val(std::string_view text);

// Formats with a number pattern: "0" a required digit, "#" an optional one, "."
// the decimal point, a trailing "%" multiplies by 100. No thousands separators.
// Rounds half away from zero (0.125 -> "0.13" with "0.00"). A negative value that
// rounds to zero keeps its sign ("-0.0"), as the host's formatter does.
std::string Format(double value, std::string_view pattern);

// The host's number-to-text conversion: a leading blank for values >= 0.
std::string Str(long long n);

// Low and high byte of a value as the module's two-byte fields carry it; negative
// values come out in two's complement (-1 gives 255, 255).
constexpr int lowByte(long long x) { return static_cast<int>(x & 255); }
constexpr int highByte(long long x)
{
    // floor(x / 256) AND 255; an arithmetic shift is floor division.
    return static_cast<int>((x >> 8) & 255);
}

// Signed 16-bit value from a low and a high byte.
constexpr int signedWord(int low, int high)
{
    const int u = (high & 255) * 256 + (low & 255);
    return high >= 128 ? u - 65536 : u;
}

// Bounds-checked element access: an index outside the array raises the subscript error.
template <typename T, std::size_t N>
T& at(std::array<T, N>& a, long long i)
{
    if (i < 0 || static_cast<unsigned long long>(i) >= N) raiseSubscript();
    return a[static_cast<std::size_t>(i)];
}
template <typename T, std::size_t N>
const T& at(const std::array<T, N>& a, long long i)
{
    if (i < 0 || static_cast<unsigned long long>(i) >= N) raiseSubscript();
    return a[static_cast<std::size_t>(i)];
}

// Host booleans are 16-bit: true is -1.
constexpr int16_t kTrue = -1;
constexpr int16_t kFalse = 0;

} // namespace kdx
