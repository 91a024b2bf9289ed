#pragma once
// The motion of the hand that holds the camera, about one gimbal axis: a slow sway
// (three drifting sinusoids below 1 Hz) plus physiological tremor (white noise through
// a resonance near 9 Hz). Seeded, so a seed repeats the same hand.
#include "sim/sim_random.h"

#include <array>
#include <cstdint>

namespace kdx::sim {

struct HandMotionShape {
    double swayDeg = 4.0;    // peak of the slow sway, degrees
    double tremorDeg = 0.12; // RMS of the tremor, degrees
};

class HandMotion {
public:
    HandMotion(const HandMotionShape& shape, double stepSeconds, uint64_t seed);

    // Moves the hand on by one step of the period given at construction.
    void step();
    double angle() const { return swayAngle_ + tremorAngle_; } // radians
    double rate() const { return swayRate_ + tremorRate_; }    // radians per second

private:
    struct Sway {
        double amplitude; // radians
        double omega;     // radians per second
        double cosPhase, sinPhase;
        double cosStep, sinStep;
    };

    SimRandom random_;
    double dt_;
    std::array<Sway, 3> sway_{};
    double swayOffset_ = 0.0, swayAngle_ = 0.0, swayRate_ = 0.0;
    double tremorOmega_, tremorDamping_, tremorDrive_;
    double tremorAngle_ = 0.0, tremorRate_ = 0.0;
    unsigned steps_ = 0;
};

} // namespace kdx::sim
