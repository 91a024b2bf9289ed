#pragma once
// The numbers of the tuning graph's latest sweep, and a sweep pinned beside it for
// comparison: the latest is taken when a sweep closes or a tuning file is loaded; the
// pinned one stays, drawn faintly behind the live traces, through gain changes and new
// sweeps until it is unpinned.
#include "tuning/gain_set.h"
#include "tuning/graph_renderer.h"
#include "tuning/sweep_metrics.h"

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kdx {

struct ReviewedSweep {
    std::vector<float> rate, error; // deg/s, deg; sample 0 first
    GainSet gains;                  // the panel's gains when it was taken, or a file's
    SweepMetrics metrics;
};

// One metric as the panel shows it. The texts are empty where there is no value; `change`
// and `summary` need both sweeps ("RMS error 0.210 -> 0.120, -43 %").
struct MetricRow {
    std::string_view caption; // with its unit: "RMS error (°)"
    std::string current, reference, change, summary;
};

class SweepReview {
public:
    // The renderer draws the pinned sweep; it must outlive the review.
    explicit SweepReview(GraphRenderer& renderer);
    SweepReview(const SweepReview&) = delete;
    SweepReview& operator=(const SweepReview&) = delete;

    // The latest sweep, copied and measured now; the pinned one is left alone. The
    // latest sweep's buffers are reused, so a repeating capture settles on one allocation.
    void setCurrent(std::span<const float> rate, std::span<const float> error, const GainSet& gains);
    const std::optional<ReviewedSweep>& current() const { return current_; }
    const std::optional<ReviewedSweep>& reference() const { return reference_; }
    // Sweeps taken so far.
    int sweepsTaken() const { return sweepsTaken_; }

    // The latest sweep becomes the reference and the graph is redrawn with it behind the
    // live traces. False, changing nothing, before any sweep was taken.
    bool Pin();
    // Drops the reference and redraws the graph without it.
    void Unpin();

    // Every metric of the panel, in its order.
    std::vector<MetricRow> rows() const;
    // The CSV export of the latest sweep; empty before any.
    std::string csvText() const;

    // Called after every change of the latest or the pinned sweep.
    void setOnChanged(std::function<void()> onChanged) { onChanged_ = std::move(onChanged); }

private:
    void changed();

    GraphRenderer& renderer_;
    std::optional<ReviewedSweep> current_, reference_;
    int sweepsTaken_ = 0;
    std::function<void()> onChanged_;
};

} // namespace kdx
