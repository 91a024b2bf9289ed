#pragma once
// Colours are written the way the system writes them, as 24-bit blue-green-red
// numbers (0x0000FF is red). This is the one place they become red, green, blue.
#include <cstdint>

namespace kdx {

struct Rgb {
    uint8_t r = 0, g = 0, b = 0;
    constexpr bool operator==(const Rgb&) const = default;
};

constexpr Rgb fromBgr(uint32_t bgr)
{
    return Rgb{static_cast<uint8_t>(bgr & 0xFF), static_cast<uint8_t>((bgr >> 8) & 0xFF),
               static_cast<uint8_t>((bgr >> 16) & 0xFF)};
}

namespace colours {
constexpr uint32_t Green = 0x00FF00;     // active, pending or valid
constexpr uint32_t LightGrey = 0xC0C0C0; // inactive
constexpr uint32_t Red = 0x0000FF;       // invalid input, running sweep
constexpr uint32_t White = 0xFFFFFF;
} // namespace colours

} // namespace kdx
