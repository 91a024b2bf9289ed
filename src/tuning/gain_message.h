#pragma once
// The gain message the tuning window sends every 40 ms while "Enab" is ticked, so the
// module runs on the tuned gains instead of its stored configuration.
#include "link/frame.h"

namespace kdx {

// Where the message goes: straight to a KDX, or relayed by a Q-Vane to one axis's KDX
// (0 Tilt, 1 Roll, 2 Pan).
struct GainMsgRoute {
    bool relayed = false;
    int qvaneAxis = 0;
};

// Fills OutMsg with the gain message (the main window's SendPID then hands it to
// SendMessage). Direct, 16 elements: 16, 115, motor, P lo, P hi, I, D lo, D hi, G lo,
// G hi, V1 lo, V1 hi, V2 lo, V2 hi, IA, checksum. Relayed, 17: 17, 130, 115,
// 128 + 16 * axis, then the same from P on; a relayed message carries no motor.
// Scaling: P and D / 100 x 128, G / 100 x 256, volts x 256, IA x 16, each rounded half
// to even to a 32-bit integer (overflow raises); of I only the low byte goes. Two-byte
// fields are low byte first, negatives as two's complement.
void buildGainMsg(OutMsgBuffer& OutMsg, float P, float I, float IA, float D, float G, float V1, float V2,
                  int MotorIndex, const GainMsgRoute& route = {});

} // namespace kdx
