#pragma once
// The one seam to the serial line. The Qt implementation wraps QSerialPort; tests use an
// in-memory fake; the simulated module is a third implementation.
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace kdx {

class SerialPort {
public:
    virtual ~SerialPort() = default;

    // Names of the ports this machine offers, in the order they are to be listed.
    virtual std::vector<std::string> availablePorts() = 0;
    // Opens `name` at 115200 baud, 8 data bits, no parity, 1 stop bit, no flow control.
    // On failure returns false and puts the reason in `error`.
    virtual bool open(const std::string& name, std::string& error) = 0;
    virtual void close() = 0;
    virtual bool isOpen() const = 0;
    // Writes bytes; on failure returns false and puts the reason in `error`.
    virtual bool write(std::span<const uint8_t> bytes, std::string& error) = 0;
    // Re-applies the line settings ("115200,N,8,1").
    virtual void applySettings() {}

    // Bytes received, in order, delivered on the GUI thread.
    std::function<void(std::span<const uint8_t>)> onBytes;
    // The open port failed underneath us (unplugged adapter, closed far end). The port
    // is already closed when this is called, and it is called once per failure.
    std::function<void(const std::string& reason)> onLost;
};

} // namespace kdx
