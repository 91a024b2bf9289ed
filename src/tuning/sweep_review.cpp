#include "tuning/sweep_review.h"

#include "tuning/sweep_export.h"

#include <cmath>

namespace kdx {

namespace {

using Value = std::optional<double> (*)(const SweepMetrics& m);

struct MetricLine {
    std::string_view caption;
    std::string_view name; // in the summary
    std::size_t field;     // in kSweepMetricFields, which formats it
    Value value;
};

std::optional<double> stepValue(const SweepMetrics& m, std::optional<double> StepResponse::*field)
{
    return m.step ? (*m.step).*field : std::nullopt;
}

const MetricLine kMetrics[] = {
    {"RMS error (°)", "RMS error", 1, [](const SweepMetrics& m) -> std::optional<double> { return m.errorRms; }},
    {"Peak error (°)", "Peak error", 2, [](const SweepMetrics& m) -> std::optional<double> { return m.errorPeak; }},
    {"RMS rate (°/s)", "RMS rate", 3, [](const SweepMetrics& m) -> std::optional<double> { return m.rateRms; }},
    {"Frequency (Hz)", "Frequency", 4, [](const SweepMetrics& m) { return m.dominantHz; }},
    {"Power share", "Power share", 5,
     [](const SweepMetrics& m) { return m.dominantHz ? std::optional(m.dominantShare) : std::nullopt; }},
    {"Overshoot (%)", "Overshoot", 8,
     [](const SweepMetrics& m) { return m.step ? std::optional(m.step->overshootPercent) : std::nullopt; }},
    {"Rise (s)", "Rise", 9, [](const SweepMetrics& m) { return stepValue(m, &StepResponse::riseSeconds); }},
    {"Settling (s)", "Settling", 10,
     [](const SweepMetrics& m) { return stepValue(m, &StepResponse::settlingSeconds); }},
};

std::string text(const MetricLine& metric, const std::optional<ReviewedSweep>& s)
{
    if (!s) return {};
    return kSweepMetricFields[metric.field].text(s->metrics).value_or("-");
}

// The change from `before` to `after` as a whole percentage of `before`: "-43 %", "+8 %".
std::string percentChange(double before, double after)
{
    const long change = std::lround((after - before) / std::abs(before) * 100.0);
    return (change > 0 ? "+" : "") + std::to_string(change) + " %";
}

} // namespace

SweepReview::SweepReview(GraphRenderer& renderer) : renderer_(renderer) {}

void SweepReview::setCurrent(std::span<const float> rate, std::span<const float> error, const GainSet& gains)
{
    if (!current_) current_.emplace();
    ReviewedSweep& s = *current_;
    s.rate.assign(rate.begin(), rate.end());
    s.error.assign(error.begin(), error.end());
    s.metrics = analyseSweep(s.rate, s.error);
    s.gains = gains;
    ++sweepsTaken_;
    changed();
}

bool SweepReview::Pin()
{
    if (!current_) return false;
    reference_ = current_;
    renderer_.setReference(reference_->rate, reference_->error);
    renderer_.RedrawTraces();
    changed();
    return true;
}

void SweepReview::Unpin()
{
    reference_.reset();
    renderer_.setReference({}, {});
    renderer_.RedrawTraces();
    changed();
}

std::vector<MetricRow> SweepReview::rows() const
{
    std::vector<MetricRow> rows;
    for (const MetricLine& metric : kMetrics) {
        MetricRow r{metric.caption, text(metric, current_), text(metric, reference_), {}, {}};
        if (current_ && reference_) {
            const auto before = metric.value(reference_->metrics), after = metric.value(current_->metrics);
            if (before && after && *before != 0) r.change = percentChange(*before, *after);
            r.summary = std::string(metric.name) + " " + r.reference + " -> " + r.current;
            if (!r.change.empty()) r.summary += ", " + r.change;
        }
        rows.push_back(std::move(r));
    }
    return rows;
}

std::string SweepReview::csvText() const
{
    if (!current_) return {};
    return sweepCsvText(current_->rate, current_->error, current_->gains, current_->metrics);
}

void SweepReview::changed()
{
    if (onChanged_) onChanged_();
}

} // namespace kdx
