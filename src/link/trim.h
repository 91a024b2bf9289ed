#pragma once
// "Write File": the stretch of a recording between the two marks, copied to a new file
// named after it. The window's button and kdxctl trim both call trimRecording, so they
// write the same bytes.
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace kdx {

namespace trim {
constexpr std::string_view ErrorText = "Error during file trimming.";
constexpr std::string_view Suffix = "_t"; // appended after the extension: Run 0.Log_t
} // namespace trim

// The trimmed copy's name: the recording's name with "_t" at its very end.
std::string TrimmedName(const std::string& recording);

struct TrimResult {
    bool ok = false;
    int64_t copied = 0;  // bytes written to the copy, also when it failed part way
    std::string output;  // the copy's path
    std::string reason;  // why it failed, for kdxctl (the window shows ErrorText only)
};

// How the copy takes the place of an earlier one. InPlace, the window's way: the earlier
// copy is deleted first and the new one written under its name, so a failure leaves
// the partial copy. Atomic: the copy is written to a temporary file beside it and
// renamed at the end, so a failure leaves an earlier copy as it was and no partial one.
enum class TrimWrite { InPlace, Atomic };

// Bytes a recording must hold for the marks: the copy starts one byte after the start
// mark and ends one byte after the end mark (MarkStart + 1 bytes skipped, then
// max(MarkEnd - MarkStart, 1) + 1 copied).
int64_t trimNeedsBytes(int32_t markStart, int32_t markEnd);

// Copies the marked stretch of `recording` to TrimmedName(recording). Both counted
// loops are inclusive, as trimNeedsBytes says. A recording shorter than that is an
// error. `progress` (optional) is told the bytes copied at every whole kilobyte.
TrimResult trimRecording(const std::string& recording, int32_t markStart, int32_t markEnd,
                         const std::function<void(int64_t copied)>& progress = {}, TrimWrite how = TrimWrite::InPlace);

} // namespace kdx
