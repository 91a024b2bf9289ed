#pragma once
// Every message identifier of the module's serial protocol, both directions.
#include <cstdint>

namespace kdx::msg {

constexpr uint8_t StartByte = 0x5A; // "Z"
constexpr int MinLength = 3;        // count, identifier, checksum

// Tool to module.
constexpr int ReadMemory = 112;       // "p", direct read of the configuration memory
constexpr int RelayMarker = 130;      // the rest of the frame is for one Q-Vane axis's KDX
constexpr int RelayedReadBase = 128;  // + axis: relayed read request
constexpr int WriteMemory = 113;      // "q", direct write, 60 data bytes
constexpr int RelayedWriteBase = 131; // + axis: relayed write, 30 data bytes
constexpr int SelectAxisBase = 131;   // + axis: select the relayed axis (no relay marker)
constexpr int Gains = 115;            // "s", PID gains
constexpr int TestDrive = 116;        // "t", test command
constexpr int TuningDrive = 117;      // "u", tuning drive
constexpr int Bootloader = 254;       // restart into the bootloader

// Module to tool.
constexpr int MemoryContents = 120; // "x"
constexpr int Cyclic = 121;         // "y", direct telemetry
constexpr int CyclicQVane = 122;    // "z", telemetry relayed by a Q-Vane
constexpr int AxisMemoryBase = 136; // + axis: relayed memory contents

} // namespace kdx::msg
