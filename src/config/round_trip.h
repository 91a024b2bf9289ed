#pragma once
// What a value typed into an entry prompt looks like once the module holds it: the
// configuration is written (ParamsToImage), the module keeps the low byte of each
// element, and a read (ImageToParams) shows the label again. Some values the prompts
// accept come back changed: the module's unit is coarser than the label (sixteenths of
// a degree behind a label of hundredths), a value does not fit its field (16 degrees
// is 256 sixteenths, of which a byte keeps 0; below 1.23 kHz the PWM count passes 32767
// and reads as the 8 kHz default), a halfway value rounds to even (a trim of 3 degrees
// comes back as 4), or the debug identifier, which a write never sends. Some values also
// drift: read back and written again with no edit they give other bytes (the PWM count
// drops by one for many counts).
#include "config/driver_config.h"
#include "config/entry_commands.h"
#include "config/param_fields.h"

#include <string>

namespace kdx {

struct RoundTrip {
    bool accepted = false; // false: outside the prompt's range, dropped; nothing else is set
    std::string entered;   // the value as entered, at the entry's resolution ("1.20" kHz)
    std::string shown;     // the label right after the entry
    std::string readBack;  // the label after a write and a read
    int stored = 0;        // the field's raw value in the module
    int rewritten = 0;     // the raw value after one more read and write with no edit
    std::string warning;   // what to tell the user; empty when the value comes back as shown

    bool changes() const { return shown != readBack; }
    bool drifts() const { return stored != rewritten; }
};

// Enters `value` (as AskValueResult gives it) for the command and motor (0 or 1) on a
// copy of `config`, writes the copy's image, reads it back and writes it once more.
// `config` itself and its handlers are left alone. The warning reads, for example,
// "PWM frequency 1.20 kHz will read back as 8.0 kHz".
RoundTrip checkRoundTrip(const DriverConfig& config, const EntryCommand& command, int motor, float value);

// The raw value a field of `image` has after a read and a write with no edit (a PWM
// count of 31746, for one, comes back as 31745).
int rewrittenRaw(const MemoryImage& image, const ParamField& field, int motor);

} // namespace kdx
