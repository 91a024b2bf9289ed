#pragma once
// The simulated module: a KDX (two motors) or a Q-Vane with three KDX axes behind it,
// speaking the real protocol. Deterministic for a given seed.
#include <cstdint>
#include <span>
#include <vector>

namespace kdx::sim {

struct SimOptions {
    bool qvane = false;   // a Q-Vane relaying three KDX axes instead of one direct KDX
    uint64_t seed = 1;
    double noise = 0.0;   // fraction of output bytes corrupted (0 .. 1)
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
    void advance(double seconds, std::vector<uint8_t>& out);
    double now() const;

private:
    struct Impl;
    Impl* impl_;
};

} // namespace kdx::sim
