#include "config/conversions.h"

#include <gtest/gtest.h>

using namespace kdx;

TEST(Conversions, EdgeValues)
{
    struct Case { const char* name; float got; float want; };
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
