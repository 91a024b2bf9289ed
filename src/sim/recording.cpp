#include "sim/recording.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>
#include <vector>

namespace kdx::sim {

void runRecording(Simulator& sim, double seconds, const std::function<void(std::span<const uint8_t>)>& sink)
{
    std::vector<uint8_t> chunk;
    chunk.reserve(8192);
    const double end = sim.now() + seconds;
    while (sim.now() < end - 1e-9) {
        chunk.clear();
        sim.advance(std::min(1.0, end - sim.now()), chunk);
        if (!chunk.empty()) sink(chunk);
    }
}

long long writeRecording(const SimOptions& options, double seconds, const std::string& path, std::string& error)
{
    namespace fs = std::filesystem;
    const fs::path target(path);
    fs::path dir = target.parent_path();
    if (dir.empty()) dir = ".";
    // A new file beside the target (so the rename stays on one file system), created
    // with the ordinary permissions the user's umask gives.
    std::string temp;
    int fd = -1;
    for (int attempt = 0; fd < 0 && attempt < 100; ++attempt) {
        temp = (dir / ("." + target.filename().string() + "." + std::to_string(::getpid()) + "." +
                       std::to_string(attempt) + ".part"))
                   .string();
        fd = ::open(temp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd < 0 && errno != EEXIST) break;
    }
    if (fd < 0) {
        error = "cannot write in " + dir.string() + ": " + std::strerror(errno);
        return -1;
    }
    Simulator sim(options);
    long long written = 0;
    bool ok = true;
    runRecording(sim, seconds, [&](std::span<const uint8_t> bytes) {
        std::size_t done = 0;
        while (ok && done < bytes.size()) {
            const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) {
                error = "cannot write " + path + ": " + std::strerror(errno);
                ok = false;
                break;
            }
            done += static_cast<std::size_t>(n);
        }
        written += static_cast<long long>(done);
    });
    if (ok && ::fsync(fd) != 0) {
        error = "cannot write " + path + ": " + std::strerror(errno);
        ok = false;
    }
    if (::close(fd) != 0 && ok) {
        error = "cannot write " + path + ": " + std::strerror(errno);
        ok = false;
    }
    if (ok) {
        if (std::rename(temp.c_str(), path.c_str()) != 0) {
            error = "cannot write " + path + ": " + std::strerror(errno);
            ok = false;
        }
    }
    if (!ok) {
        ::unlink(temp.c_str());
        return -1;
    }
    return written;
}

} // namespace kdx::sim
