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

// Copies the marked stretch of `recording` to TrimmedName(recording). An earlier copy
// of that name is deleted first. Both counted loops are inclusive, so the copy starts
// one byte after the start mark and ends one byte after the end mark: MarkStart + 1
// bytes are skipped, then max(MarkEnd - MarkStart, 1) + 1 bytes copied. A recording
// shorter than that is an error; the partial copy stays. `progress` (optional) is told
// the bytes copied at every whole kilobyte.
TrimResult trimRecording(const std::string& recording, int32_t markStart, int32_t markEnd,
                         const std::function<void(int64_t copied)>& progress = {});

} // namespace kdx
