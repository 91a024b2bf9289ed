#pragma once
// The debug display's texts: the titles of the seven debug bytes of a direct cyclic
// message (bytes 38 .. 44), their log columns and their on-screen captions.
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kdx {

constexpr std::size_t kDebugByteCount = 7;
using DebugBytes = std::array<uint8_t, kDebugByteCount>;

// Titles in byte order. They become log column titles, so none holds a comma.
constexpr std::array<std::string_view, kDebugByteCount> kDebugTitles = {
    "Msg Counter", // the module's message counter, +1 per cyclic message; a jump is a lost message
    "HSL Flags",   // hall-sensor and limit flags, one per bit
    "Gimbal Tilt", // the tilt angle of the module's own attitude estimate, raw
    "Loop Time",   // the control loop's last cycle time, in tens of microseconds
    "IMU Errors",  // sensor reads that failed, counted and wrapping at 255
    "Gyro Temp",   // the gyro's die temperature, degrees Celsius
    "Reset Cause", // why the module last started: power-on, watchdog, brown-out, bootloader
};

// The log header's extra columns: the titles joined by ",", no leading comma.
std::string debugTitles();

// Appends the bytes' log columns to `out`: each in decimal (0 .. 255), joined by ",",
// no leading comma; as many columns as debugTitles() has.
void appendDebugValues(std::string& out, const DebugBytes& bytes);

// A byte as its value label shows it: decimal, then two-digit hex ("63 (0x3F)").
std::string debugValueCaption(uint8_t value);

} // namespace kdx
