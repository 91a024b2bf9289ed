#include "sim/pty_bridge.h"

#include "sim/simulator.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>
#include <vector>

namespace kdx::sim {

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kPeriod = std::chrono::milliseconds(10);
// Output waiting unread beyond this is what a real port's driver would lose: nobody
// is reading, and a program that opens the device later should not get old telemetry.
constexpr int kUnreadLimit = 4096;
// If the process was held up for longer than this, simulated time skips ahead rather
// than pouring out the backlog in one burst.
constexpr double kMaxCatchUp = 0.1;

std::string sysError(const char* what) { return std::string(what) + ": " + std::strerror(errno); }

} // namespace

PtyBridge::~PtyBridge()
{
    if (slave_ >= 0) ::close(slave_);
    if (master_ >= 0) ::close(master_);
}

bool PtyBridge::open(std::string& error)
{
    master_ = ::posix_openpt(O_RDWR | O_NOCTTY);
    if (master_ < 0) {
        error = sysError("cannot create a pseudo-terminal");
        return false;
    }
    if (::grantpt(master_) != 0 || ::unlockpt(master_) != 0) {
        error = sysError("cannot unlock the pseudo-terminal");
        return false;
    }
    char name[128];
    if (::ptsname_r(master_, name, sizeof name) != 0) {
        error = sysError("cannot name the pseudo-terminal");
        return false;
    }
    path_ = name;
    const int flags = ::fcntl(master_, F_GETFL);
    if (flags < 0 || ::fcntl(master_, F_SETFL, flags | O_NONBLOCK) != 0) {
        error = sysError("cannot set up the pseudo-terminal");
        return false;
    }
    slave_ = ::open(name, O_RDWR | O_NOCTTY);
    if (slave_ < 0) {
        error = sysError("cannot open the pseudo-terminal");
        return false;
    }
    termios tio{};
    if (::tcgetattr(slave_, &tio) != 0) {
        error = sysError("cannot read the pseudo-terminal's settings");
        return false;
    }
    ::cfmakeraw(&tio);
    tio.c_cflag |= CLOCAL | CREAD;
    ::cfsetispeed(&tio, B115200);
    ::cfsetospeed(&tio, B115200);
    if (::tcsetattr(slave_, TCSANOW, &tio) != 0) {
        error = sysError("cannot set the pseudo-terminal to raw mode");
        return false;
    }
    return true;
}

bool PtyBridge::writeAll(const uint8_t* data, std::size_t size, std::string& error)
{
    int unread = 0;
    if (::ioctl(slave_, FIONREAD, &unread) == 0 && unread > kUnreadLimit) {
        stats_.bytesDropped += static_cast<uint64_t>(unread);
        ::tcflush(slave_, TCIFLUSH);
    }
    while (size > 0) {
        const ssize_t n = ::write(master_, data, size);
        if (n < 0) {
            if (errno == EINTR) continue;
            if (errno == EAGAIN || errno == EWOULDBLOCK) {
                stats_.bytesDropped += size;
                return true;
            }
            error = sysError("cannot write to the pseudo-terminal");
            return false;
        }
        stats_.bytesOut += static_cast<uint64_t>(n);
        data += n;
        size -= static_cast<std::size_t>(n);
    }
    return true;
}

bool PtyBridge::serve(Simulator& sim, const std::function<bool()>& stop, std::string& error)
{
    if (master_ < 0) {
        error = "the pseudo-terminal is not open";
        return false;
    }
    std::vector<uint8_t> out;
    std::vector<uint8_t> in(4096);
    auto start = Clock::now();
    const double simStart = sim.now();

    // Brings simulated time up to the clock and sends what the module sent meanwhile.
    auto catchUp = [&]() {
        double elapsed = std::chrono::duration<double>(Clock::now() - start).count();
        const double behind = elapsed - (sim.now() - simStart);
        if (behind > kMaxCatchUp) {
            const auto skip = std::chrono::duration<double>(behind - kMaxCatchUp);
            start += std::chrono::duration_cast<Clock::duration>(skip);
            elapsed -= skip.count();
        }
        out.clear();
        sim.advance(elapsed - (sim.now() - simStart), out);
        return writeAll(out.data(), out.size(), error);
    };

    while (!stop()) {
        if (!catchUp()) return false;
        // Wake at the next 10 ms boundary of the schedule, or when the program writes.
        const auto elapsed = Clock::now() - start;
        const auto next = start + (elapsed / kPeriod + 1) * kPeriod;
        const auto wait = std::max(Clock::duration::zero(), next - Clock::now());
        const timespec timeout{static_cast<time_t>(std::chrono::duration_cast<std::chrono::seconds>(wait).count()),
                               static_cast<long>((wait % std::chrono::seconds(1)) / std::chrono::nanoseconds(1))};
        pollfd pfd{master_, POLLIN, 0};
        const int ready = ::ppoll(&pfd, 1, &timeout, nullptr);
        if (ready < 0) {
            if (errno == EINTR) continue;
            error = sysError("cannot wait on the pseudo-terminal");
            return false;
        }
        if (ready == 0) continue;
        if (pfd.revents & (POLLERR | POLLNVAL)) {
            error = "the pseudo-terminal failed";
            return false;
        }
        if (pfd.revents & POLLIN) {
            const ssize_t n = ::read(master_, in.data(), in.size());
            if (n < 0 && errno != EAGAIN && errno != EINTR && errno != EIO) {
                error = sysError("cannot read from the pseudo-terminal");
                return false;
            }
            if (n > 0) {
                if (!catchUp()) return false; // the bytes arrive at the current time
                stats_.bytesIn += static_cast<uint64_t>(n);
                sim.consume(std::span<const uint8_t>(in.data(), static_cast<std::size_t>(n)));
                out.clear();
                sim.advance(0.0, out);
                if (!writeAll(out.data(), out.size(), error)) return false;
            }
        }
    }
    return true;
}

} // namespace kdx::sim
