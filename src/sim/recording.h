#pragma once
// Recordings of the simulated module: its output bytes over a stretch of simulated
// time, produced as fast as the machine allows, in the raw form the playback reads.
#include "sim/simulator.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string>

namespace kdx::sim {

// Runs `sim` on by `seconds` of simulated time and hands its output to `sink` in
// chunks of at most one simulated second.
void runRecording(Simulator& sim, double seconds, const std::function<void(std::span<const uint8_t>)>& sink);

// Writes a recording of `seconds` to `path`, replacing any file there only once the
// whole recording is written. Returns the byte count, or -1 with a reason in `error`.
long long writeRecording(const SimOptions& options, double seconds, const std::string& path, std::string& error);

} // namespace kdx::sim
