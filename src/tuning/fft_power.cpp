#include "tuning/fft_power.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <complex>
#include <numbers>
#include <utility>

namespace kdx {

namespace {

// e^(-2 pi i k / n) for k < n / 2. One table serves every stage of a transform (stage
// `len` takes every (n / len)-th entry), and it is kept: the spectrum is taken at the end
// of every sweep, at the one size the sweep's length gives.
const std::vector<std::complex<double>>& twiddles(std::size_t n)
{
    thread_local std::size_t madeFor = 0;
    thread_local std::vector<std::complex<double>> table;
    if (madeFor != n) {
        table.resize(n / 2);
        for (std::size_t k = 0; k < n / 2; ++k)
            table[k] = std::polar(1.0, -2.0 * std::numbers::pi * static_cast<double>(k) / static_cast<double>(n));
        madeFor = n;
    }
    return table;
}

// In-place iterative decimation-in-time transform; a.size() is a power of two.
void fft(std::vector<std::complex<double>>& a)
{
    const std::size_t n = a.size();
    for (std::size_t i = 1, j = 0; i < n; ++i) {
        std::size_t bit = n >> 1;
        for (; j & bit; bit >>= 1) j ^= bit;
        j ^= bit;
        if (i < j) std::swap(a[i], a[j]);
    }
    const std::vector<std::complex<double>>& twiddle = twiddles(n);
    for (std::size_t len = 2; len <= n; len <<= 1) {
        const std::size_t half = len / 2, stride = n / len;
        for (std::size_t start = 0; start < n; start += len) {
            for (std::size_t k = 0; k < half; ++k) {
                const std::complex<double> t = twiddle[k * stride] * a[start + k + half];
                a[start + k + half] = a[start + k] - t;
                a[start + k] += t;
            }
        }
    }
}

} // namespace

std::vector<double> powerSpectrum(std::span<const double> x)
{
    const std::size_t m = std::max<std::size_t>(2, std::bit_ceil(x.size()));
    std::vector<std::complex<double>> a(m);
    for (std::size_t i = 0; i < x.size(); ++i) a[i] = x[i];
    fft(a);
    std::vector<double> power(m / 2 + 1);
    for (std::size_t k = 0; k < power.size(); ++k) power[k] = std::norm(a[k]);
    return power;
}

} // namespace kdx
