#pragma once
// Where each parameter lives in the module's configuration memory. Motor m's block is
// elements 30*m .. 30*m + 29; two-byte values are low byte first.
namespace kdx::layout {

constexpr int MotorBlockSize = 30;
constexpr int ImageChecksum = 60; // 8-bit sum of elements 0 .. 59
constexpr int ImageSize = 65;     // elements 61 .. 64 are carried, never interpreted
constexpr int DirectBytes = 60;   // a direct read or write moves elements 0 .. 59
constexpr int RelayedBytes = 30;  // through a Q-Vane only the first motor block moves

// Offsets within a motor block.
constexpr int DebugId = 0;      // element 0 of the image: the module's debug identifier
constexpr int PwmPeriod = 2;    // 2, 3: period count of 40 MHz ticks
constexpr int StaticPower = 4;  // 4, 5: 1/256 per count
constexpr int DynamicPower = 6; // 6, 7: 1/256 per count
constexpr int PTerm = 8;        // 8, 9: 100/128 % per count
constexpr int IAngle = 10;      // 1/16 degree
constexpr int IRate = 11;
constexpr int DTerm = 12;           // 12, 13: 100/128 % per count
constexpr int PowerErrorAngle = 14; // 1/16 degree
constexpr int AxisFlags = 16;       // bits 0-1 Q-Vane axis, bit 7 reverse
constexpr int DTermLimit = 17;
constexpr int Poles = 18;
constexpr int GainPerc = 19;   // 19, 20: 100/256 % per count
constexpr int DriveRatio = 21; // 21, 22: 16384 / ratio
constexpr int RecoveryAngle = 23;
constexpr int FixedPosTrim = 24; // 2 degrees per count

constexpr int ReverseBit = 0x80;

// The scaled two-byte signed fields, one entry driving both directions: the module
// counts `counts` per unit and the window shows `shown` per unit. A read divides the
// count by `counts` (a 32-bit float), then multiplies by `shown` (a float again); a
// write divides the value shown by `shown`, then multiplies by `counts`.
struct WordScale {
    int offset;
    double counts;
    double shown;
};
constexpr WordScale StaticPowerScale{StaticPower, 256, 1};
constexpr WordScale DynamicPowerScale{DynamicPower, 256, 1};
constexpr WordScale PTermScale{PTerm, 128, 100};
constexpr WordScale DTermScale{DTerm, 128, 100};
constexpr WordScale GainPercScale{GainPerc, 256, 100};

} // namespace kdx::layout
