// The tuning metrics against signals whose answers are known in closed form, and against
// the simulated module, whose ringing frequency comes from its own model.
#include "sim/kdx_model.h"
#include "sim/sim_harness.h"
#include "tuning/sweep_metrics.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <numbers>

using namespace kdx;
using namespace kdx::sim::test;

namespace {

constexpr double kPi = std::numbers::pi;

struct Sampled {
    std::vector<float> rate, error;
};

Sampled sample(int n, const std::function<double(double)>& rate, const std::function<double(double)>& error)
{
    Sampled s;
    for (int k = 0; k < n; ++k) {
        s.rate.push_back(static_cast<float>(rate(k / 100.0)));
        s.error.push_back(static_cast<float>(error(k / 100.0)));
    }
    return s;
}

// The unit step response of a system from rest, and its slope, at t seconds after the step.
struct Response {
    std::function<double(double)> unit, slope;
};

// First order: 10-90 % in tau ln 9, within 5 % after tau ln 20.
Response firstOrder(double tau)
{
    return {[=](double t) { return 1 - std::exp(-t / tau); }, [=](double t) { return std::exp(-t / tau) / tau; }};
}

// Second order: overshoot exp(-pi z / sqrt(1 - z^2)).
Response secondOrder(double zeta, double hz)
{
    const double wn = 2 * kPi * hz, wd = wn * std::sqrt(1 - zeta * zeta), k = zeta / std::sqrt(1 - zeta * zeta);
    return {[=](double t) { return 1 - std::exp(-zeta * wn * t) * (std::cos(wd * t) + k * std::sin(wd * t)); },
            [=](double t) { return wn * wn / wd * std::exp(-zeta * wn * t) * std::sin(wd * t); }};
}

// The response y (deg) to a set point stepping from -2 to +2 degrees at sample 50, as the
// tuning drive does, and, with `alternate`, flipping every 100 samples after that.
// error = set point - y, rate = dy/dt.
Sampled stepSweep(int n, bool alternate, const Response& r)
{
    Sampled s;
    for (int k = 0; k < n; ++k) {
        const int sinceFirst = k - 50;
        double setpoint = -2, y = -2, rate = 0;
        if (sinceFirst >= 0) {
            const int step = alternate ? sinceFirst / 100 : 0;
            const double from = step % 2 == 0 ? -2 : 2, to = -from;
            const double t = (alternate ? sinceFirst % 100 : sinceFirst) / 100.0;
            setpoint = to;
            y = from + (to - from) * r.unit(t);
            rate = (to - from) * r.slope(t);
        }
        s.rate.push_back(static_cast<float>(rate));
        s.error.push_back(static_cast<float>(setpoint - y));
    }
    return s;
}

// The frequency at which the undisturbed model of an axis oscillates by itself under
// `gains`: kicked by a 20 ms set-point step, left 10 s to reach its limit cycle, then
// the payload's upward crossings of its mean angle counted over 10 s at the model's 1 kHz.
double limitCycleHz(sim::AxisKind kind, double pTerm, double dTerm)
{
    sim::AxisPhysics physics = sim::axisPhysics(kind);
    physics.hand = {0, 0};
    sim::KdxAxis axis(physics, 1);
    sim::DriveGains gains;
    gains.pTerm = pTerm;
    gains.dTerm = dTerm;
    axis.setGains(gains);
    axis.setTuningDrive(true);
    std::vector<double> angle;
    for (int i = 0; i < 20000; ++i) {
        if (i == 20) axis.setTuningDrive(false);
        axis.step(12.6);
        if (i >= 10000) angle.push_back(axis.angleDeg());
    }
    double mean = 0;
    for (double a : angle) mean += a / static_cast<double>(angle.size());
    std::vector<double> crossings;
    for (std::size_t i = 1; i < angle.size(); ++i)
        if (angle[i - 1] < mean && angle[i] >= mean)
            crossings.push_back(static_cast<double>(i - 1) + (mean - angle[i - 1]) / (angle[i] - angle[i - 1]));
    if (crossings.size() < 2) return 0;
    return static_cast<double>(crossings.size() - 1) / ((crossings.back() - crossings.front()) / 1000.0);
}

sim::AxisKind kindOf(const Axis& a)
{
    return static_cast<sim::AxisKind>(a.index); // motor 0 tilt, motor 1 roll; Q-Vane tilt, roll, pan
}

} // namespace

