// The tuning guide on the simulated module, seeded and in simulated time: it must find
// gains nearly as good as an exhaustive grid over the same limits, never put a gain
// outside those limits on the wire, and hand the user's gains back at once when stopped.
#include "guide_harness.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

using namespace kdx;
using namespace kdx::test;

namespace {

GainSet factory() { return GainSet{100, 20, 2, 50, 15, 40, 100}; }

GainSet withPD(double p, double d)
{
    GainSet g = factory();
    g.P = static_cast<float>(p);
    g.D = static_cast<float>(d);
    return g;
}

// The settle-and-sweep measurement of one fixed candidate after another on one module,
// as the guide takes them.
std::vector<GuideRow> measureAll(const std::vector<GainSet>& candidates, const GuideSettings& s)
{
    GuideRig rig;
    rig.tuningDrive();
    std::vector<GuideRow> rows;
    const double hold = (s.settleSamples + s.sweepSamples) / 100.0;
    for (const GainSet& g : candidates) {
        rig.panel = g;
        rig.messageOn = true;
        rig.sendGains(g);
        const std::size_t from = rig.samples.size() + static_cast<std::size_t>(s.settleSamples);
        rig.run(nullptr, hold);
        std::vector<float> rate, error;
        for (std::size_t i = from; i < from + static_cast<std::size_t>(s.sweepSamples); ++i) {
            rate.push_back(rig.samples[i].rate[GuideRig::kMotor]);
            error.push_back(rig.samples[i].error[GuideRig::kMotor]);
        }
        rows.push_back(TuningGuide::measure(g, rate, error, s));
    }
    return rows;
}

struct Limits {
    double lo, hi;
    bool log;
};

struct BadStart {
    const char* name;
    double p, d;
    Limits pLimits, dLimits; // twice and half the start; a D of 0 may reach 2 x 2.5 coarse steps
};

const BadStart kBadStarts[] = {
    {"a quarter of the factory P", 25, 50, {12.5, 50, true}, {25, 100, true}},
    {"four times P without D", 400, 0, {200, 800, true}, {0, 50, false}},
    {"far too much D", 100, 400, {50, 200, true}, {200, 800, true}},
};

TEST(TuningGuide, EndsNearTheGridsBestFromEachBadStartWithinItsLimits)
{
    for (const BadStart& b : kBadStarts) {
        SCOPED_TRACE(b.name);
        GuideRig rig;
        rig.tuningDrive();
        rig.run(nullptr, 1.0);
        TuningGuide guide(rig);
        guide.start(withPD(b.p, b.d), false);
        rig.run(&guide, 200.0);
        ASSERT_EQ(guide.state(), GuideState::Finished) << guide.statusText();
        const GuideRow best = *guide.best();

        // The grid: 9 x 9 over the same limits, on the same scales.
        auto at = [](const Limits& r, int k) {
            const double u = k / 8.0;
            return std::round(r.log ? r.lo * std::pow(r.hi / r.lo, u) : r.lo + (r.hi - r.lo) * u);
        };
        std::vector<GainSet> grid;
        for (int i = 0; i <= 8; ++i)
            for (int j = 0; j <= 8; ++j) grid.push_back(withPD(at(b.pLimits, i), at(b.dLimits, j)));
        double lowest = 1e9;
        GuideRow gbest{};
        for (const GuideRow& r : measureAll(grid, guide.settings()))
            if (r.errorRms < lowest) {
                lowest = r.errorRms;
                gbest = r;
            }
        std::printf("%s: guide P %.0f D %.0f err_rms %.3f in %zu sweeps; grid P %.0f D %.0f err_rms %.3f in %zu\n",
                    b.name, best.gains.P, best.gains.D, best.errorRms, guide.rows().size(), gbest.gains.P,
                    gbest.gains.D, lowest, grid.size());
        EXPECT_LE(best.errorRms, 1.15 * lowest);
        for (const WireGains& w : rig.wire) {
            // The message carries P and D in 1/128ths of 100 %.
            EXPECT_GE(w.P, b.pLimits.lo - 0.4);
            EXPECT_LE(w.P, b.pLimits.hi + 0.4);
            EXPECT_GE(w.D, b.dLimits.lo - 0.4);
            EXPECT_LE(w.D, b.dLimits.hi + 0.4);
        }
    }
}

} // namespace

// Every way the guide stops early puts the user's gains back on the wire at once, then
// leaves the gain message as the user had it: running on those gains, or silent so the
// module returns to its configuration.
TEST(TuningGuide, EveryStopPutsTheUsersGainsBackAtOnce)
{
    enum class Event { UserStop, LinkCut, None };
    struct Case {
        const char* name;
        GainSet start;
        bool messageOn;
        GuideSettings settings;
        Event event; // at 9 s, mid-sweep of the second candidate; None: the guide stops itself
        GuideStop expected;
    };
    GuideSettings pOnly;
    pOnly.gains = {Gain::P};
    pOnly.maxFactor = 3; // from P 150 without D, more P rings hard
    GuideSettings tightError;
    tightError.errorLimitFactor = 1.05; // a quarter-P start does better at once, the first step down worse
    const Case cases[] = {
        {"user stop, gain message was off", factory(), false, {}, Event::UserStop, GuideStop::User},
        {"user stop, gain message was on", factory(), true, {}, Event::UserStop, GuideStop::User},
        {"link cut mid-sweep", withPD(25, 50), true, {}, Event::LinkCut, GuideStop::LinkLost},
        {"ringing past the hard limit", withPD(150, 0), false, pOnly, Event::None, GuideStop::Ringing},
        {"error above the limit", factory(), false, tightError, Event::None, GuideStop::ErrorRise},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        GuideRig rig;
        rig.tuningDrive();
        rig.panel = c.start;
        rig.messageOn = c.messageOn;
        rig.run(nullptr, 1.0);
        TuningGuide guide(rig, c.settings);
        guide.start(c.start, c.messageOn);
        const double t0 = rig.link.sim.now();
        double stoppedAt = -1, cutAt = -1;
        rig.run(&guide, 200.0, [&] {
            const double t = rig.link.sim.now() - t0;
            if (c.event == Event::UserStop && t >= 9.0 && guide.running()) guide.stop();
            if (c.event == Event::LinkCut && t >= 9.0 && cutAt < 0) {
                rig.deliver = false;
                cutAt = t;
            }
            // The link watchdog's loss call, 500 ms after the last telemetry.
            if (cutAt >= 0 && t >= cutAt + 0.5) guide.linkLost();
            if (stoppedAt < 0 && !guide.running()) stoppedAt = rig.link.sim.now();
        });
        ASSERT_EQ(guide.stopReason(), c.expected) << guide.statusText();
        ASSERT_GE(stoppedAt, 0);
        // The first gain message from the stop on carries the start, within one period,
        bool first = true;
        for (const WireGains& w : rig.wire) {
            if (w.t < stoppedAt - 1e-9) continue;
            if (first) {
                EXPECT_LE(w.t - stoppedAt, 0.04);
            }
            first = false;
            EXPECT_NEAR(w.P, c.start.P, 0.4);
            EXPECT_NEAR(w.D, c.start.D, 0.4);
        }
        EXPECT_FALSE(first) << "nothing was sent after the stop";
        // and the gain message goes on (on those gains) only if the user had it on.
        const double last = rig.wire.back().t;
        EXPECT_EQ(rig.messageOn, c.messageOn);
        if (c.messageOn) {
            EXPECT_GT(last, stoppedAt + 1.0);
        } else {
            EXPECT_LE(last, stoppedAt + 1e-9);
        }
    }
}
