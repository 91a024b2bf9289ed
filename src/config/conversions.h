#pragma once
// Raw module units to display units. Each takes the low byte and the high byte of a
// signed 16-bit field (RawToPowerPerc a single raw value) and returns a 32-bit float.
// The three "/128" entry points compute the same thing and are kept apart on purpose:
// callers choose the name by what the field means.
#include "config/memory_layout.h"

#include <cstdint>

namespace kdx {

// s = low + 256*high, negative when high >= 128.
double rawSigned(int low, int high);

float RawToPerc(int low, int high);       // s / 128
float RawToDirectPerc(int low, int high); // s / 128
float RawToAngle(int low, int high);      // s / 64
float RawToVoltage(int low, int high);    // s / 256
float RawToGain(int low, int high);       // (s / 256) * 100, rounded to float at each step
float RawToAngle2(int low, int high);     // s / 128
float RawToPowerPerc(int raw);            // raw / 256 * 100

// A scaled field of the configuration (see layout::WordScale): its low and high byte
// as the window shows it, and the value shown as the field's count (rounded half to
// even; a count outside 32 bits raises the overflow error).
float scaledFromImage(const layout::WordScale& scale, int low, int high);
int32_t scaledToImage(const layout::WordScale& scale, double shown);

} // namespace kdx
