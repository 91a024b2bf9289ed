#include "cli/posix_serial.h"

#include "platform/device_group.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace kdx::cli {

namespace {

std::string reason(int err) { return std::strerror(err); }

// A line that hung up reads as empty and refuses writes with EIO; a non-blocking read
// may even report EAGAIN. None of those texts says what happened, so a hang-up gets
// its own.
const char* const kHungUp = "the line hung up (the device was unplugged, or the program at its other end closed it)";

bool hungUp(int fd)
{
    pollfd p{fd, 0, 0};
    return ::poll(&p, 1, 0) > 0 && (p.revents & POLLHUP);
}

std::string openFailure(const std::string& path, int err)
{
    std::string text = "cannot open " + path + ": " + reason(err);
    if (err == EACCES) text += permissionHint(path);
    return text;
}

} // namespace

PosixSerial::~PosixSerial() { close(); }

bool PosixSerial::open(const std::string& path, std::string& error)
{
    close();
    const int fd = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        error = openFailure(path, errno);
        return false;
    }
    termios tio{};
    if (::tcgetattr(fd, &tio) != 0) {
        error = path + " is not a serial port: " + reason(errno);
        ::close(fd);
        return false;
    }
    ::cfmakeraw(&tio);
    tio.c_cflag &= ~static_cast<tcflag_t>(CSIZE | PARENB | CSTOPB | CRTSCTS);
    tio.c_cflag |= CS8 | CLOCAL | CREAD;
    tio.c_iflag &= ~static_cast<tcflag_t>(IXON | IXOFF | IXANY);
    tio.c_cc[VMIN] = 0;
    tio.c_cc[VTIME] = 0;
    if (::cfsetispeed(&tio, B115200) != 0 || ::cfsetospeed(&tio, B115200) != 0 || ::tcsetattr(fd, TCSANOW, &tio) != 0) {
        error = "cannot set 115200 8N1 on " + path + ": " + reason(errno);
        ::close(fd);
        return false;
    }
    ::tcflush(fd, TCIOFLUSH);
    fd_ = fd;
    return true;
}

void PosixSerial::close()
{
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
}

bool PosixSerial::write(std::span<const uint8_t> bytes, std::string& error)
{
    if (fd_ < 0) {
        error = "port not open";
        return false;
    }
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(fd_, bytes.data() + done, bytes.size() - done);
        if (n >= 0) {
            done += static_cast<std::size_t>(n);
            continue;
        }
        if (errno == EINTR) continue;
        if (errno != EAGAIN && errno != EWOULDBLOCK) {
            const int err = errno;
            error = hungUp(fd_) ? kHungUp : reason(err);
            return false;
        }
        // The line is busy: wait for room, but never forever.
        pollfd p{fd_, POLLOUT, 0};
        const int r = ::poll(&p, 1, 1000);
        if (r == 0) {
            error = "write timed out";
            return false;
        }
        if (r < 0 && errno != EINTR) {
            error = reason(errno);
            return false;
        }
        if (r > 0 && (p.revents & (POLLERR | POLLHUP | POLLNVAL))) {
            error = (p.revents & POLLHUP) ? kHungUp : "the line failed";
            return false;
        }
    }
    return true;
}

bool PosixSerial::read(std::vector<uint8_t>& out, int timeoutMs, std::string& error)
{
    if (fd_ < 0) {
        error = "port not open";
        return false;
    }
    pollfd p{fd_, POLLIN, 0};
    int r;
    do {
        r = ::poll(&p, 1, std::max(timeoutMs, 0));
    } while (r < 0 && errno == EINTR);
    if (r < 0) {
        error = reason(errno);
        return false;
    }
    if (r == 0) return true;
    if (p.revents & POLLIN) {
        uint8_t buf[4096];
        for (;;) {
            const ssize_t n = ::read(fd_, buf, sizeof buf);
            if (n > 0) {
                out.insert(out.end(), buf, buf + n);
                if (static_cast<std::size_t>(n) < sizeof buf) return true;
                continue;
            }
            if (n < 0 && errno == EINTR) continue;
            const int err = n < 0 ? errno : 0;
            const bool hangUp = (p.revents & POLLHUP) || n == 0 || err == EIO;
            if ((err == EAGAIN || err == EWOULDBLOCK) && !(p.revents & POLLHUP)) return true;
            // 0 bytes after a readable poll, EIO, or nothing to read on a line that
            // reports a hang-up: the far end has gone away (a USB adapter unplugged, a
            // pseudo-terminal's master closed).
            error = hangUp ? kHungUp : reason(err);
            return false;
        }
    }
    if (p.revents & (POLLERR | POLLHUP | POLLNVAL)) {
        error = (p.revents & POLLHUP) ? kHungUp : "the line failed";
        return false;
    }
    return true;
}

std::vector<std::string> listSerialPorts()
{
    namespace fs = std::filesystem;
    std::vector<std::string> ports;
    std::error_code ec;
    // A tty backed by hardware has a device with a driver; virtual consoles and
    // pseudo-terminals have none. The 8250 driver also lists every legacy UART slot the
    // kernel reserves; those with no chip behind them report type 0 and are left out,
    // so they do not push USB adapters past the limit.
    for (const auto& entry : fs::directory_iterator("/sys/class/tty", ec)) {
        std::error_code e2;
        if (!fs::exists(entry.path() / "device" / "driver", e2)) continue;
        if (FILE* f = std::fopen((entry.path() / "type").c_str(), "r")) {
            int type = -1;
            const int got = std::fscanf(f, "%d", &type);
            std::fclose(f);
            if (got == 1 && type == 0) continue;
        }
        ports.push_back("/dev/" + entry.path().filename().string());
    }
    // Name order, with the trailing number compared as a number (ttyS2 before ttyS10).
    auto split = [](const std::string& s) {
        std::size_t i = s.size();
        while (i > 0 && std::isdigit(static_cast<unsigned char>(s[i - 1]))) --i;
        const long n = i < s.size() ? std::stol(s.substr(i, 9)) : -1;
        return std::make_pair(s.substr(0, i), n);
    };
    std::sort(ports.begin(), ports.end(),
              [&](const std::string& a, const std::string& b) { return split(a) < split(b); });
    if (ports.size() > 18) ports.resize(18);
    return ports;
}

} // namespace kdx::cli
