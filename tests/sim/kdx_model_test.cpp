// The model as a user tuning it sees it: gains changed with the gain message, the
// result read from decoded telemetry, seed fixed.
#include "sim/motor_config.h"
#include "sim_harness.h"

#include <gtest/gtest.h>

#include <string>

using namespace kdx;
using namespace kdx::sim;
using namespace kdx::sim::test;

TEST(SimModel, DefaultConfigurationHoldsTheCameraWithinADegree)
{
    for (const auto& a : kAxes) {
        const Trace r = record(a, nullptr);
        ASSERT_EQ(r.error.size(), 1000u) << a.name;
        double worst = 0;
        for (float e : r.error) worst = std::max(worst, std::abs(static_cast<double>(e)));
        EXPECT_LT(worst, 1.0) << a.name;
        EXPECT_GT(rms(r.error), 0.02) << a.name << ": the hand does disturb it";
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
