#include "core/colour.h"
#include "telemetry/changed_only.h"
#include "telemetry/cyclic_frames.h"
#include "telemetry/live_captions.h"

#include <gtest/gtest.h>

#include <utility>

using namespace kdx;
using namespace kdx::test;

TEST(LiveCaptions, EachLabelUsesItsPattern)
{
    auto m = directSample().motor(2, {-300, 64, 100, -1, 0, 16, 128, 6400}).motor(17, {-1, 1, 3, -3, 1, -32, 0, 0});
    const LiveCaptions c = liveCaptions(decodeCyclicMsg(m.byte(34, 0x11).view()));
    // ElecAngle, AxisRate, AxisError, P, I, D, ExtGain, Power, AxisAngle, TestDrive colour
    EXPECT_EQ(c.motor[0],
              (MotorCaptions{"0", "-2.3", "0.5", "1.56", "-0.02", "0.00", "100%", "50%", "50.0", colours::Green}));
    EXPECT_EQ(c.motor[1],
              (MotorCaptions{"-1", "-0.0", "0.0", "0.05", "-0.05", "0.02", "0%", "OFF", "0.0", colours::LightGrey}));
    EXPECT_EQ(c.Voltagetb, "12.1");
    EXPECT_EQ(c.Switchtb, "On");
    // A power byte of 1 is not zero: it shows as a rounded percentage, not "OFF".
    const LiveCaptions low = liveCaptions(decodeCyclicMsg(CyclicBytes::direct().byte(14, 1).byte(34, 0x0E).view()));
    EXPECT_EQ(low.motor[0].AxisPowertb + low.Switchtb, "0%Off");
}

TEST(LiveCaptions, VersionAndIndicatorsPaintFirstAndOnChangeOnly)
{
    for (auto [major, minor, text] : {std::tuple{1, 5, "1.05"}, {0, 0, "0.00"}, {12, 123, "12.123"}})
        EXPECT_EQ(versionCaption(major, minor), text);
    EXPECT_EQ(validityColour(true), colours::Green);
    EXPECT_EQ(validityColour(false), colours::Red);

    ChangedOnly<std::pair<int, int>> version;
    ChangedOnly<bool> valid;
    struct Step {
        int major, minor;
        bool valid, paintVersion, paintValid;
    };
    for (const Step& s : {Step{1, 5, false, true, true}, // the first refresh always paints
                          {1, 5, false, false, false},
                          {1, 5, true, false, true},
                          {1, 6, true, true, false}}) {
        EXPECT_EQ(version.changed({s.major, s.minor}), s.paintVersion) << s.minor;
        EXPECT_EQ(valid.changed(s.valid), s.paintValid) << s.valid;
    }
    valid.reset();
    EXPECT_TRUE(valid.changed(true));
}
