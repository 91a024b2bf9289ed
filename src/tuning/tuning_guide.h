#pragma once
// Guided tuning: from the user's gains, the guide tries one gain at a time (P and D by
// default), a coarse pass over the whole allowed range and then a fine pass around the
// best value, each a golden-section search on a log scale. Every candidate runs on the
// module through the gain message for a settling time and then one full sweep under
// the same disturbance (the tuning drive's steps, or the hand's own motion), and is
// scored from the sweep metrics. The user's gains go back on the wire the moment
// anything goes wrong, and the guide never writes the module's memory.
//
// A state machine fed by samples, gain-message ticks and the user's or the link's calls:
// no threads, no timers of its own, no waiting, so the Tuning Display, kdxctl and the
// tests run the same code (the tests in simulated time).
#include "tuning/gain_set.h"

#include <optional>
#include <string>
#include <vector>

namespace kdx {

struct GuideSettings {
    std::vector<Gain> gains{Gain::P, Gain::D}; // searched in this order; any of P, I, IA, D
    double maxFactor = 2.0;                    // each gain stays within start / F .. start x F
    int sweepSamples = 400;                    // 400 (4 s) or 1000 (10 s), as the trace durations
    // Samples after each change before the sweep starts: one period of the tuning drive,
    // so that every candidate's sweep meets the drive's steps at the same phase.
    int settleSamples = 200;
    int coarseProbes = 5; // candidates per gain over the whole range
    int fineProbes = 4;   // ... and around the best one
    // Ringing: the share of the rate's power at its dominant frequency, when that lies
    // above kGuideRingingHz. Above ringingShare a candidate scores twice its error. When
    // the ringing part of the rate (its RMS times the root of that share) exceeds
    // ringingHardLimit deg/s, and what the start's own gains rang with, the guide stops.
    double ringingShare = 0.5;
    double ringingHardLimit = 15.0;
    // Overshoot of the tuning drive's steps beyond this many percent adds to the score.
    double overshootAllowance = 20.0;
    // The guide stops when a 2 s stretch of error exceeds this many times the start's.
    double errorLimitFactor = 2.0;
};

constexpr double kGuideRingingHz = 3.0;

// One tried set of gains and what its sweep measured.
struct GuideRow {
    GainSet gains;
    double errorRms = 0, errorPeak = 0; // deg
    double ringing = 0;                 // share 0..1 at the dominant frequency above 3 Hz, else 0
    double ringingRate = 0;             // deg/s RMS of the rate at that frequency
    std::optional<double> overshoot;    // % of a tuning-drive step, when the sweep had steps
    double score = 0;                   // lower is better
};

// The gain message and its enable box, as the guide drives them.
class GuideOutput {
public:
    virtual ~GuideOutput() = default;
    // One gain message with these values, now.
    virtual void sendGains(const GainSet& gains) = 0;
    // Leaves the gain message running (true) or stopped, as the user had it.
    virtual void setGainMessage(bool on) = 0;
};

enum class GuideState { Idle, Running, Finished, Stopped };
enum class GuideStop { None, User, LinkLost, Ringing, ErrorRise };

// The allowed range of one gain, from its starting value.
struct GuideRange {
    double lo, hi;
    bool logScale; // false when the start is 0 and the range begins at 0
};

class TuningGuide {
public:
    TuningGuide(GuideOutput& output, GuideSettings settings = {});

    // Starts from `start` (the panel's values); `gainMessageOn` is whether "Enab" was
    // ticked, restored when the guide ends. The first sweep measures the start itself.
    void start(const GainSet& start, bool gainMessageOn);
    // One telemetry sample of the motor being tuned: rate deg/s, error deg.
    void putSample(float rate, float error);
    // The gain message period (40 ms): sends the candidate while running.
    void gainMsgTick();
    // The user's stop, and the link watchdog's loss call: the start gains go back at once.
    void stop();
    void linkLost();

    GuideState state() const { return state_; }
    GuideStop stopReason() const { return reason_; }
    bool running() const { return state_ == GuideState::Running; }
    // Every measured candidate in the order tried; row 0 is the start.
    const std::vector<GuideRow>& rows() const { return rows_; }
    // The best row so far (the start when nothing beat it); nothing before the first sweep.
    std::optional<GuideRow> best() const;
    // The gains on the wire while running.
    const GainSet& candidate() const { return candidate_; }
    const GainSet& startGains() const { return start_; }
    GuideRange range(Gain g) const;
    const GuideSettings& settings() const { return settings_; }
    // Sweeps the whole search takes, the start's included.
    int plannedSweeps() const;
    // "stopped: link lost" and the like, for the user.
    std::string statusText() const;

    // The score of one sweep's samples under these settings (also used to judge a grid).
    static GuideRow measure(const GainSet& gains, const std::vector<float>& rate, const std::vector<float>& error,
                            const GuideSettings& settings);

private:
    struct Search; // one golden-section pass over one gain
    void beginCandidate(const GainSet& gains);
    void sweepDone();
    void checkBlock();
    void nextCandidate();
    void finish(GuideState state, GuideStop reason);
    GainSet withValue(Gain g, double u) const;
    double toUnit(Gain g, double value) const;

    GuideOutput& out_;
    GuideSettings settings_;
    GuideState state_ = GuideState::Idle;
    GuideStop reason_ = GuideStop::None;
    GainSet start_, candidate_, base_;
    bool gainMessageOn_ = false;
    std::vector<GuideRow> rows_;
    std::vector<float> rate_, error_;
    int seen_ = 0; // samples since the candidate went on
    std::vector<float> blockRate_, blockError_;
    double startRinging_ = 0;

    // The search: which gain, which pass, the golden-section bracket in units 0..1.
    std::vector<Gain> order_; // the gains in the order searched
    int pass_ = -1;           // gains x 2 passes: every gain coarse, then every gain fine
    std::size_t gainIndex_ = 0;
    bool finePass_ = false;
    int probesLeft_ = 0;
    double a_ = 0, b_ = 1, c_ = 0, d_ = 0;
    std::optional<double> fc_, fd_;
    enum class Probe { C, D } probing_ = Probe::C;
};

} // namespace kdx
