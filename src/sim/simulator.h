#pragma once
// The simulated module: a KDX (two motors) or a Q-Vane with three KDX axes behind it,
// speaking the real protocol. Deterministic for a given seed: the same bytes consumed
// at the same simulated times give the same output.
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace kdx::sim {

class ModuleEndpoint;

struct SimOptions {
    bool qvane = false; // a Q-Vane relaying three KDX axes instead of one direct KDX
    uint64_t seed = 1;
    double noise = 0.0; // fraction of output bytes corrupted (0 .. 1)
};

class Simulator {
public:
    explicit Simulator(const SimOptions& options);
    ~Simulator();
    Simulator(const Simulator&) = delete;
    Simulator& operator=(const Simulator&) = delete;

    // Bytes the tool sent to the module, in order, at the current simulated time.
    void consume(std::span<const uint8_t> bytes);
    // Advances simulated time and appends what the module sends meanwhile to `out`.
    // Replies to consumed requests leave first, at the start of the call.
    void advance(double seconds, std::vector<uint8_t>& out);
    double now() const;

    // For tests and diagnostics: the module as it stands.
    const ModuleEndpoint& module() const;
    // The true payload angle of a motor (direct) or axis (Q-Vane), degrees.
    double axisAngle(int axis) const;
    // Bytes corrupted so far by the noise option.
    uint64_t corruptedBytes() const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace kdx::sim
