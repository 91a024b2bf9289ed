#include "link/trim.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

namespace kdx {

namespace {

constexpr std::size_t kBlock = 1 << 16;

std::string osReason(int err) { return std::strerror(err ? err : EIO); }

} // namespace

std::string TrimmedName(const std::string& recording) { return recording + std::string(trim::Suffix); }

bool TrimCopy::start(const std::string& recording, int32_t markStart, int32_t markEnd)
{
    namespace fs = std::filesystem;
    abandon();
    r_ = TrimResult{};
    r_.output = TrimmedName(recording);
    recording_ = recording;
    position_ = 0;

    // The earlier copy goes first: what is written now never mixes with it.
    std::error_code ec;
    const fs::file_status st = fs::symlink_status(r_.output, ec);
    if (fs::is_directory(st)) return fail("cannot write " + r_.output + ": " + osReason(EISDIR));
    if (fs::exists(st) && !fs::remove(r_.output, ec)) return fail("cannot delete " + r_.output + ": " + ec.message());

    errno = 0;
    out_ = std::fopen(r_.output.c_str(), "wb");
    if (!out_) return fail("cannot write " + r_.output + ": " + osReason(errno));
    errno = 0;
    in_ = std::fopen(recording.c_str(), "rb");
    if (!in_) return fail("cannot open " + recording + ": " + osReason(errno ? errno : ENOENT));

    buf_.resize(kBlock);
    for (int64_t skip = std::max<int64_t>(int64_t{markStart} + 1, 0); skip > 0;) {
        errno = 0;
        const std::size_t got = std::fread(buf_.data(), 1, static_cast<std::size_t>(std::min<int64_t>(skip, kBlock)), in_);
        position_ += static_cast<int64_t>(got);
        if (got == 0)
            return fail(std::ferror(in_) ? "cannot read " + recording + ": " + osReason(errno)
                                         : recording + " ends after " + std::to_string(position_) + " bytes");
        skip -= static_cast<int64_t>(got);
    }
    left_ = std::max<int64_t>(int64_t{markEnd} - markStart, 1) + 1;
    return true;
}

bool TrimCopy::copy(int64_t bytes)
{
    while (copying() && bytes > 0) {
        if (left_ == 0) return finish();
        errno = 0;
        const auto want = static_cast<std::size_t>(std::min<int64_t>({bytes, left_, int64_t{kBlock}}));
        const std::size_t got = std::fread(buf_.data(), 1, want, in_);
        position_ += static_cast<int64_t>(got);
        if (got == 0)
            return fail(std::ferror(in_) ? "cannot read " + recording_ + ": " + osReason(errno)
                                         : recording_ + " ends after " + std::to_string(position_) + " bytes");
        errno = 0;
        if (std::fwrite(buf_.data(), 1, got, out_) != got) return fail("cannot write " + r_.output + ": " + osReason(errno));
        r_.copied += static_cast<int64_t>(got);
        left_ -= static_cast<int64_t>(got);
        bytes -= static_cast<int64_t>(got);
    }
    if (copying() && left_ == 0) return finish();
    return copying();
}

bool TrimCopy::finish()
{
    if (in_) std::fclose(in_);
    in_ = nullptr;
    errno = 0;
    const bool closed = std::fclose(out_) == 0;
    out_ = nullptr;
    if (!closed) return fail("cannot write " + r_.output + ": " + osReason(errno));
    r_.ok = true;
    return false;
}

bool TrimCopy::fail(std::string why)
{
    abandon();
    r_.ok = false;
    r_.reason = std::move(why);
    return false;
}

void TrimCopy::abandon()
{
    if (in_) std::fclose(in_);
    if (out_) std::fclose(out_);
    in_ = out_ = nullptr;
}

TrimResult trimRecording(const std::string& recording, int32_t markStart, int32_t markEnd)
{
    TrimCopy trim;
    if (trim.start(recording, markStart, markEnd))
        while (trim.copy(kBlock)) {
        }
    return trim.result();
}

} // namespace kdx
