#include "link/comms_quality.h"

#include <gtest/gtest.h>

using namespace kdx;

TEST(CommsQuality, FiftyMessagesATickAreFullAndOneShortStillIs)
{
    struct Case {
        int good;
        float quality;
    };
    const Case cases[] = {{50, 1.0f},  {49, 1.0f}, {51, 1.0f}, {300, 1.0f},
                          {48, 0.96f}, {25, 0.5f}, {1, 0.02f}, {0, 0.0f}};
    CommsQualityCount count;
    for (const Case& c : cases) {
        for (int i = 0; i < c.good; ++i) count.PutMessageReceived(true);
        count.PutMessageReceived(false); // bad messages never count
        EXPECT_FLOAT_EQ(count.tick(), c.quality) << c.good;
        EXPECT_FLOAT_EQ(count.tick(), 0.0f) << "the tick starts the count again";
    }
}

TEST(CommsQuality, TheBadCountRestartsOncePast32760)
{
    CommsQualityCount count;
    count.BadMsgCount = 32760;
    count.PutMessageReceived(false);
    EXPECT_EQ(count.BadMsgCount, 32761);
    count.PutMessageReceived(false);
    EXPECT_EQ(count.BadMsgCount, 0);
    count.PutMessageReceived(true);
    EXPECT_EQ(count.BadMsgCount, 0);
}
