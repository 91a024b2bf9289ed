#include "tuning/sweep_metrics.h"

#include "tuning/fft_power.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace kdx {

namespace {

constexpr double kDt = 1.0 / kSweepSamplesPerSecond;
constexpr int kMinSpectrumSamples = 4;
constexpr double kShareBandHz = 0.5;
constexpr double kShareBandBins = 2.0; // the Hann window's main lobe, either side
constexpr double kRingingShare = 0.5;
constexpr double kRingingMinHz = 2.0;

constexpr double kStepJumpDeg = 2.0;
constexpr int kMinStepSamples = 30;
constexpr int kFinalFraction = 5; // e_final: the mean over the last fifth of a step
constexpr double kRiseFrom = 0.1, kRiseTo = 0.9;
constexpr double kSettleBand = 0.05;

double rms(std::span<const float> x)
{
    double sum = 0;
    for (float v : x) sum += static_cast<double>(v) * v;
    return x.empty() ? 0.0 : std::sqrt(sum / static_cast<double>(x.size()));
}

// The Hann window over n samples, kept for the next sweep of the same length.
const std::vector<double>& hannWindow(std::size_t n)
{
    thread_local std::vector<double> window;
    if (window.size() != n) {
        window.resize(n);
        const double radiansPerSample = 2.0 * std::numbers::pi / static_cast<double>(n - 1);
        for (std::size_t i = 0; i < n; ++i) window[i] = 0.5 - 0.5 * std::cos(radiansPerSample * static_cast<double>(i));
    }
    return window;
}

// The dominant frequency of the rate and the share of the power around it.
void findDominant(std::span<const float> rate, SweepMetrics& m)
{
    const std::size_t n = rate.size();
    if (n < kMinSpectrumSamples) return;
    double mean = 0;
    for (float v : rate) mean += v;
    mean /= static_cast<double>(n);
    const std::vector<double>& window = hannWindow(n);
    std::vector<double> x(n);
    for (std::size_t i = 0; i < n; ++i) x[i] = (rate[i] - mean) * window[i];
    const std::vector<double> power = powerSpectrum(x);
    const std::size_t bins = power.size(); // M/2 + 1
    const double hzPerBin = kSweepSamplesPerSecond / static_cast<double>(2 * (bins - 1));

    std::size_t best = 1;
    double total = 0;
    for (std::size_t k = 1; k < bins; ++k) {
        total += power[k];
        if (power[k] > power[best]) best = k;
    }
    if (!(total > 0) || !(power[best] > 0)) return;

    double offset = 0;
    if (best + 1 < bins && power[best - 1] > 0 && power[best + 1] > 0) {
        const double a = std::log(power[best - 1]), b = std::log(power[best]), c = std::log(power[best + 1]);
        const double curve = a - 2 * b + c;
        if (curve < 0) offset = std::clamp(0.5 * (a - c) / curve, -0.5, 0.5);
    }
    const double hz = (static_cast<double>(best) + offset) * hzPerBin;
    const double band = std::max(kShareBandHz, kShareBandBins * kSweepSamplesPerSecond / static_cast<double>(n));
    double near = 0;
    for (std::size_t k = 1; k < bins; ++k)
        if (std::abs(static_cast<double>(k) * hzPerBin - hz) <= band) near += power[k];
    m.dominantHz = hz;
    m.dominantShare = near / total;
    m.ringing = m.dominantShare >= kRingingShare && hz >= kRingingMinHz;
}

// Time (in samples from `from`) at which f first reaches `level`, interpolated.
std::optional<double> firstReach(const std::vector<double>& f, double level)
{
    for (std::size_t j = 1; j < f.size(); ++j)
        if (f[j] >= level) return static_cast<double>(j - 1) + (level - f[j - 1]) / (f[j] - f[j - 1]);
    return std::nullopt;
}

struct OneStep {
    double overshoot;
    std::optional<double> rise, settling; // seconds
};

// The response of the step that starts at sample `k` and runs for `length` samples.
std::optional<OneStep> stepResponse(std::span<const float> error, std::size_t k, std::size_t length)
{
    const std::size_t tail = std::max<std::size_t>(1, length / kFinalFraction);
    double final = 0;
    for (std::size_t i = k + length - tail; i < k + length; ++i) final += error[i];
    final /= static_cast<double>(tail);
    const double start = error[k];
    const double travel = start - final;
    if (std::abs(travel) < kStepJumpDeg / 2) return std::nullopt; // the angle never followed

    std::vector<double> f(length);
    for (std::size_t j = 0; j < length; ++j) f[j] = (start - error[k + j]) / travel;

    OneStep s{};
    s.overshoot = std::max(0.0, *std::max_element(f.begin(), f.end()) - 1.0) * 100.0;
    const auto from = firstReach(f, kRiseFrom), to = firstReach(f, kRiseTo);
    if (from && to) s.rise = (*to - *from) * kDt;
    std::size_t last = length; // the last sample outside the band
    for (std::size_t j = length; j-- > 0;) {
        if (std::abs(f[j] - 1.0) > kSettleBand) {
            last = j;
            break;
        }
    }
    if (last + 1 < length) {
        const double out = std::abs(f[last] - 1.0), in = std::abs(f[last + 1] - 1.0);
        s.settling = (static_cast<double>(last) + (out - kSettleBand) / (out - in)) * kDt;
    } else if (last == length) {
        s.settling = 0.0;
    }
    return s;
}

// The median of the values; an absent value counts as larger than any present one, and
// a median that falls on one is absent.
std::optional<double> median(std::vector<std::optional<double>> v)
{
    std::ranges::sort(v, [](const auto& a, const auto& b) { return a && (!b || *a < *b); });
    const std::size_t n = v.size();
    const auto& lo = v[(n - 1) / 2];
    const auto& hi = v[n / 2];
    if (!lo || !hi) return std::nullopt;
    return 0.5 * (*lo + *hi);
}

void findSteps(std::span<const float> rate, std::span<const float> error, SweepMetrics& m)
{
    std::vector<std::size_t> starts;
    for (std::size_t k = 1; k < error.size(); ++k) {
        const double moved = -0.5 * (static_cast<double>(rate[k]) + rate[k - 1]) * kDt;
        if (std::abs(static_cast<double>(error[k]) - error[k - 1] - moved) >= kStepJumpDeg) starts.push_back(k);
    }
    std::vector<std::optional<double>> overshoot, rise, settling;
    for (std::size_t i = 0; i < starts.size(); ++i) {
        const std::size_t end = i + 1 < starts.size() ? starts[i + 1] : error.size();
        const std::size_t length = end - starts[i];
        if (length < kMinStepSamples) continue;
        if (const auto s = stepResponse(error, starts[i], length)) {
            overshoot.emplace_back(s->overshoot);
            rise.push_back(s->rise);
            settling.push_back(s->settling);
        }
    }
    if (overshoot.empty()) return;
    StepResponse r;
    r.steps = static_cast<int>(overshoot.size());
    r.overshootPercent = *median(overshoot);
    r.riseSeconds = median(rise);
    r.settlingSeconds = median(settling);
    m.step = r;
}

} // namespace

SweepMetrics analyseSweep(std::span<const float> rate, std::span<const float> error)
{
    const std::size_t n = std::min(rate.size(), error.size());
    rate = rate.first(n);
    error = error.first(n);
    SweepMetrics m;
    m.samples = static_cast<int>(n);
    m.errorRms = rms(error);
    m.rateRms = rms(rate);
    for (float e : error) m.errorPeak = std::max(m.errorPeak, std::abs(static_cast<double>(e)));
    findDominant(rate, m);
    findSteps(rate, error, m);
    return m;
}

} // namespace kdx
