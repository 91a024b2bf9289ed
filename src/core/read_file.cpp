#include "core/read_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace kdx {

namespace {

std::string reasonOf(int err, int fallback) { return std::strerror(err ? err : fallback); }

} // namespace

FileBytes readFileBytes(const std::string& path, std::size_t maxBytes)
{
    FileBytes r;
    errno = 0;
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (!f) {
        r.failure = FileBytes::Failure::Open;
        r.reason = reasonOf(errno, ENOENT);
        return r;
    }
    uint8_t chunk[4096];
    for (;;) {
        errno = 0;
        const std::size_t n = std::fread(chunk, 1, sizeof chunk, f);
        const int err = errno;
        if (n > maxBytes - r.bytes.size()) {
            r.failure = FileBytes::Failure::Read;
            r.reason = reasonOf(EFBIG, EFBIG);
            break;
        }
        r.bytes.insert(r.bytes.end(), chunk, chunk + n);
        if (n < sizeof chunk) {
            // A folder opens and then fails here (EISDIR), as does a device with EIO.
            if (std::ferror(f)) {
                r.failure = FileBytes::Failure::Read;
                r.reason = reasonOf(err, EIO);
            }
            break;
        }
    }
    std::fclose(f);
    if (!r.ok()) r.bytes.clear();
    return r;
}

} // namespace kdx
