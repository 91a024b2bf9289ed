// The model as a user tuning it sees it: gains changed with the gain message, the
// result read from decoded telemetry, seed fixed.
#include "sim/motor_config.h"
#include "sim_harness.h"

#include <gtest/gtest.h>

#include <complex>
#include <numbers>
#include <string>

using namespace kdx;
using namespace kdx::sim;
using namespace kdx::sim::test;

namespace {

struct Axis {
    std::string name;
    bool qvane;
    int index; // motor (direct) or axis (Q-Vane)
};
const Axis kAxes[] = {{"direct motor 0 (tilt)", false, 0}, {"direct motor 1 (roll)", false, 1},
                      {"Q-Vane tilt", true, 0},           {"Q-Vane roll", true, 1},
                      {"Q-Vane pan", true, 2}};

struct Trace {
    std::vector<double> error, rate; // 100 samples per second
};

// Settles for a second, then records 10 s of the axis, with `gains` sent every 40 ms
// as the tuning window does (none: the stored configuration).
Trace record(const Axis& a, const Gains* gains)
{
    SimLink link(options(a.qvane, 7));
    if (a.qvane) link.send(131 + a.index, {});
    link.runSending(11.0, 0.04, [&] {
        if (gains) sendGains(link, a.qvane, a.index, *gains);
    });
    Trace r;
    for (const auto& s : link.cap.cyclic) {
        if (s.t <= 1.005) continue; // the first sample after settling is at 1.01 s
        r.error.push_back(s.error[a.qvane ? 0 : a.index]);
        r.rate.push_back(s.rate[a.qvane ? 0 : a.index]);
    }
    return r;
}

// The strongest frequency of a 100 Hz series, and the share of the power within
// 0.5 Hz of it.
std::pair<double, double> dominant(const std::vector<double>& x)
{
    const std::size_t n = x.size();
    double mean = 0;
    for (double v : x) mean += v / static_cast<double>(n);
    std::vector<double> power(n / 2 + 1, 0.0);
    for (std::size_t f = 1; f <= n / 2; ++f) {
        std::complex<double> acc = 0;
        for (std::size_t i = 0; i < n; ++i)
            acc += (x[i] - mean) * std::polar(1.0, -2 * std::numbers::pi * static_cast<double>(f * i % n) / static_cast<double>(n));
        power[f] = std::norm(acc);
    }
    const std::size_t best = static_cast<std::size_t>(std::max_element(power.begin() + 1, power.end()) - power.begin());
    double band = 0, total = 0;
    for (std::size_t f = 1; f <= n / 2; ++f) (f + 5 >= best && f <= best + 5 ? band : total) += power[f];
    return {static_cast<double>(best) * 100.0 / static_cast<double>(n), band / (band + total)};
}

} // namespace

TEST(SimModel, DefaultConfigurationHoldsTheCameraWithinADegree)
{
    for (const auto& a : kAxes) {
        const Trace r = record(a, nullptr);
        ASSERT_EQ(r.error.size(), 1000u) << a.name;
        double worst = 0;
        for (double e : r.error) worst = std::max(worst, std::abs(e));
        EXPECT_LT(worst, 1.0) << a.name;
        EXPECT_GT(rms(r.error), 0.02) << a.name << ": the hand does disturb it";
    }
}

TEST(SimModel, QuarterPTermAtLeastDoublesTheError)
{
    Gains quarter;
    quarter.p = 25;
    for (const auto& a : kAxes) {
        const double normal = rms(record(a, nullptr).error);
        const double weak = rms(record(a, &quarter).error);
        EXPECT_GE(weak, 2.0 * normal) << a.name << ": " << normal << " -> " << weak;
    }
}

TEST(SimModel, NoDTermWithFourTimesPOscillates)
{
    Gains lively;
    lively.p = 400;
    lively.d = 0;
    for (const auto& a : kAxes) {
        const Trace calm = record(a, nullptr), ringing = record(a, &lively);
        const auto [hz, share] = dominant(ringing.rate);
        EXPECT_GT(share, 0.5) << a.name << " at " << hz << " Hz";
        EXPECT_TRUE(hz > 2.0 && hz < 20.0) << a.name << " at " << hz << " Hz";
        EXPECT_LT(dominant(calm.rate).second, 0.35) << a.name << ": the default has no such peak";
        EXPECT_GT(rms(ringing.rate), 3 * rms(calm.rate)) << a.name;
    }
}

TEST(SimModel, ConfigurationMistakesShowAsAUserWouldSeeThem)
{
    struct Case {
        const char* name;
        std::vector<std::pair<int, uint8_t>> bytes; // motor 0 block offset, value
    };
    const Case cases[] = {
        {"reversed drive runs away", {{16, 0x80}}},
        {"no power cannot hold the camera", {{5, 0}, {7, 0}}},
        {"gain 0 leaves it to friction", {{20, 0}}},
    };
    for (const Case& c : cases) {
        SimLink link(options(false, 7));
        std::vector<uint8_t> image(60);
        for (int m = 0; m < 2; ++m) std::ranges::copy(defaultMotorBlock(m), image.begin() + 30 * m);
        for (const auto& [offset, value] : c.bytes) image[static_cast<std::size_t>(offset)] = value;
        link.send(113, image);
        link.run(3.0);
        double worst = 0;
        for (const auto& s : link.cap.cyclic) worst = std::max(worst, std::abs(static_cast<double>(s.error[0])));
        EXPECT_GT(worst, 5.0) << c.name;
        EXPECT_LT(std::abs(link.cap.cyclic.back().error[1]), 1.0f) << c.name << ": motor 1 is unaffected";
    }
}
