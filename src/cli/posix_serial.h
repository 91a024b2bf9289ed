#pragma once
// A serial line (or pseudo-terminal) for kdxctl, without Qt: raw mode, 115200 baud,
// 8 data bits, no parity, 1 stop bit, no flow control.
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace kdx::cli {

class PosixSerial {
public:
    PosixSerial() = default;
    ~PosixSerial();
    PosixSerial(const PosixSerial&) = delete;
    PosixSerial& operator=(const PosixSerial&) = delete;

    // Opens and configures the device; false with a reason (naming the dialout group
    // when permission is denied) on failure.
    bool open(const std::string& path, std::string& error);
    void close();
    bool isOpen() const { return fd_ >= 0; }
    // Writes all bytes; false with a reason on failure.
    bool write(std::span<const uint8_t> bytes, std::string& error);
    // Waits up to timeoutMs for bytes and appends what arrived. Returns false when the
    // line failed or the far end went away (with a reason), true otherwise (even if
    // nothing arrived).
    bool read(std::vector<uint8_t>& out, int timeoutMs, std::string& error);

private:
    int fd_ = -1;
};

// The serial ports this machine lists (at most 18, in name order).
std::vector<std::string> listSerialPorts();

} // namespace kdx::cli
