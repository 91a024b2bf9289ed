#pragma once
// The serial port as the wait window tells the user about it, and the way to the window
// where the port is chosen.
#include <string>

namespace kdx {

class PortStatus {
public:
    virtual ~PortStatus() = default;
    // The name of the open port the link listens on; empty when none is open.
    virtual std::string listeningPort() const = 0;
    // Why no port is open: the port last refused and the reason, or that there is none.
    // Empty while a port is open.
    virtual std::string portProblem() const = 0;
    // Brings up the Comms Link window, where the user picks the port.
    virtual void showPortChoice() = 0;
};

} // namespace kdx
