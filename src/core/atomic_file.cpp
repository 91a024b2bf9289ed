#include "core/atomic_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kdx {

namespace {

// The error each injected step fails with: a folder the user may not write to, a disk
// that fills half-way through the bytes, a device that fails at flush or rename.
bool failing(AtomicSaveFault fault, AtomicSaveFault step, int& err)
{
    if (fault != step) return false;
    switch (step) {
    case AtomicSaveFault::Create: err = EACCES; break;
    case AtomicSaveFault::Write: err = ENOSPC; break;
    default: err = EIO; break;
    }
    return true;
}

std::string directoryOf(const std::string& path)
{
    const auto slash = path.find_last_of('/');
    if (slash == std::string::npos) return ".";
    if (slash == 0) return "/";
    return path.substr(0, slash);
}

} // namespace

bool saveFileAtomically(const std::string& path, std::span<const uint8_t> bytes, std::string& error,
                        AtomicSaveFault fault)
{
    // The temporary name sits in the target's own folder, so the rename never crosses
    // a file system and is atomic.
    std::string tmp = path + ".XXXXXX";
    int err = 0;
    int fd = -1;
    if (!failing(fault, AtomicSaveFault::Create, err)) {
        fd = ::mkstemp(tmp.data());
        if (fd < 0) err = errno;
    }
    if (fd < 0) {
        error = std::strerror(err);
        return false;
    }

    auto fail = [&](int e) {
        error = std::strerror(e);
        if (fd >= 0) ::close(fd);
        ::unlink(tmp.c_str());
        return false;
    };

    // mkstemp creates the file 0600; a configuration file is an ordinary document.
    const mode_t mask = ::umask(0);
    ::umask(mask);
    struct stat st {};
    const mode_t mode = ::stat(path.c_str(), &st) == 0 ? (st.st_mode & 07777) : (0666 & ~mask);
    ::fchmod(fd, mode);

    std::size_t done = 0;
    // An injected full disk takes the first half of the bytes, then refuses the rest.
    const std::size_t room = fault == AtomicSaveFault::Write ? bytes.size() / 2 : bytes.size();
    while (done < bytes.size()) {
        if (done >= room && failing(fault, AtomicSaveFault::Write, err)) return fail(err);
        const std::size_t chunk = (done < room ? room : bytes.size()) - done;
        const ssize_t n = ::write(fd, bytes.data() + done, chunk);
        if (n < 0) {
            if (errno == EINTR) continue;
            return fail(errno);
        }
        done += static_cast<std::size_t>(n);
    }
    if (failing(fault, AtomicSaveFault::Sync, err)) return fail(err);
    if (::fsync(fd) != 0) return fail(errno);
    if (::close(fd) != 0) {
        fd = -1;
        return fail(errno);
    }
    fd = -1;
    if (failing(fault, AtomicSaveFault::Rename, err)) return fail(err);
    if (::rename(tmp.c_str(), path.c_str()) != 0) return fail(errno);

    // Make the rename itself durable; a failure here does not undo the save.
    const int dfd = ::open(directoryOf(path).c_str(), O_RDONLY | O_DIRECTORY);
    if (dfd >= 0) {
        ::fsync(dfd);
        ::close(dfd);
    }
    return true;
}

} // namespace kdx
