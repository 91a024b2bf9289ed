#include "telemetry/debug_bytes.h"

namespace kdx {

namespace {

void appendDecimal(std::string& out, unsigned v)
{
    if (v >= 100) out += static_cast<char>('0' + v / 100);
    if (v >= 10) out += static_cast<char>('0' + v / 10 % 10);
    out += static_cast<char>('0' + v % 10);
}

} // namespace

std::string debugTitles()
{
    std::string s;
    for (std::size_t i = 0; i < kDebugTitles.size(); ++i) {
        if (i) s += ',';
        s += kDebugTitles[i];
    }
    return s;
}

void appendDebugValues(std::string& out, const DebugBytes& bytes)
{
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i) out += ',';
        appendDecimal(out, bytes[i]);
    }
}

std::string debugValueCaption(uint8_t value)
{
    constexpr char kHex[] = "0123456789ABCDEF";
    std::string s;
    appendDecimal(s, value);
    s += " (0x";
    s += kHex[value >> 4];
    s += kHex[value & 15];
    s += ')';
    return s;
}

} // namespace kdx
