#pragma once
// The captured sweep: what the capture side fills and the graph and the tuning files read.
#include "core/host_numeric.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace kdx {

constexpr int kTraceLength = 6001; // indices 0..6000, 100 samples per second
using Trace = std::array<float, kTraceLength>;

struct TraceBuffer {
    Trace RateTrace{};      // channel 0, "Axis Rate"
    Trace ErrorTrace{};     // channel 1, "Axis Error"
    Trace PrevRateTrace{};  // the last completed sweep, erased point by point when
    Trace PrevErrorTrace{}; // the display is not cleared between sweeps
    // Channel 0 and 1 of the first sample of the current sweep, as they arrived.
    std::array<double, 2> SweepStartValues{};
    int16_t SampleIndex = 0;  // where the next sample goes; the newest point's x
    int16_t TraceSamples = 0; // samples per sweep: 400, 1000, 3000 or 6000
    float TraceSeconds = 0;   // the sweep's labelled length: 4, 10, 30 or 60
    bool Capturing = false;   // a sweep is armed and recording
    bool DisplayClear = false;
    // The newest index that holds data to show. A loaded tuning file sets it to its
    // last pair, so that what an earlier sweep left beyond it is neither drawn nor
    // scaled for; it moves up again as new samples are stored.
    int16_t ValidEnd = kTraceLength - 1;

    // The index of the newest valid sample: the one before SampleIndex while a sweep is
    // growing, SampleIndex itself once a sweep has closed (or before any has started).
    int lastCapturedIndex(bool sweepStartPending) const
    {
        if (Capturing && !sweepStartPending && SampleIndex > 0) return SampleIndex - 1;
        return SampleIndex;
    }

    void ClearPrevTraces()
    {
        PrevRateTrace.fill(0.0f);
        PrevErrorTrace.fill(0.0f);
    }

    // Channel 0 is the rate, channel 1 the error; any other channel is a subscript error.
    const Trace& trace(int channel) const
    {
        if (channel != 0 && channel != 1) raiseSubscript();
        return channel == 0 ? RateTrace : ErrorTrace;
    }
};

} // namespace kdx
