#pragma once
// Two configurations compared parameter by parameter, in display units: a saved file
// against another, against a module, or the window's configuration against a file.
// Two values differ when the bytes that hold them differ, so a change the label cannot
// show (20.0 kHz from a count of 2000 or of 1999) still counts.
#include "config/memory_image.h"

#include <string>
#include <vector>

namespace kdx {

struct ConfigSnapshot {
    MemoryImage image{}; // as loaded or read: one byte per element
    bool twoAxis = true; // false: only the first motor block holds a configuration
};

struct ParamDifference {
    std::string name; // as kdxctl show prints it; "DebugId", or "ByteN" for the byte at
                      // offset N of the motor block that no parameter shows
    int motor = 0;    // 0 or 1; of the two-axis side when only one is two-axis
    std::string a, b; // the values as the main window shows them; where those are equal,
                      // each is followed by its raw value: "20.0 (raw 2000)"
};

// The differences, motor by motor: the parameters in kParamFields order, then the bytes
// no parameter shows (bits 2 to 6 of the axis byte as Byte16). Two two-axis
// configurations compare both motors; otherwise the single block is compared with motor
// `motor` (0 or 1) of the other side, or with the other single block.
std::vector<ParamDifference> diffConfigs(const ConfigSnapshot& a, const ConfigSnapshot& b, int motor = 0);

} // namespace kdx
