#include "tuning/tuning_guide.h"

#include "tuning/gain_panel.h"
#include "tuning/sweep_metrics.h"

#include <algorithm>
#include <cmath>

namespace kdx {

namespace {

constexpr double kGolden = 0.6180339887498949;
// The fine pass searches this far either side of the coarse pass's best, in units of
// the whole range (0.15 of a 4:1 range is a factor of 1.23).
constexpr double kFineHalfWidth = 0.15;
// Safety is judged on stretches of this many samples: one period of the tuning drive,
// so each holds one step, as the start's sweep did.
constexpr int kBlockSamples = 200;
// A gain that starts at 0 may rise to the max factor times this many of its coarse steps.
constexpr double kZeroStartSteps = 2.5;

double ringingOf(const SweepMetrics& m)
{
    return m.dominantHz && *m.dominantHz > kGuideRingingHz ? m.dominantShare : 0.0;
}

// How hard the axis rings: the RMS of the rate's ringing part, deg/s.
double ringingRateOf(const SweepMetrics& m) { return std::sqrt(ringingOf(m)) * m.rateRms; }

double rmsOf(const std::vector<float>& x)
{
    double s = 0;
    for (float v : x) s += static_cast<double>(v) * v;
    return x.empty() ? 0.0 : std::sqrt(s / static_cast<double>(x.size()));
}

} // namespace

TuningGuide::TuningGuide(GuideOutput& output, GuideSettings settings) : out_(output), settings_(std::move(settings))
{
    settings_.maxFactor = std::max(1.0, settings_.maxFactor);
    settings_.coarseProbes = std::max(2, settings_.coarseProbes);
    settings_.fineProbes = std::max(2, settings_.fineProbes);
}

GuideRange TuningGuide::range(Gain g) const
{
    const GainEntry& e = gainEntry(g);
    double lo = e.min, hi = e.max;
    if (g == Gain::I) {
        lo = std::max(lo, 0.0); // only the low byte of I travels; the step clamp holds it to 0..255
        hi = std::min(hi, 255.0);
    }
    const double s = start_[g];
    const double f = settings_.maxFactor;
    if (s < e.fineStep) {
        // Nothing to multiply: from 0 up to a few coarse steps, on a straight scale.
        return {std::max(lo, 0.0), std::min(hi, f * kZeroStartSteps * e.coarseStep), false};
    }
    return {std::max(lo, s / f), std::min(hi, s * f), true};
}

double TuningGuide::toUnit(Gain g, double value) const
{
    const GuideRange r = range(g);
    if (r.hi <= r.lo) return 0.0;
    const double u = r.logScale ? std::log(value / r.lo) / std::log(r.hi / r.lo) : (value - r.lo) / (r.hi - r.lo);
    return std::clamp(u, 0.0, 1.0);
}

GainSet TuningGuide::withValue(Gain g, double u) const
{
    const GuideRange r = range(g);
    double v = r.logScale ? r.lo * std::pow(r.hi / r.lo, u) : r.lo + (r.hi - r.lo) * u;
    // Whole units as the step buttons make them (I Angle in sixteenths), kept inside.
    const double step = g == Gain::IA ? gainEntry(g).fineStep : 1.0;
    v = std::clamp(std::round(v / step) * step, r.lo, r.hi);
    GainSet set = base_;
    set[g] = static_cast<float>(v);
    return set;
}

int TuningGuide::plannedSweeps() const
{
    return 1 + static_cast<int>(settings_.gains.size()) * (settings_.coarseProbes + settings_.fineProbes);
}

void TuningGuide::start(const GainSet& start, bool gainMessageOn)
{
    start_ = base_ = start;
    gainMessageOn_ = gainMessageOn;
    rows_.clear();
    state_ = GuideState::Running;
    reason_ = GuideStop::None;
    order_ = settings_.gains;
    pass_ = -1;
    gainIndex_ = 0;
    finePass_ = false;
    probesLeft_ = 0;
    startRinging_ = 0;
    out_.setGainMessage(true); // the guide's candidates travel in the gain message
    beginCandidate(start);
}

void TuningGuide::beginCandidate(const GainSet& gains)
{
    candidate_ = gains;
    seen_ = 0;
    rate_.clear();
    error_.clear();
    blockRate_.clear();
    blockError_.clear();
    out_.sendGains(candidate_); // at once: the module waits for no tick
}

void TuningGuide::gainMsgTick()
{
    if (running()) out_.sendGains(candidate_);
}

void TuningGuide::putSample(float rate, float error)
{
    if (!running()) return;
    ++seen_;
    blockRate_.push_back(rate);
    blockError_.push_back(error);
    if (static_cast<int>(blockRate_.size()) == kBlockSamples) {
        checkBlock();
        blockRate_.clear();
        blockError_.clear();
        if (!running()) return;
    }
    if (seen_ <= settings_.settleSamples) return;
    rate_.push_back(rate);
    error_.push_back(error);
    if (static_cast<int>(rate_.size()) == settings_.sweepSamples) sweepDone();
}

void TuningGuide::checkBlock()
{
    const double ring = ringingRateOf(analyseSweep(blockRate_, blockError_));
    if (rows_.empty()) {
        // The start is what the user was running anyway: it sets the bar, it is not judged.
        startRinging_ = std::max(startRinging_, ring);
        return;
    }
    if (rmsOf(blockError_) > settings_.errorLimitFactor * rows_.front().errorRms)
        finish(GuideState::Stopped, GuideStop::ErrorRise);
    else if (ring > std::max(settings_.ringingHardLimit, startRinging_))
        finish(GuideState::Stopped, GuideStop::Ringing);
}

GuideRow TuningGuide::measure(const GainSet& gains, const std::vector<float>& rate, const std::vector<float>& error,
                              const GuideSettings& settings)
{
    const SweepMetrics m = analyseSweep(rate, error);
    GuideRow row{gains, m.errorRms, m.errorPeak, ringingOf(m), ringingRateOf(m), std::nullopt, 0};
    if (m.step) row.overshoot = m.step->overshootPercent;
    double penalty = 1.0;
    if (row.ringing > settings.ringingShare) penalty += 1.0;
    if (row.overshoot) penalty += std::max(0.0, *row.overshoot - settings.overshootAllowance) / 100.0;
    row.score = row.errorRms * penalty;
    return row;
}

void TuningGuide::sweepDone()
{
    rows_.push_back(measure(candidate_, rate_, error_, settings_));
    const GuideRow& row = rows_.back();
    if (rows_.size() == 1) {
        startRinging_ = std::max(startRinging_, row.ringingRate);
        // A start that rings gets D first: D damps the ringing, while more P without
        // it would only ring harder.
        const auto d = std::find(order_.begin(), order_.end(), Gain::D);
        if (row.ringing > settings_.ringingShare && d != order_.end()) std::rotate(order_.begin(), d, d + 1);
    } else if (row.errorRms > settings_.errorLimitFactor * rows_.front().errorRms) {
        finish(GuideState::Stopped, GuideStop::ErrorRise);
        return;
    } else if (row.ringingRate > std::max(settings_.ringingHardLimit, startRinging_)) {
        finish(GuideState::Stopped, GuideStop::Ringing);
        return;
    }
    nextCandidate();
}

std::optional<GuideRow> TuningGuide::best() const
{
    if (rows_.empty()) return std::nullopt;
    return *std::min_element(rows_.begin(), rows_.end(),
                             [](const GuideRow& x, const GuideRow& y) { return x.score < y.score; });
}

void TuningGuide::nextCandidate()
{
    const std::size_t gains = order_.size();
    if (probesLeft_ > 0) {
        // The probe just measured closes one golden-section step.
        const double f = rows_.back().score;
        if (probing_ == Probe::C) fc_ = f;
        else fd_ = f;
    }
    for (;;) {
        if (probesLeft_ == 0) {
            // Next pass: every gain coarse, then every gain fine, each around the best so far.
            base_ = best()->gains;
            if (++pass_ >= static_cast<int>(2 * gains)) {
                finish(GuideState::Finished, GuideStop::None);
                return;
            }
            gainIndex_ = static_cast<std::size_t>(pass_) % gains;
            finePass_ = pass_ >= static_cast<int>(gains);
            const Gain g = order_[gainIndex_];
            const GuideRange r = range(g);
            if (r.hi <= r.lo) continue; // nothing to search: try the next gain
            if (finePass_) {
                const double u = toUnit(g, base_[g]);
                a_ = std::max(0.0, u - kFineHalfWidth);
                b_ = std::min(1.0, u + kFineHalfWidth);
            } else {
                a_ = 0.0;
                b_ = 1.0;
            }
            c_ = b_ - kGolden * (b_ - a_);
            d_ = a_ + kGolden * (b_ - a_);
            fc_.reset();
            fd_.reset();
            probesLeft_ = finePass_ ? settings_.fineProbes : settings_.coarseProbes;
        }
        const Gain g = order_[gainIndex_];
        --probesLeft_;
        if (!fc_) {
            probing_ = Probe::C;
        } else if (!fd_) {
            probing_ = Probe::D;
        } else if (*fc_ < *fd_) {
            b_ = d_;
            d_ = c_;
            fd_ = fc_;
            c_ = b_ - kGolden * (b_ - a_);
            probing_ = Probe::C;
        } else {
            a_ = c_;
            c_ = d_;
            fc_ = fd_;
            d_ = a_ + kGolden * (b_ - a_);
            probing_ = Probe::D;
        }
        beginCandidate(withValue(g, probing_ == Probe::C ? c_ : d_));
        return;
    }
}

void TuningGuide::stop()
{
    if (running()) finish(GuideState::Stopped, GuideStop::User);
}

void TuningGuide::linkLost()
{
    if (running()) finish(GuideState::Stopped, GuideStop::LinkLost);
}

void TuningGuide::finish(GuideState state, GuideStop reason)
{
    state_ = state;
    reason_ = reason;
    candidate_ = start_;
    // The user's own gains first, then the gain message as it was: left running on
    // them, or stopped so the module returns to its configuration.
    out_.sendGains(start_);
    out_.setGainMessage(gainMessageOn_);
}

std::string TuningGuide::statusText() const
{
    switch (state_) {
    case GuideState::Idle: return "ready";
    case GuideState::Running:
        return "sweep " + std::to_string(rows_.size() + 1) + " of " + std::to_string(plannedSweeps());
    case GuideState::Finished: return "finished";
    case GuideState::Stopped: break;
    }
    switch (reason_) {
    case GuideStop::User: return "stopped by the user; your gains are back";
    case GuideStop::LinkLost: return "stopped: the link was lost; your gains were sent again";
    case GuideStop::Ringing: return "stopped: the axis rang too hard; your gains are back";
    case GuideStop::ErrorRise: return "stopped: the error rose above twice your gains'; your gains are back";
    case GuideStop::None: break;
    }
    return "stopped";
}

} // namespace kdx
