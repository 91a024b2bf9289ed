#pragma once
// Where the link stands, in a form any window (a status bar) can show without knowing
// the Comms Link window: the state, the port it concerns and when that port was lost.
#include <chrono>
#include <string>

namespace kdx {

enum class LinkState {
    NoPort,       // no port open, and none awaited
    Live,         // a port is open and feeds the receiver
    Lost,         // a write failed: the port stays closed until one is selected
    Reconnecting, // the port vanished; it reopens by itself when it comes back
    Playing,      // a recording feeds the receiver; the port's bytes are dropped
};

struct LinkStatus {
    LinkState state = LinkState::NoPort;
    std::string port; // the open, lost or awaited port's path; empty with NoPort
    // When the port was lost (Lost, Reconnecting); the epoch otherwise.
    std::chrono::system_clock::time_point lostAt{};

    bool operator==(const LinkStatus&) const = default;
};

} // namespace kdx
