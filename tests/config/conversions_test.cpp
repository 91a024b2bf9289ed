#include "config/conversions.h"

#include <gtest/gtest.h>

using namespace kdx;

TEST(Conversions, EdgeValues)
{
    struct Case {
        const char* name;
        float got;
        float want;
    };
    for (const Case& c : {Case{"angle2 0,128", RawToAngle2(0, 128), -256.0f},
                          {"angle2 255,255", RawToAngle2(255, 255), -0.0078125f},
                          {"voltage 0,1", RawToVoltage(0, 1), 1.0f},
                          {"gain 0,1", RawToGain(0, 1), 100.0f},
                          {"power 128", RawToPowerPerc(128), 50.0f},
                          {"power 255", RawToPowerPerc(255), 99.609375f},
                          {"angle 64,0", RawToAngle(64, 0), 1.0f},
                          {"perc 127,255", RawToPerc(255, 127), 32767.0f / 128},
                          {"direct perc 0,255", RawToDirectPerc(0, 255), -2.0f}})
        EXPECT_FLOAT_EQ(c.got, c.want) << c.name;
}

// The configuration's scaled fields both ways: what the window shows for a count, and
// the count a value shown writes (halves to even).
TEST(Conversions, ScaledFieldsReadAndWriteTheSameCounts)
{
    using namespace layout;
    struct Case {
        const char* name;
        const WordScale& scale;
        int low, high;
        float shown;
    };
    for (const Case& c : {Case{"P 100 %", PTermScale, 128, 0, 100.0f},
                          {"D 60.15625 %", DTermScale, 77, 0, 60.15625f},
                          {"gain 100 %", GainPercScale, 0, 1, 100.0f},
                          {"static -1", StaticPowerScale, 0, 255, -1.0f},
                          {"dynamic 30", DynamicPowerScale, 0, 30, 30.0f}}) {
        EXPECT_FLOAT_EQ(scaledFromImage(c.scale, c.low, c.high), c.shown) << c.name;
        const int32_t count = scaledToImage(c.scale, c.shown);
        EXPECT_EQ(count & 0xFFFF, c.low + 256 * c.high) << c.name;
    }
    EXPECT_EQ(scaledToImage(PTermScale, 60), 77) << "60 % is 76.8 counts";
    EXPECT_EQ(scaledToImage(StaticPowerScale, 2.5 / 256), 2) << "2.5 counts round to even";
}
