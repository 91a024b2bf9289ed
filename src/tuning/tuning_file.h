#pragma once
// Tuning files (".btf"): the gains and one sweep as comma-separated text, CR LF lines.
//   AxisRate, AxisError, P,I,IA,D,V1,V2,G,Spare1,Spare2
//   rate0,error0,P,I,IA,D,V1,V2,G,0,0
//   rate1,error1
//   ...
// Every number is written "0.00", so gains keep two decimals through a save and load.
#include "tuning/gain_set.h"
#include "tuning/trace_buffer.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kdx {

namespace tuning_file {
// The box of a load that failed names the file and the reason.
inline constexpr std::string_view ReadErrorTitle = "File Read";
inline constexpr std::string_view ReadErrorPrefix = "Error reading tuning file ";
inline constexpr std::string_view NoTuningData = "no tuning data in it";
// No tuning file comes near this; anything larger is refused before it fills memory.
inline constexpr std::size_t MaxBytes = 16u << 20;
} // namespace tuning_file

// The file's bytes for samples 0..lastIndex of the buffer and the panel's gains.
// lastIndex outside 0..6000 is a subscript error.
std::string tuningFileText(const TraceBuffer& traces, int lastIndex, const GainSet& gains);

struct TuningFileLoad {
    bool headerRead = false;      // the eleven header items were there; the buffer was reset
    std::optional<GainSet> gains; // the first line's gains, when the load ran to its end
    int pairsStored = 0;          // pairs stored from the second line on, at 0..pairsStored-1
    bool complete = false;        // false: an error (truncation, a value too large for a
                                  // 32-bit float, more than 6001 pairs) ended the load early
    // The newest index holding loaded data.
    int lastIndex() const { return pairsStored > 0 ? pairsStored - 1 : 0; }
};

// Reads a tuning file into the buffer, as the tuning window always has:
//  - the header's eleven items are skipped; only then is resetTrace called (an
//    unreadable file leaves the display alone);
//  - the first line's pair goes to sample 0, its gains are kept aside, its spares dropped;
//  - kept as designed: the following pairs are stored from index 0, so the second line
//    overwrites sample 0, and a pair whose error item ends the file is not stored;
//  - an error ends the load; what was stored stays, and the gains are then not reported.
// Never throws: any bytes load what they can.
TuningFileLoad readTuningFile(std::span<const uint8_t> bytes, TraceBuffer& traces,
                              const std::function<void()>& resetTrace);

// The text of the "File Read" box: "Error reading tuning file PATH: REASON".
std::string tuningFileReadError(const std::string& path, std::string_view reason);

// Reads the file at `path` whole into `bytes`. A file that cannot be opened or read (a
// folder, a device failing with an I/O error) gives the box text instead; nothing throws.
std::optional<std::string> readTuningFileBytes(const std::string& path, std::vector<uint8_t>& bytes);

} // namespace kdx