TEST(SweepMetrics, TonesGiveTheirFrequencyShareAndRms)
{
    // Rates with a whole number of half cycles: their mean square is exactly A^2 / 2,
    // and each tone sits midway between two of the spectrum's 100/N Hz bins.
    struct Case {
        const char* name;
        int n;
        std::function<double(double)> rate, error;
        double hz, share, rateRms, errorRms, errorPeak;
        bool ringing;
    };
    const auto tone = [](double a, double f) { return [=](double t) { return a * std::sin(2 * kPi * f * t); }; };
    const Case cases[] = {
        {"10 s sweep, 4.85 Hz", 1000, tone(20, 4.85), [](double t) { return -0.5 * std::cos(2 * kPi * 2 * t); }, 4.85,
         1.0, 20 / std::sqrt(2.0), 0.5 / std::sqrt(2.0), 0.5, true},
        {"4 s sweep, 7.125 Hz with 0.25 Hz bins", 400, tone(8, 7.125),
         [](double t) { return -0.3 + 0.4 * std::cos(2 * kPi * 2 * t); }, 7.125, 1.0, 8 / std::sqrt(2.0),
         std::sqrt(0.09 + 0.08), 0.7, true},
        {"60 s sweep, 6001 samples", 6001, tone(3, 300.5 / 60.01), [](double) { return 0.0; }, 300.5 / 60.01, 1.0,
         3 / std::sqrt(2.0), 0, 0, true},
        {"an offset of 50 deg/s is not a frequency", 1000, [](double t) { return 50 + 10 * std::sin(2 * kPi * 3 * t); },
         [](double) { return 0.25; }, 3, 1.0, std::sqrt(2550.0), 0.25, 0.25, true},
        {"the hand's slow sway does not ring", 1000, tone(10, 0.55), [](double) { return 0.0; }, 0.55, 1.0,
         10 / std::sqrt(2.0), 0, 0, false},
        {"three tones: the loudest dominates with 100/245 of the power", 1000,
         [&](double t) { return tone(10, 3.05)(t) + tone(9, 6.15)(t) + tone(8, 9.25)(t); }, [](double) { return 0.0; },
         3.05, 100.0 / 245, std::sqrt(245.0 / 2), 0, 0, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const Sampled s = sample(c.n, c.rate, c.error);
        const SweepMetrics m = analyseSweep(s.rate, s.error);
        EXPECT_EQ(m.samples, c.n);
        ASSERT_TRUE(m.dominantHz);
        EXPECT_NEAR(*m.dominantHz, c.hz, 0.02);
        EXPECT_NEAR(m.dominantShare, c.share, 0.02);
        EXPECT_EQ(m.ringing, c.ringing);
        EXPECT_NEAR(m.rateRms, c.rateRms, 1e-3);
        EXPECT_NEAR(m.errorRms, c.errorRms, 1e-3);
        EXPECT_NEAR(m.errorPeak, c.errorPeak, 1e-6);
        EXPECT_FALSE(m.step) << "no set-point step in a smooth sweep";
    }
}

TEST(SweepMetrics, StepResponsesMatchTheirClosedForms)
{
    struct Case {
        const char* name;
        Sampled sweep;
        int steps;
        double overshoot, overshootTolerance;
        std::optional<double> rise, settling; // seconds
    };
    const double tau = 0.1;
    const Case cases[] = {
        {"first order, one step up", stepSweep(300, false, firstOrder(tau)), 1, 0, 0.1, tau * std::log(9.0),
         tau * std::log(20.0)},
        {"first order, the drive's alternate steps", stepSweep(1000, true, firstOrder(tau)), 10, 0, 0.1,
         tau * std::log(9.0), tau * std::log(20.0)},
        // Rise and settling found by solving the response at 1 us steps.
        {"second order, damping 0.5", stepSweep(300, false, secondOrder(0.5, 2)), 1, 16.303, 0.1, 0.13031, 0.42089},
        // Its final value comes from a tail that still swings, hence the wider margin.
        {"damping 0.05 at 5 Hz: still swinging by 15 % after a second", stepSweep(150, false, secondOrder(0.05, 5)), 1,
         85.447, 1.0, std::nullopt, std::nullopt},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const SweepMetrics m = analyseSweep(c.sweep.rate, c.sweep.error);
        ASSERT_TRUE(m.step);
        EXPECT_EQ(m.step->steps, c.steps);
        EXPECT_NEAR(m.step->overshootPercent, c.overshoot, c.overshootTolerance);
        if (c.rise) {
            ASSERT_TRUE(m.step->riseSeconds);
            EXPECT_NEAR(*m.step->riseSeconds, *c.rise, 0.003);
        }
        EXPECT_EQ(m.step->settlingSeconds.has_value(), c.settling.has_value());
        if (c.settling && m.step->settlingSeconds) {
            EXPECT_NEAR(*m.step->settlingSeconds, *c.settling, 0.005);
        }
    }
}

TEST(SweepMetrics, SimulatedGainChangesShowInTheNumbers)
{
    Gains quarterP, fourPNoD;
    quarterP.p = 25;
    fourPNoD.p = 400;
    fourPNoD.d = 0;
    for (const Axis& a : kAxes) {
        SCOPED_TRACE(a.name);
        const auto metrics = [&](const Gains* g, bool drive = false) {
            const Trace t = record(a, g, drive);
            return analyseSweep(t.rate, t.error);
        };
        const SweepMetrics normal = metrics(nullptr), weak = metrics(&quarterP), lively = metrics(&fourPNoD);
        EXPECT_GE(weak.errorRms, 2 * normal.errorRms) << normal.errorRms << " -> " << weak.errorRms;
        EXPECT_FALSE(normal.ringing) << normal.dominantShare << " at " << normal.dominantHz.value_or(0) << " Hz";
        EXPECT_FALSE(weak.ringing);
        EXPECT_TRUE(lively.ringing) << lively.dominantShare;
        EXPECT_GT(lively.rateRms, 3 * normal.rateRms);
        const double own = limitCycleHz(kindOf(a), fourPNoD.p, fourPNoD.d);
        EXPECT_NEAR(lively.dominantHz.value_or(0), own, 0.3);

        // The tuning drive's steps: the factory gains follow briskly and settle; a
        // quarter of the P term, with a quarter of the stiffness, rises at least twice
        // as slowly.
        const SweepMetrics stepped = metrics(nullptr, true), slow = metrics(&quarterP, true);
        ASSERT_TRUE(stepped.step && slow.step);
        EXPECT_EQ(stepped.step->steps, 9);
        EXPECT_LT(stepped.step->overshootPercent, 15);
        ASSERT_TRUE(stepped.step->riseSeconds && slow.step->riseSeconds && stepped.step->settlingSeconds);
        EXPECT_GT(*stepped.step->riseSeconds, 0.03);
        EXPECT_LT(*stepped.step->riseSeconds, 0.15);
        EXPECT_LT(*stepped.step->settlingSeconds, 0.6);
        EXPECT_GE(*slow.step->riseSeconds, 2 * *stepped.step->riseSeconds);
    }
}
