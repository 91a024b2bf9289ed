#include "sim/simulator.h"

#include "sim/module_endpoint.h"
#include "sim/sim_random.h"

#include <algorithm>
#include <cmath>

namespace kdx::sim {

struct Simulator::Impl {
    explicit Impl(const SimOptions& o)
        : module(o.qvane ? Role::QVane : Role::Kdx, o.seed),
          noise(o.seed ^ 0x0BADC0DEull),
          noiseRate(std::isfinite(o.noise) ? std::clamp(o.noise, 0.0, 1.0) : 0.0)
    {
    }

    ModuleEndpoint module;
    SimRandom noise;
    double noiseRate;
    double time = 0.0; // simulated seconds asked for so far
    uint64_t corrupted = 0;
};

Simulator::Simulator(const SimOptions& options) : impl_(std::make_unique<Impl>(options)) {}
Simulator::~Simulator() = default;

void Simulator::consume(std::span<const uint8_t> bytes) { impl_->module.receive(bytes); }

void Simulator::advance(double seconds, std::vector<uint8_t>& out)
{
    Impl& s = *impl_;
    const std::size_t start = out.size();
    s.module.flushReplies(out);
    if (std::isfinite(seconds) && seconds > 0) s.time += seconds;
    // A tick runs once the time asked for reaches its end; the small allowance absorbs
    // the rounding of many short advances (a hundred 0.01 s steps are one second).
    const double tick = 1.0 / ModuleEndpoint::kTicksPerSecond;
    while (static_cast<double>(s.module.ticks() + 1) * tick <= s.time + 1e-9) s.module.tick(out);
    if (s.noiseRate > 0) {
        for (std::size_t i = start; i < out.size(); ++i) {
            if (s.noise.uniform() < s.noiseRate) {
                out[i] ^= static_cast<uint8_t>(1 + s.noise.next() % 255); // never leaves the byte as it was
                ++s.corrupted;
            }
        }
    }
}

double Simulator::now() const { return impl_->time; }
const ModuleEndpoint& Simulator::module() const { return impl_->module; }
double Simulator::axisAngle(int axis) const { return impl_->module.axis(axis).angleDeg(); }
uint64_t Simulator::corruptedBytes() const { return impl_->corrupted; }

} // namespace kdx::sim
