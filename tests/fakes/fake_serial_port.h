#pragma once
// An in-memory serial port: records writes, delivers bytes in any chunking, fails an
// open or a write on request, stalls writes, and unplugs. Bytes delivered to a closed
// port fail the test: no port hands the program data it has not opened.
#include "platform/serial_port.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace kdx::test {

class FakeSerialPort : public SerialPort {
public:
    std::vector<std::string> ports{"/dev/ttyUSB0", "/dev/ttyUSB1"};
    std::set<std::string> refuse; // names whose open fails
    std::string refuseReason = "Permission denied";
    bool failWrites = false;
    bool unplugOnWrite = false; // the adapter is pulled out during the next write
    // Writes are taken but go no further (a flow-controlled or hung device) until
    // releaseStalled(); `stalled` holds them.
    bool stallWrites = false;
    std::vector<uint8_t> stalled;
    std::string openName;
    std::vector<uint8_t> written;
    int opens = 0, closes = 0, settingsApplied = 0;

    // What the system tells of a listed port beyond its path (adapter description,
    // serial number, USB ids).
    std::map<std::string, PortIdentity> identities;

    std::vector<std::string> availablePorts() override { return ports; }
    std::vector<PortIdentity> describePorts() override
    {
        std::vector<PortIdentity> out;
        for (const std::string& p : ports) {
            const auto it = identities.find(p);
            out.push_back(it != identities.end() ? it->second : PortIdentity::at(p));
        }
        return out;
    }
    bool open(const std::string& name, std::string& error) override
    {
        if (refuse.count(name) || std::find(ports.begin(), ports.end(), name) == ports.end()) {
            error = refuse.count(name) ? refuseReason : "Device not found";
            return false;
        }
        ++opens;
        openName = name;
        return true;
    }
    void close() override
    {
        if (!openName.empty()) ++closes;
        openName.clear();
    }
    bool isOpen() const override { return !openName.empty(); }
    bool write(std::span<const uint8_t> bytes, std::string& error) override
    {
        if (std::exchange(unplugOnWrite, false)) unplug();
        if (failWrites || openName.empty()) {
            error = "Input/output error";
            return false;
        }
        std::vector<uint8_t>& to = stallWrites ? stalled : written;
        to.insert(to.end(), bytes.begin(), bytes.end());
        return true;
    }
    // The device takes what it held back.
    void releaseStalled()
    {
        stallWrites = false;
        written.insert(written.end(), stalled.begin(), stalled.end());
        stalled.clear();
    }
    void applySettings() override { ++settingsApplied; }

    // Delivers bytes as the port would, in chunks of `chunk` bytes.
    void deliver(const std::vector<uint8_t>& bytes, std::size_t chunk = 64)
    {
        if (openName.empty()) {
            ADD_FAILURE() << bytes.size() << " bytes delivered to a closed port";
            return;
        }
        for (std::size_t i = 0; i < bytes.size(); i += chunk) {
            const std::size_t n = std::min(chunk, bytes.size() - i);
            if (onBytes) onBytes(std::span<const uint8_t>(bytes.data() + i, n));
        }
    }
    // The adapter is pulled out.
    void unplug(const std::string& reason = "Resource temporarily unavailable")
    {
        ports.erase(std::remove(ports.begin(), ports.end(), openName), ports.end());
        openName.clear();
        if (onLost) onLost(reason);
    }
};

} // namespace kdx::test
