#include "link/trim.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include <sys/stat.h>
#include <unistd.h>

namespace kdx {

namespace {

constexpr std::size_t kBlock = 1 << 16;

std::string osReason(int err) { return std::strerror(err ? err : EIO); }

} // namespace

std::string TrimmedName(const std::string& recording) { return recording + std::string(trim::Suffix); }

int64_t trimNeedsBytes(int32_t markStart, int32_t markEnd)
{
    return std::max<int64_t>(int64_t{markStart} + 1, 0) + std::max<int64_t>(int64_t{markEnd} - markStart, 1) + 1;
}

bool TrimCopy::start(const std::string& recording, int32_t markStart, int32_t markEnd, TrimWrite how)
{
    namespace fs = std::filesystem;
    abandon();
    r_ = TrimResult{};
    r_.output = TrimmedName(recording);
    recording_ = recording;
    position_ = 0;

    std::error_code ec;
    const fs::file_status st = fs::symlink_status(r_.output, ec);
    if (fs::is_directory(st)) return fail("cannot write " + r_.output + ": " + osReason(EISDIR));
    errno = 0;
    if (how == TrimWrite::Atomic) {
        std::string name = r_.output + ".XXXXXX";
        const int fd = ::mkstemp(name.data());
        if (fd < 0) return fail("cannot write " + r_.output + ": " + osReason(errno));
        temp_ = name;
        // mkstemp makes the file private; the copy gets what a new file would get.
        const mode_t mask = ::umask(0);
        ::umask(mask);
        ::fchmod(fd, 0666 & ~mask);
        out_ = ::fdopen(fd, "wb");
        if (!out_) ::close(fd);
    } else {
        if (fs::exists(st) && !fs::remove(r_.output, ec))
            return fail("cannot delete " + r_.output + ": " + ec.message());
        out_ = std::fopen(r_.output.c_str(), "wb");
    }
    if (!out_) return fail("cannot write " + r_.output + ": " + osReason(errno));
    errno = 0;
    in_ = std::fopen(recording.c_str(), "rb");
    if (!in_) return fail("cannot open " + recording + ": " + osReason(errno ? errno : ENOENT));

    buf_.resize(kBlock);
    for (int64_t skip = std::max<int64_t>(int64_t{markStart} + 1, 0); skip > 0;) {
        errno = 0;
        const std::size_t got =
            std::fread(buf_.data(), 1, static_cast<std::size_t>(std::min<int64_t>(skip, kBlock)), in_);
        position_ += static_cast<int64_t>(got);
        if (got == 0)
            return fail(std::ferror(in_) ? "cannot read " + recording + ": " + osReason(errno)
                                         : recording + " ends after " + std::to_string(position_) + " bytes");
        skip -= static_cast<int64_t>(got);
    }
    left_ = trimNeedsBytes(markStart, markEnd) - std::max<int64_t>(int64_t{markStart} + 1, 0);
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
        if (std::fwrite(buf_.data(), 1, got, out_) != got)
            return fail("cannot write " + r_.output + ": " + osReason(errno));
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
    if (!temp_.empty()) {
        if (::rename(temp_.c_str(), r_.output.c_str()) != 0)
            return fail("cannot replace " + r_.output + ": " + osReason(errno));
        temp_.clear();
    }
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
    // An atomic copy leaves nothing behind; an in-place one keeps what it wrote.
    if (!temp_.empty()) ::unlink(temp_.c_str());
    temp_.clear();
}

TrimResult trimRecording(const std::string& recording, int32_t markStart, int32_t markEnd, TrimWrite how)
{
    TrimCopy trim;
    if (trim.start(recording, markStart, markEnd, how))
        while (trim.copy(kBlock)) {
        }
    return trim.result();
}

} // namespace kdx
