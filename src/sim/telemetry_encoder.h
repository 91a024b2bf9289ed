#pragma once
// Builds the module's cyclic telemetry frames from what the model reports. Each field
// is the inverse of the tool's decoding: rate, error and angle x128, the P, I, D
// components and the electrical angle x64 (signed 16-bit, low byte first, held at the
// ends of the range), power as percent x256/100 in one byte, supply volts x256.
#include "sim/kdx_model.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace kdx::sim {

struct DirectTelemetry {
    std::array<AxisReport, 2> motor{};
    double volts = 0;
    uint8_t switchBits = 0;      // bits 0-3
    bool inputValid = true;      // the module's own command input
    uint8_t motorConfigBits = 0; // bit 3 clear: both motors fitted
    std::array<uint8_t, 2> extGain{100, 100};
    std::array<uint8_t, 7> debug{};
    uint8_t firmwareMajor = 0, firmwareMinor = 0;
};

struct RelayedTelemetry {
    int axis = 0; // 0 Tilt, 1 Roll, 2 Pan
    AxisReport report{};
    double volts = 0;
    uint8_t switchBits = 0;
    std::array<bool, 3> inputValid{}; // PPM, Spektrum, SBUS
    uint8_t extGain = 100;
};

// Appends a whole frame: start byte, length, identifier, payload, plain checksum.
void appendFrame(std::vector<uint8_t>& out, int id, std::span<const uint8_t> payload);

// Identifier 121, 45 payload bytes (length 48).
void appendDirectTelemetry(const DirectTelemetry& t, std::vector<uint8_t>& out);
// Identifier 122, 22 payload bytes (length 25).
void appendRelayedTelemetry(const RelayedTelemetry& t, std::vector<uint8_t>& out);

} // namespace kdx::sim
