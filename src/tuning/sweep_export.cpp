#include "tuning/sweep_export.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace kdx {

namespace {

using Text = std::optional<std::string>;

Text number(std::optional<double> v, int decimals)
{
    if (!v) return std::nullopt;
    return fixedText(*v, decimals);
}

std::optional<double> stepField(const SweepMetrics& m, std::optional<double> StepResponse::*field)
{
    return m.step ? (*m.step).*field : std::nullopt;
}

void appendFloat(std::string& out, float v)
{
    char buf[32];
    const auto r = std::to_chars(buf, buf + sizeof buf, v);
    out.append(buf, r.ptr);
}

} // namespace

std::string fixedText(double v, int decimals)
{
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.*f", decimals, v);
    return buf;
}

const std::array<MetricField, 11> kSweepMetricFields = {{
    {"samples", [](const SweepMetrics& m) -> Text { return std::to_string(m.samples); }},
    {"err_rms", [](const SweepMetrics& m) { return number(m.errorRms, 3); }},
    {"err_peak", [](const SweepMetrics& m) { return number(m.errorPeak, 3); }},
    {"rate_rms", [](const SweepMetrics& m) { return number(m.rateRms, 2); }},
    {"freq_hz", [](const SweepMetrics& m) { return number(m.dominantHz, 2); }},
    {"share",
     [](const SweepMetrics& m) { return number(m.dominantHz ? std::optional(m.dominantShare) : std::nullopt, 2); }},
    {"ringing", [](const SweepMetrics& m) -> Text { return m.ringing ? "yes" : "no"; }, true},
    {"steps", [](const SweepMetrics& m) -> Text { return std::to_string(m.step ? m.step->steps : 0); }},
    {"overshoot_pct",
     [](const SweepMetrics& m) { return number(m.step ? std::optional(m.step->overshootPercent) : std::nullopt, 1); }},
    {"rise_s", [](const SweepMetrics& m) { return number(stepField(m, &StepResponse::riseSeconds), 3); }},
    {"settle_s", [](const SweepMetrics& m) { return number(stepField(m, &StepResponse::settlingSeconds), 3); }},
}};

std::string sweepCsvText(std::span<const float> rate, std::span<const float> error, const GainSet& gains,
                         const SweepMetrics& metrics)
{
    static constexpr const char* kGainNames[kGainCount] = {"P", "I", "IA", "D", "V1", "V2", "G"};
    std::string out(sweep_export::Mark);
    for (std::size_t g = 0; g < kAllGains.size(); ++g)
        out += std::string(g ? ", " : " ") + kGainNames[g] + " " + fixedText(gains[kAllGains[g]], 2);
    for (std::size_t f = 0; f < kSweepMetricFields.size(); ++f)
        out += std::string(f ? ", " : "; ") + kSweepMetricFields[f].name + " " +
               kSweepMetricFields[f].text(metrics).value_or("-");
    out += "\r\n";
    out += sweep_export::Columns;
    out += "\r\n";
    const std::size_t n = std::min(rate.size(), error.size());
    for (std::size_t i = 0; i < n; ++i) {
        out += fixedText(static_cast<double>(i) / kSweepSamplesPerSecond, 2);
        out += ',';
        appendFloat(out, rate[i]);
        out += ',';
        appendFloat(out, error[i]);
        out += "\r\n";
    }
    return out;
}

} // namespace kdx
