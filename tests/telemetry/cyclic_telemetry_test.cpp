// Rates, errors, PID parts, gains, electrical angle, power and voltage are checked through
// the log lines (log_line_test); this covers the rest of both layouts.
#include "core/host_error.h"
#include "telemetry/cyclic_frames.h"
#include "telemetry/cyclic_telemetry.h"
#include "telemetry/telemetry_log_stream.h"

#include <gtest/gtest.h>

using namespace kdx;
using namespace kdx::test;

TEST(CyclicTelemetry, FieldsOutsideTheLog)
{
    auto m = CyclicBytes::direct().motor(2, {0, 0, 0, 0, 0, 0, 0, -128}).motor(17, {0, 0, 0, 0, 0, 0, 0, 32767});
    m.byte(35, 8).byte(45, 1).byte(46, 5);
    for (int i = 0; i < 7; ++i) m.byte(38 + i, 10 + i);
    const CyclicTelemetry d = decodeCyclicMsg(m.view());
    EXPECT_EQ(d.motor[0].AxisAngle, -1.0f);
    EXPECT_EQ(d.motor[1].AxisAngle, 255.9921875f);
    EXPECT_EQ(d.MotorConfigBits, 8);
    EXPECT_EQ(d.debug, (std::array<uint8_t, 7>{10, 11, 12, 13, 14, 15, 16}));
    EXPECT_EQ(d.VersionMajor * 100 + d.VersionMinor, 105);
    EXPECT_EQ(d.QVaneAxis, 3);
    const CyclicTelemetry r = decodeCyclicQvaneMsg(relayedSample(2).word(16, -256).view());
    EXPECT_EQ(r.motor[0].AxisAngle, -2.0f);
    EXPECT_EQ(r.motor[0].LoggedAngle, 100.0f);
    EXPECT_EQ(r.QVaneAxis, 2);
}

TEST(CyclicTelemetry, FlagBitsOfBothLayouts)
{
    struct Case {
        const char* name;
        bool relayed;
        int axis, flags, switches;
        bool td0, td1, selected;
        std::array<bool, 3> valid;
    };
    const Case cases[] = {
        {"direct switches", false, 0, 0x0F, 15, false, false, false, {}},
        {"direct test drive 0", false, 0, 0x10, 0, true, false, false, {}},
        {"direct test drive 1", false, 0, 0x20, 0, false, true, false, {}},
        {"direct bit 6 is not read", false, 0, 0x40, 0, false, false, false, {}},
        {"direct input valid", false, 0, 0x81, 1, false, false, true, {}},
        {"PPM valid, Tilt reported", true, 0, 0x10, 0, false, false, true, {true, false, false}},
        {"PPM valid, Roll reported", true, 1, 0x10, 0, false, false, false, {true, false, false}},
        {"Spektrum valid, Roll reported", true, 1, 0x20, 0, false, false, true, {false, true, false}},
        {"SBUS valid, Pan reported", true, 2, 0x40, 0, false, false, true, {false, false, true}},
        {"relayed test drive is bit 7", true, 0, 0x85, 5, true, false, false, {}},
    };
    for (const Case& c : cases) {
        auto m = c.relayed ? CyclicBytes::relayed().byte(2, c.axis).byte(20, c.flags)
                           : CyclicBytes::direct().byte(34, c.flags);
        const CyclicTelemetry t = c.relayed ? decodeCyclicQvaneMsg(m.view()) : decodeCyclicMsg(m.view());
        EXPECT_EQ(t.SwitchBits, c.switches) << c.name;
        EXPECT_EQ(t.motor[0].TestDriveActive, c.td0) << c.name;
        EXPECT_EQ(t.motor[1].TestDriveActive, c.td1) << c.name;
        EXPECT_EQ(t.SelectedInputValid, c.selected) << c.name;
        EXPECT_EQ(t.InputValid, c.valid) << c.name;
    }
}

TEST(CyclicTelemetry, LiveValuesKeepWhatAMessageDoesNotCarry)
{
    CyclicTelemetry live = decodeCyclicMsg(CyclicBytes::direct().motor(17, {1280}).byte(35, 2).byte(45, 1).view());
    applyDecoded(live, decodeCyclicQvaneMsg(relayedSample(0).byte(20, 0x70).view()));
    EXPECT_EQ(live.motor[0].LoggedAngle + live.motor[1].AxisRate, 110.0f); // motor 1 stays
    EXPECT_EQ(live.MotorConfigBits * 100 + live.VersionMajor, 201);        // and so do these
    applyDecoded(live, decodeCyclicMsg(CyclicBytes::direct().view()));
    EXPECT_EQ(live.InputValid, (std::array<bool, 3>{true, true, true})); // validities stay
    EXPECT_EQ(live.QVaneAxis + live.TargetIsQVane, 3);
}

TEST(CyclicTelemetry, ShortMessagesAndBadAxesAreRejectedWhole)
{
    struct Case {
        const char* name;
        CyclicBytes msg;
        bool decodes;
    };
    Case cases[] = {
        {"direct without its checksum byte reads it as the minor version", CyclicBytes::direct(47), true},
        {"direct missing the minor version", CyclicBytes::direct(46), false},
        {"direct cut inside motor 1", CyclicBytes::direct(20), false},
        {"relayed without its checksum byte", CyclicBytes::relayed(24), true},
        {"relayed missing a byte", CyclicBytes::relayed(23), false},
        {"relayed axis 3", relayedSample(3), false},
        {"relayed axis 255", relayedSample(255), false},
    };
    for (Case& c : cases) {
        const MsgView v = c.msg.view();
        try {
            (void)(v.id() == 121 ? decodeCyclicMsg(v) : decodeCyclicQvaneMsg(v));
            EXPECT_TRUE(c.decodes) << c.name;
        } catch (const HostError& e) {
            EXPECT_FALSE(c.decodes) << c.name;
            EXPECT_EQ(e.kind(), HostErrorKind::Subscript) << c.name;
        }
    }
    // A rejected message leaves no trace in the live values or the log, though all but
    // its last byte differ from the message before.
    TelemetryLogStream log;
    log.PutCyclicMsg(directSample().view());
    const CyclicTelemetry before = log.live();
    const std::string text = log.text();
    log.PutCyclicMsg(CyclicBytes::direct(46).motor(2, {256, 256, 256, 256, 256, 256, 64, 256}).word(32, 2560).view());
    log.PutCyclicQvaneMsg(relayedSample(3).view());
    EXPECT_EQ(log.live(), before);
    EXPECT_EQ(log.text(), text);
    EXPECT_EQ(log.lines(), 1u);
    EXPECT_EQ(log.undecodable(), 2u);
}
