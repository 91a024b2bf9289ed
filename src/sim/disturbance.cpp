#include "sim/disturbance.h"

#include <cmath>
#include <numbers>

namespace kdx::sim {

namespace {

constexpr double kDeg = std::numbers::pi / 180.0;
// The sway's three components: frequency band (Hz) and share of the peak amplitude.
constexpr struct {
    double loHz, hiHz, share;
} kSwayBands[3] = {
    {0.12, 0.30, 0.55},
    {0.30, 0.60, 0.30},
    {0.60, 1.00, 0.15},
};
constexpr double kTremorLoHz = 8.0, kTremorHiHz = 11.0;
constexpr double kTremorDampingRatio = 0.2;

} // namespace

HandMotion::HandMotion(const HandMotionShape& shape, double stepSeconds, uint64_t seed)
    : random_(seed), dt_(stepSeconds)
{
    for (int k = 0; k < 3; ++k) {
        Sway& s = sway_[static_cast<std::size_t>(k)];
        s.amplitude = shape.swayDeg * kDeg * kSwayBands[k].share * random_.uniform(0.8, 1.2);
        s.omega = 2.0 * std::numbers::pi * random_.uniform(kSwayBands[k].loHz, kSwayBands[k].hiHz);
        const double phase = 2.0 * std::numbers::pi * random_.uniform();
        s.cosPhase = std::cos(phase);
        s.sinPhase = std::sin(phase);
        s.cosStep = std::cos(s.omega * dt_);
        s.sinStep = std::sin(s.omega * dt_);
    }
    // A sinusoid that starts away from zero would jerk the handle at t = 0; the sway
    // is measured from where the hand starts instead.
    for (const Sway& s : sway_) {
        swayOffset_ -= s.amplitude * s.sinPhase;
        swayRate_ += s.amplitude * s.omega * s.cosPhase;
    }

    tremorOmega_ = 2.0 * std::numbers::pi * random_.uniform(kTremorLoHz, kTremorHiHz);
    tremorDamping_ = 2.0 * kTremorDampingRatio * tremorOmega_;
    // x'' + 2 z w x' + w^2 x = q * white noise has variance q^2 / (4 z w^3).
    const double rms = shape.tremorDeg * kDeg;
    tremorDrive_ = rms * std::sqrt(4.0 * kTremorDampingRatio * tremorOmega_ * tremorOmega_ * tremorOmega_);
}

void HandMotion::step()
{
    swayAngle_ = swayOffset_;
    swayRate_ = 0.0;
    for (Sway& s : sway_) {
        // Rotating the phase vector avoids two trigonometric calls per component.
        const double c = s.cosPhase * s.cosStep - s.sinPhase * s.sinStep;
        const double sn = s.sinPhase * s.cosStep + s.cosPhase * s.sinStep;
        s.cosPhase = c;
        s.sinPhase = sn;
        swayAngle_ += s.amplitude * sn;
        swayRate_ += s.amplitude * s.omega * c;
    }
    if ((++steps_ & 4095u) == 0) {
        for (Sway& s : sway_) {
            const double norm = std::sqrt(s.cosPhase * s.cosPhase + s.sinPhase * s.sinPhase);
            s.cosPhase /= norm;
            s.sinPhase /= norm;
        }
    }

    const double noise = random_.normal() * tremorDrive_ / std::sqrt(dt_);
    tremorRate_ += (noise - tremorDamping_ * tremorRate_ - tremorOmega_ * tremorOmega_ * tremorAngle_) * dt_;
    tremorAngle_ += tremorRate_ * dt_;
}

} // namespace kdx::sim
