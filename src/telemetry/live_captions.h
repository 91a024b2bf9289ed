#pragma once
// The texts and colours of the main window's "Current Values" panel for the live values,
// so the window only copies them into its controls.
#include "telemetry/cyclic_telemetry.h"

#include <array>
#include <cstdint>
#include <string>

namespace kdx {

// One motor's captions, named after the labels that show them.
struct MotorCaptions {
    std::string ElecAngletb;        // "0"
    std::string AxisRatetb;         // "0.0"
    std::string AxisErrortb;        // "0.0"
    std::string AxisPtb;            // "0.00"
    std::string AxisItb;            // "0.00"
    std::string AxisDtb;            // "0.00"
    std::string ExtGaintb;          // "0" and "%"
    std::string AxisPowertb;        // "OFF" at 0, else "0" and "%"
    std::string AxisAngletb;        // "0.0"
    uint32_t TestDrivecbColour = 0; // blue-green-red: green running, light grey not
    bool operator==(const MotorCaptions&) const = default;
};

struct LiveCaptions {
    std::array<MotorCaptions, 2> motor;
    std::string Voltagetb; // "0.0"
    std::string Switchtb;  // "Off" when switch bit 0 is clear, else "On"
    bool operator==(const LiveCaptions&) const = default;
};

// The captions of every live-value label for `live` (both motor entries; after a
// relayed message entry 1 holds what the last direct message left).
LiveCaptions liveCaptions(const CyclicTelemetry& live);

// Fills `out` in place, reusing its strings' storage (the 100-per-second path).
void fillLiveCaptions(const CyclicTelemetry& live, LiveCaptions& out);

// The firmware version as Versiontb shows it: major "0", ".", minor "00" (1, 5 -> "1.05").
std::string versionCaption(int major, int minor);

// Back colour of a validity indicator (Validitiescb, the tuning window's input
// indicator): green when valid, red when not. Blue-green-red.
uint32_t validityColour(bool valid);

// Back colour of TestDrivecb: green while the module reports a test drive, light grey
// otherwise. Blue-green-red.
uint32_t testDriveColour(bool active);

} // namespace kdx
