#pragma once
// Numbers that judge a sweep of the Tuning Display, so a gain change can be compared
// without reading the graph by eye. Qt-free, so the tuning window and `kdxctl analyse`
// give the same numbers for the same sweep.
//
// A sweep is N samples of axis rate (deg/s) and axis error (deg), 100 per second.
//
//  errorRms      sqrt(mean(error^2)) over all N samples
//  errorPeak     max |error|
//  rateRms       sqrt(mean(rate^2))
//  dominantHz    the strongest frequency of the rate: the rate minus its mean, tapered
//                with a Hann window and zero-padded to a power of two, transformed; the
//                highest bin above 0 Hz is refined by a parabola through the logarithms
//                of the power of it and its two neighbours (exact for the Gaussian-like
//                peak the window gives a sine), so a tone between bins is found to a
//                small fraction of the 100/N Hz resolution
//  dominantShare the fraction (0..1) of that spectrum's power above 0 Hz that lies within
//                0.5 Hz or two resolution steps (100/N Hz each), whichever is wider, of
//                dominantHz: near 1 for a pure tone
//  ringing       dominantShare >= 0.5 at 2 Hz or more: the loop oscillates by itself
//                (the hand's sway is below 1 Hz)
//
// Step response, for a sweep taken while the tuning drive steps the set point:
//  A set-point step shows as a jump in the error that the measured rate does not
//  account for: since error = set point - angle, from one sample to the next the error
//  changes by -(mean of the two rates) * 0.01 s plus any change of the set point. A
//  sample k where that remainder is 2 degrees or more (the drive steps by 4) starts a
//  step; it runs to the next step or to the end of the sweep, and steps shorter than
//  0.3 s are not used. Within a step the response is
//      f(j) = (e[k] - e[k+j]) / (e[k] - e_final),  j = 0, 1, ...
//  the angle's movement since the step as a fraction of its final movement, where
//  e_final is the mean error over the last fifth of the step. Time 0 is sample k, the
//  first one that shows the new set point (so times are late by up to half a sample).
//   overshoot  (max f - 1) * 100 %, 0 when f never passes 1
//   rise       from f first reaching 0.1 to f first reaching 0.9, linearly
//              interpolated between samples
//   settling   from time 0 to the moment after which |f - 1| stays within 0.05,
//              interpolated; a step still outside at its last sample has not settled
//  Each is the median over the steps used, so one step upset by the hand does not
//  decide it; a step without a rise or settling time counts as longer than any other,
//  and a median that falls on such a step is absent.
#include <optional>
#include <span>

namespace kdx {

constexpr double kSweepSamplesPerSecond = 100.0;

struct StepResponse {
    int steps = 0; // set-point steps used
    double overshootPercent = 0;
    std::optional<double> riseSeconds;     // absent when most steps never reached 90 %
    std::optional<double> settlingSeconds; // absent when most steps did not settle
};

struct SweepMetrics {
    int samples = 0;
    double errorRms = 0, errorPeak = 0; // deg
    double rateRms = 0;                 // deg/s
    std::optional<double> dominantHz;   // absent below 4 samples or for a constant rate
    double dominantShare = 0;
    bool ringing = false;
    std::optional<StepResponse> step; // absent without a set-point step
};

// Metrics of samples 0..N-1; rate and error are paired by index and the shorter span
// sets N. Non-finite samples are the caller's to reject.
SweepMetrics analyseSweep(std::span<const float> rate, std::span<const float> error);

} // namespace kdx
