#pragma once
// Where the link stands, in a form any window (a status bar) can show without knowing
// the Comms Link window: the state, the port it concerns and when that port was lost.
#include <chrono>
#include <string>

namespace kdx {

enum class LinkState {
    NoPort,       // no port open, and none awaited
    Waiting,      // a port is open; no telemetry heard on it yet
    Live,         // a port is open and telemetry comes in
    Lost,         // telemetry stopped on the open port, or a write failed and closed it
    Reconnecting, // the port vanished; it reopens by itself when it comes back
    Playing,      // a recording feeds the receiver; the port's bytes are dropped
};

struct LinkStatus {
    LinkState state = LinkState::NoPort;
    std::string port;   // the open, lost or awaited port's path; empty with NoPort
    int portNumber = 0; // its button's number in the Comms Link window; 0 if none
    // While Playing: the recording's file name and the rate button's caption.
    std::string playbackFile;
    std::string playbackRate;
    // When the link was lost (Lost, Reconnecting); the epoch otherwise.
    std::chrono::system_clock::time_point lostAt{};

    bool operator==(const LinkStatus&) const = default;
};

} // namespace kdx
