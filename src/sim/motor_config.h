#pragma once
// The simulated module's configuration memory: the factory image it starts with, and
// how the loop reads its gains out of a motor block.
#include "sim/kdx_model.h"

#include <array>
#include <cstdint>
#include <span>

namespace kdx::sim {

using MotorBlock = std::array<uint8_t, 30>;

// Firmware version reported in telemetry and relayed memory replies: 1.05.
constexpr uint8_t kFirmwareMajor = 1;
constexpr uint8_t kFirmwareMinor = 5;

// The factory configuration of one motor block: 20 kHz PWM, P 100 %, I rate 20,
// I angle 2 degrees, D 50 %, static power 15 %, dynamic power 40 %, power-error angle
// 4 degrees, 14 poles, gain 100 %, direct drive, not reversed, recovery off.
// qvaneAxis goes into the axis bits (0 Tilt, 1 Roll, 2 Pan, 3 Off).
MotorBlock defaultMotorBlock(int qvaneAxis);

// The loop's gains as the module reads them from a motor block (raw units to the
// engineering units of DriveGains).
DriveGains gainsFromBlock(std::span<const uint8_t, 30> block);

} // namespace kdx::sim
