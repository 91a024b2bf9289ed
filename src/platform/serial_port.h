#pragma once
// The one seam to the serial line. The Qt implementation wraps QSerialPort; tests use an
// in-memory fake; the simulated module is a third implementation.
#include <algorithm>
#include <cstdint>
#include <functional>
#include <span>
#include <utility>
#include <string>
#include <vector>

namespace kdx {

// What the system tells of one port: its device path and, for a USB adapter, what the
// adapter says of itself. Empty texts and zero ids where the system knows nothing more.
struct PortIdentity {
    std::string path;         // as opened, e.g. /dev/ttyUSB0 or a symbolic link to it
    std::string description;  // e.g. "FT232R USB UART"
    std::string serialNumber; // the adapter's own, stable across paths and plugs
    uint16_t vendorId = 0;
    uint16_t productId = 0;

    // A port the system knows only by its path.
    static PortIdentity at(std::string path)
    {
        PortIdentity p;
        p.path = std::move(path);
        return p;
    }
    bool hasUsbIds() const { return vendorId != 0 || productId != 0; }
    // Whether an adapter can be recognised at another path than this one.
    bool recognisable() const { return !serialNumber.empty() || hasUsbIds(); }
};

class SerialPort {
public:
    virtual ~SerialPort() = default;

    // Names of the ports this machine offers, in the order they are to be listed.
    virtual std::vector<std::string> availablePorts() = 0;
    // The same ports with what the system knows of each, in the same order.
    virtual std::vector<PortIdentity> describePorts()
    {
        std::vector<PortIdentity> out;
        for (std::string& name : availablePorts()) out.push_back(PortIdentity::at(std::move(name)));
        return out;
    }
    // Whether a device is at `path` now (a symbolic link is followed). A cheap check,
    // made four times a second while a lost port is awaited.
    virtual bool present(const std::string& path)
    {
        const std::vector<std::string> names = availablePorts();
        return std::find(names.begin(), names.end(), path) != names.end();
    }
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
