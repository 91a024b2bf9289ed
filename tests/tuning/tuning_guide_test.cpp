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

struct BadStart {
    const char* name;
    double p, d;
};

const BadStart kBadStarts[] = {
    {"a quarter of the factory P", 25, 50},
    {"four times P without D", 400, 0},
    {"far too much D", 100, 400},
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
        rig.run(&guide, 200.0, [&] {});
        for (const GuideRow& r : guide.rows())
            std::printf("  P %6.1f D %6.1f rms %.3f peak %.3f ring %.2f %.1f over %.1f score %.3f\n", r.gains.P, r.gains.D,
                        r.errorRms, r.errorPeak, r.ringing, r.ringingRate, r.overshoot.value_or(-1), r.score);
        std::printf("%s now P %.0f D %.0f\n", guide.statusText().c_str(), guide.candidate().P, guide.candidate().D);
        ASSERT_EQ(guide.state(), GuideState::Finished) << guide.statusText();
        const GuideRow best = *guide.best();

        // The grid: 9 x 9 over the same ranges, on the same scales.
        const GuideRange rp = guide.range(Gain::P), rd = guide.range(Gain::D);
        auto at = [](const GuideRange& r, int k) {
            const double u = k / 8.0;
            return std::round(r.logScale ? r.lo * std::pow(r.hi / r.lo, u) : r.lo + (r.hi - r.lo) * u);
        };
        std::vector<GainSet> grid;
        for (int i = 0; i <= 8; ++i)
            for (int j = 0; j <= 8; ++j) grid.push_back(withPD(at(rp, i), at(rd, j)));
        double lowest = 1e9;
        GuideRow gbest{};
        for (const GuideRow& r : measureAll(grid, guide.settings()))
            if (r.errorRms < lowest) {
                lowest = r.errorRms;
                gbest = r;
            }
        std::printf("%s: guide P %.0f D %.0f rms %.3f (%zu sweeps); grid P %.0f D %.0f rms %.3f (81)\n", b.name,
                    best.gains.P, best.gains.D, best.errorRms, guide.rows().size(), gbest.gains.P, gbest.gains.D,
                    lowest);
        EXPECT_LE(best.errorRms, 1.15 * lowest);
        for (const WireGains& w : rig.wire) {
            EXPECT_GE(w.P, rp.lo - 0.4);
            EXPECT_LE(w.P, rp.hi + 0.4);
            EXPECT_GE(w.D, rd.lo - 0.4);
            EXPECT_LE(w.D, rd.hi + 0.4);
        }
    }
}

} // namespace
