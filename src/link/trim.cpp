#include "link/trim.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

#include <sys/stat.h>
#include <unistd.h>

namespace kdx {

namespace {

struct FileCloser {
    void operator()(std::FILE* f) const
    {
        if (f) std::fclose(f);
    }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

std::string osReason(int err) { return std::strerror(err ? err : EIO); }

} // namespace

std::string TrimmedName(const std::string& recording) { return recording + std::string(trim::Suffix); }

int64_t trimNeedsBytes(int32_t markStart, int32_t markEnd)
{
    return std::max<int64_t>(int64_t{markStart} + 1, 0) + std::max<int64_t>(int64_t{markEnd} - markStart, 1) + 1;
}

TrimResult trimRecording(const std::string& recording, int32_t markStart, int32_t markEnd,
                         const std::function<void(int64_t)>& progress, TrimWrite how)
{
    namespace fs = std::filesystem;
    TrimResult r;
    r.output = TrimmedName(recording);
    std::string temp; // the file written, when it is not the output itself
    auto fail = [&](std::string why) {
        r.reason = std::move(why);
        if (!temp.empty()) ::unlink(temp.c_str());
        return r;
    };

    std::error_code ec;
    const fs::file_status st = fs::symlink_status(r.output, ec);
    if (fs::is_directory(st)) return fail("cannot write " + r.output + ": " + osReason(EISDIR));
    File out;
    errno = 0;
    if (how == TrimWrite::Atomic) {
        std::string name = r.output + ".XXXXXX";
        const int fd = ::mkstemp(name.data());
        if (fd < 0) return fail("cannot write " + r.output + ": " + osReason(errno));
        temp = name;
        // mkstemp makes the file private; the copy gets what a new file would get.
        const mode_t mask = ::umask(0);
        ::umask(mask);
        ::fchmod(fd, 0666 & ~mask);
        out.reset(::fdopen(fd, "wb"));
        if (!out) ::close(fd);
    } else {
        // The earlier copy goes first: what is written now never mixes with it.
        if (fs::exists(st) && !fs::remove(r.output, ec)) return fail("cannot delete " + r.output + ": " + ec.message());
        out.reset(std::fopen(r.output.c_str(), "wb"));
    }
    if (!out) return fail("cannot write " + r.output + ": " + osReason(errno));
    errno = 0;
    File in(std::fopen(recording.c_str(), "rb"));
    if (!in) return fail("cannot open " + recording + ": " + osReason(errno ? errno : ENOENT));

    const int64_t skip = std::max<int64_t>(int64_t{markStart} + 1, 0);
    const int64_t count = trimNeedsBytes(markStart, markEnd) - skip;
    std::array<char, 1 << 16> buf;
    int64_t position = 0;
    // Reads up to n bytes; a short read is the end of the recording or a read error.
    auto readSome = [&](int64_t n, std::string& why) -> std::size_t {
        errno = 0;
        const std::size_t got = std::fread(buf.data(), 1, static_cast<std::size_t>(std::min<int64_t>(n, std::ssize(buf))), in.get());
        position += static_cast<int64_t>(got);
        if (got == 0)
            why = std::ferror(in.get()) ? "cannot read " + recording + ": " + osReason(errno)
                                        : recording + " ends after " + std::to_string(position) + " bytes";
        return got;
    };

    std::string why;
    for (int64_t left = skip; left > 0;) {
        const std::size_t got = readSome(left, why);
        if (got == 0) return fail(why);
        left -= static_cast<int64_t>(got);
    }
    for (int64_t left = count; left > 0;) {
        const std::size_t got = readSome(left, why);
        if (got == 0) break;
        errno = 0;
        if (std::fwrite(buf.data(), 1, got, out.get()) != got) {
            why = "cannot write " + r.output + ": " + osReason(errno);
            break;
        }
        const int64_t before = r.copied;
        r.copied += static_cast<int64_t>(got);
        left -= static_cast<int64_t>(got);
        if (progress && r.copied / 1024 != before / 1024) progress(r.copied / 1024 * 1024);
    }
    errno = 0;
    const bool closed = std::fclose(out.release()) == 0;
    if (!why.empty()) return fail(why);
    if (!closed) return fail("cannot write " + r.output + ": " + osReason(errno));
    if (!temp.empty()) {
        if (::rename(temp.c_str(), r.output.c_str()) != 0) return fail("cannot replace " + r.output + ": " + osReason(errno));
        temp.clear();
    }
    r.ok = true;
    return r;
}

} // namespace kdx
