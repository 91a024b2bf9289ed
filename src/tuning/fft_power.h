#pragma once
// The power spectrum of a sweep, for the tuning metrics.
//
// A small radix-2 FFT of our own: sweeps are at most 6001 samples, zero-padded to the next
// power of two (8192) they transform in well under a millisecond, and kdxcore stays on the
// standard library alone, with no library to ship or licence to carry.
#include <span>
#include <vector>

namespace kdx {

// |X(k)|^2 for k = 0 .. M/2 of the M-point DFT of x, zero-padded to M = the smallest power
// of two at or above x.size() (and at least 2). Bin k is k / M cycles per sample.
std::vector<double> powerSpectrum(std::span<const double> x);

} // namespace kdx
