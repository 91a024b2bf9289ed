#pragma once
// Serves the simulated module on a new pseudo-terminal, in real time, so that any
// serial program (the tool itself, kdxctl, a terminal emulator) can open the device
// and talk to it as to a module on a serial port.
#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace kdx::sim {

class Simulator;

class PtyBridge {
public:
    struct Stats {
        uint64_t bytesIn = 0;      // from the program on the device
        uint64_t bytesOut = 0;     // to it
        uint64_t bytesDropped = 0; // output nobody read in time (the line overran)
    };

    PtyBridge() = default;
    ~PtyBridge();
    PtyBridge(const PtyBridge&) = delete;
    PtyBridge& operator=(const PtyBridge&) = delete;

    // Creates the pseudo-terminal in raw mode (no echo, no line editing, no character
    // translation). False with a reason on failure.
    bool open(std::string& error);
    // The device path programs open, e.g. /dev/pts/3.
    const std::string& devicePath() const { return path_; }

    // Runs the module against the monotonic clock until `stop` returns true (asked at
    // least every 10 ms and after every signal). Simulated time is set from the time
    // elapsed since the start, never by adding up sleeps, so the 100 Hz telemetry does
    // not drift; bytes from the program are consumed as they arrive and answered at
    // once. False with a reason if the device fails.
    bool serve(Simulator& sim, const std::function<bool()>& stop, std::string& error);

    const Stats& stats() const { return stats_; }

private:
    bool writeAll(const uint8_t* data, std::size_t size, std::string& error);

    int master_ = -1;
    int slave_ = -1; // held open so the device keeps its settings while nobody uses it
    std::string path_;
    Stats stats_;
};

} // namespace kdx::sim
