#pragma once
// "Write File": the stretch of a recording between the two marks, copied to a new file
// named after it. The window's button and kdxctl trim both use TrimCopy, so they write
// the same bytes.
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kdx {

namespace trim {
constexpr std::string_view ErrorText = "Error during file trimming.";
constexpr std::string_view Suffix = "_t"; // appended after the extension: Run 0.Log_t
} // namespace trim

// The trimmed copy's name: the recording's name with "_t" at its very end.
std::string TrimmedName(const std::string& recording);

struct TrimResult {
    bool ok = false;
    int64_t copied = 0; // bytes written to the copy, also when it failed part way
    std::string output; // the copy's path
    std::string reason; // why it failed, for kdxctl (the window shows ErrorText only)
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

// One trim, copied a slice at a time so a window can let its event loop run between
// slices. Both counted loops are inclusive, so the copy starts one byte after the start
// mark and ends one byte after the end mark: MarkStart + 1 bytes are skipped, then
// max(MarkEnd - MarkStart, 1) + 1 bytes copied. A recording shorter than that is an
// error; the partial copy stays.
class TrimCopy {
public:
    TrimCopy() = default;
    TrimCopy(const TrimCopy&) = delete;
    TrimCopy& operator=(const TrimCopy&) = delete;
    ~TrimCopy() { abandon(); }

    // Deletes an earlier copy, creates the new one, opens the recording and skips to
    // the start mark. False when that fails; result() says why.
    bool start(const std::string& recording, int32_t markStart, int32_t markEnd, TrimWrite how = TrimWrite::InPlace);
    // Copies up to `bytes` more. True while there is more to copy; false once the copy
    // is finished (or failed), and then result() is final and the files are closed.
    bool copy(int64_t bytes);
    bool copying() const { return out_ != nullptr; }
    const TrimResult& result() const { return r_; }
    // Stops an unfinished copy where it is; what was written stays.
    void abandon();

private:
    bool fail(std::string why);
    bool finish();

    TrimResult r_;
    std::string recording_;
    std::FILE* in_ = nullptr;
    std::FILE* out_ = nullptr;
    std::string temp_;     // the file written while an atomic copy runs
    int64_t position_ = 0; // bytes read from the recording
    int64_t left_ = 0;     // bytes still to copy
    std::vector<char> buf_;
};

// The whole trim at once (kdxctl trim).
TrimResult trimRecording(const std::string& recording, int32_t markStart, int32_t markEnd,
                         TrimWrite how = TrimWrite::InPlace);

} // namespace kdx
