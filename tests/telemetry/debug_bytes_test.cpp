#include "telemetry/cyclic_frames.h"
#include "telemetry/debug_bytes.h"
#include "telemetry/log_line.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

using namespace kdx;
using namespace kdx::test;

namespace {
long columns(const std::string& s) { return std::count(s.begin(), s.end(), ',') + 1; }
} // namespace

TEST(DebugBytes, LogColumnsAreDecimalAndMatchTheHeaderInBothModes)
{
    const std::string titles = debugTitles();
    EXPECT_EQ(titles.rfind("Msg Counter,HSL Flags,Gimbal Tilt,", 0), 0u) << titles;
    EXPECT_EQ(columns(titles), static_cast<long>(kDebugByteCount));
    std::string values;
    appendDebugValues(values, {1, 15, 255, 100, 10, 99, 0});
    EXPECT_EQ(values, "1,15,255,100,10,99,0");
    for (bool relayed : {false, true}) {
        const CyclicTelemetry t =
            relayed ? decodeCyclicQvaneMsg(relayedSample(1).view()) : decodeCyclicMsg(directSample().view());
        std::string line;
        appendTelemetryLogLine(line, t, values);
        EXPECT_EQ(columns(telemetryFileTitles(relayed, titles)), columns(line)) << relayed;
        EXPECT_EQ(columns(telemetryFileTitles(relayed)) + static_cast<long>(kDebugByteCount),
                  columns(telemetryFileTitles(relayed, titles)));
    }
}

TEST(DebugBytes, CaptionsShowDecimalAndTwoDigitHex)
{
    struct Case {
        uint8_t value;
        const char* caption;
    };
    for (const Case& c : {Case{0, "0 (0x00)"}, {15, "15 (0x0F)"}, {63, "63 (0x3F)"}, {255, "255 (0xFF)"}})
        EXPECT_EQ(debugValueCaption(c.value), c.caption);
}
