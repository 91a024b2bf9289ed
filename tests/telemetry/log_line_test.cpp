#include "config/conversions.h"
#include "core/host_numeric.h"
#include "telemetry/cyclic_frames.h"
#include "telemetry/fixed_format.h"
#include "telemetry/log_line.h"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <string>

using namespace kdx;
using namespace kdx::test;

TEST(LogLine, HeaderLines)
{
    EXPECT_EQ(telemetryFileTitles(false), kDirectHeader);
    EXPECT_EQ(telemetryFileTitles(true), kRelayedHeader);
    EXPECT_EQ(telemetryFileTitles(false, "HSL Flags,Gimbal Tilt"),
              "AxisRate0,AxisError0,Pcomp0,Icomp0,Dcomp0,ExtGain0%,ElecAngle0,Power0%,AxisRate1,AxisError1,"
              "Pcomp1,Icomp1,Dcomp1,ExtGain1%,ElecAngle1,Power1%,Voltage,HSL Flags,Gimbal Tilt\r\n");
    EXPECT_EQ(
        telemetryFileTitles(true, "HSL Flags"),
        "Axis,AxisID,AxisAngle,AxisRate,AxisError,Pcomp,Icomp,Dcomp,ExtGain%,ElecAngle,Power%,Voltage,HSL Flags\r\n");
}

TEST(LogLine, DataLines)
{
    const auto relayed = [](int axis) { return decodeCyclicQvaneMsg(relayedSample(axis).view()); };
    CyclicTelemetry noAxis = relayed(0);
    noAxis.QVaneAxis = 3;
    const std::string rl = kRelayedSampleLine;
    struct Case {
        const char* name;
        CyclicTelemetry t;
        std::optional<std::string_view> debug;
        std::string line;
    };
    const Case cases[] = {
        {"direct", decodeCyclicMsg(directSample().view()), std::nullopt, kDirectSampleLine},
        {"direct with debug", decodeCyclicMsg(directSample().view()), "1,2,3",
         "-2.34,0.50,1.56,-0.02,0.00,100,0.3,50,-256.00,255.99,0.05,-0.05,0.02,0,-0.5,100,12.1,1,2,3\r\n"},
        {"negative values rounding to zero keep the sign",
         decodeCyclicMsg(CyclicBytes::direct().word(12, -1).word(32, -1).view()), std::nullopt,
         "0.00,0.00,0.00,0.00,0.00,0,-0.0,0,0.00,0.00,0.00,0.00,0.00,0,0.0,0,-0.0\r\n"},
        {"Tilt", relayed(0), std::nullopt, "Tilt,0," + rl},
        {"Roll", relayed(1), std::nullopt, "Roll,1,100.00,1.00,-0.50,10.00,0.00,0.50,45,5.0,25,11.0\r\n"},
        {"Pan with debug", relayed(2), "7", "Pan,2," + rl.substr(0, rl.size() - 2) + ",7\r\n"},
        {"no known axis: no prefix", noAxis, std::nullopt, rl},
    };
    for (const Case& c : cases) {
        std::string out = "kept|";
        appendTelemetryLogLine(out, c.t, c.debug);
        EXPECT_EQ(out, "kept|" + c.line) << c.name;
    }
}

// The fast formatting must give the host formatter's text for every value a decoder
// can produce, and for anything else.
TEST(LogLine, FastFormattingMatchesTheHostFormatter)
{
    const char* patterns[] = {"###0", "###0.0", "###0.00"};
    int mismatches = 0;
    auto check = [&](double v) {
        for (int d = 0; d < 3; ++d) {
            std::string fast;
            appendFixed(fast, v, d);
            const std::string host = Format(v, patterns[d]);
            if (fast != host && ++mismatches <= 5)
                ADD_FAILURE() << v << " " << patterns[d] << ": " << fast << " vs " << host;
        }
    };
    for (int w = 0; w < 65536; ++w) {
        check(RawToAngle2(w & 255, w >> 8));
        check(RawToAngle(w & 255, w >> 8));
        check(RawToVoltage(w & 255, w >> 8));
    }
    for (int raw = 0; raw < 256; ++raw) check(RawToPowerPerc(raw));
    for (double v : {0.1, -2.675, 1e7, -1.5e9, 123456789.125, 1e-9, std::nan(""), HUGE_VAL}) check(v);
    EXPECT_EQ(mismatches, 0);
}
