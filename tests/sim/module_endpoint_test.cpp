#include "sim/motor_config.h"
#include "sim/module_endpoint.h"
#include "sim_harness.h"

#include <gtest/gtest.h>

#include <string>

using namespace kdx;
using namespace kdx::sim;
using namespace kdx::sim::test;

namespace {

using Bytes = std::vector<uint8_t>;

Bytes block(int axis)
{
    const MotorBlock b = defaultMotorBlock(axis);
    return {b.begin(), b.end()};
}
Bytes defaultImage()
{
    Bytes image = block(0), m1 = block(1);
    image.insert(image.end(), m1.begin(), m1.end());
    return image;
}
Bytes withVersion(Bytes b)
{
    b.push_back(kFirmwareMajor);
    b.push_back(kFirmwareMinor);
    return b;
}

// Median of P component / error in [from, to), over samples with a readable error.
double pPerDegree(const Capture& cap, double from, double to, int motor = 0)
{
    std::vector<double> r;
    for (const auto& s : cap.cyclic)
        if (s.t >= from && s.t < to && std::abs(s.error[motor]) >= 0.03) r.push_back(s.p[motor] / s.error[motor]);
    if (r.empty()) return 0;
    std::nth_element(r.begin(), r.begin() + static_cast<long>(r.size() / 2), r.end());
    return r[r.size() / 2];
}

} // namespace

TEST(SimProtocol, TelemetryStreamsAtOneHundredPerSecond)
{
    for (bool qvane : {false, true}) {
        SimLink link(options(qvane));
        link.run(2.0);
        const auto& c = link.cap.cyclic;
        ASSERT_EQ(c.size(), 200u) << qvane;
        EXPECT_EQ(link.cap.bad(), 0);
        for (std::size_t k = 1; k < c.size(); ++k) EXPECT_NEAR(c[k].t - c[k - 1].t, 0.01, 1e-9);
        for (const auto& s : c) {
            EXPECT_TRUE(s.volts > 11.5f && s.volts < 12.7f) << s.volts;
            EXPECT_GT(s.power[0], 10.0f) << "the loop holds the camera";
        }
        const auto& last = c.back();
        if (qvane) {
            EXPECT_EQ(last.id, 122);
            EXPECT_EQ(last.axis, 0);
            EXPECT_EQ(last.flags & 0x70, 0x10) << "one input valid: PPM";
        } else {
            EXPECT_EQ(last.id, 121);
            EXPECT_EQ(last.configBits & 8, 0) << "both motors fitted";
            EXPECT_EQ(last.major * 100 + last.minor, 105);
            EXPECT_GT(last.power[1], 10.0f);
        }
    }
}

TEST(SimProtocol, RequestsAreAnsweredAsAModuleWould)
{
    Bytes written = defaultImage();
    written[8] = 32; // motor 0 P term 25 %
    written[30 + 18] = 12;
    Bytes rollWrite = block(1);
    rollWrite[11] = 40;
    Bytes badSum = buildFrame(112, {});
    ++badSum.back();
    Bytes badRelayed = buildFrame(130, {129});
    badRelayed.back() ^= 0x40;

    struct Case {
        std::string name;
        bool qvane;
        std::vector<Bytes> frames;
        std::vector<std::pair<int, Bytes>> replies;
    };
    const std::vector<Case> cases = {
        {"direct read", false, {buildFrame(112, {})}, {{120, defaultImage()}}},
        {"write answered with the new contents",
         false,
         {buildFrame(113, written), buildFrame(112, {})},
         {{120, written}, {120, written}}},
        {"bad checksum", false, {badSum}, {}},
        {"inverted checksum", false, {buildFrame(112, {}, true)}, {}},
        {"read with a payload", false, {buildFrame(112, {0})}, {}},
        {"short write", false, {buildFrame(113, Bytes(59, 0)), buildFrame(112, {})}, {{120, defaultImage()}}},
        {"unknown identifier", false, {buildFrame(200, {1, 2})}, {}},
        {"relayed read is not for a KDX", false, {buildFrame(130, {128})}, {}},
        {"relayed read of pan", true, {buildFrame(130, {130})}, {{138, withVersion(block(2))}}},
        {"relayed write of roll touches only roll",
         true,
         {buildFrame(130, prefixed(132, rollWrite)), buildFrame(130, {128})},
         {{137, withVersion(rollWrite)}, {136, withVersion(block(0))}}},
        {"direct read is not for a Q-Vane", true, {buildFrame(112, {})}, {}},
        {"relayed read with a bad checksum", true, {badRelayed}, {}},
    };
    for (const auto& c : cases) {
        SimLink link(options(c.qvane));
        link.run(0.05);
        for (const auto& f : c.frames) {
            link.sendRaw(f);
            link.run(0.02);
        }
        std::vector<std::pair<int, Bytes>> got;
        for (const auto& r : link.cap.replies) got.emplace_back(r.id, r.payload);
        EXPECT_EQ(got, c.replies) << c.name;
        EXPECT_EQ(link.cap.bad(), 0) << c.name;
        EXPECT_GE(link.cap.cyclic.size(), 5u) << c.name << ": telemetry goes on";
    }
}

TEST(SimProtocol, GainMessagesApplyWhileTheyKeepArriving)
{
    for (bool qvane : {false, true}) {
        // Direct: motor 1. Relayed: roll, selected, reported in entry 0.
        SimLink link(options(qvane));
        if (qvane) link.send(132, {});
        const int entry = qvane ? 0 : 1;
        link.run(1.0);
        Gains quarter;
        quarter.p = 25;
        link.runSending(2.0, 0.04, [&] { sendGains(link, qvane, 1, quarter); }); // the last at 2.96 s
        link.run(1.0);
        const double before = pPerDegree(link.cap, 0.1, 1.0, entry);
        ASSERT_GT(before, 0) << qvane;
        EXPECT_NEAR(pPerDegree(link.cap, 1.2, 3.0, entry) / before, 0.25, 0.03) << qvane;
        EXPECT_NEAR(pPerDegree(link.cap, 3.0, 3.15, entry) / before, 0.25, 0.05) << qvane << ": held 200 ms";
        EXPECT_NEAR(pPerDegree(link.cap, 3.2, 3.6, entry) / before, 1.0, 0.05) << qvane << ": stored gains again";
    }
}

TEST(SimProtocol, TestCommandsDriveTheMotors)
{
    struct Case {
        const char* name;
        bool qvane;
        int axis, entry; // model axis; telemetry entry
        Bytes frame;
        int activeBit; // flag bit reporting the test drive
        bool turns;    // direction test, else released
    };
    const std::vector<Case> cases = {
        {"direct direction, motor 1", false, 1, 1, buildFrame(116, {2, 200, 128}), 0x20, true},
        {"direct off, motor 0", false, 0, 0, buildFrame(116, {4, 200, 128}), 0, false},
        {"relayed direction, pan", true, 2, 0, buildFrame(130, {116, 128 + 32 + 1, 200, 128}), 0x80, true},
    };
    for (const auto& c : cases) {
        SimLink link(options(c.qvane));
        if (c.qvane) link.send(131 + c.axis, {});
        link.run(0.5);
        const double start = link.sim.axisAngle(c.axis);
        link.runSending(2.0, 0.1, [&] { link.sendRaw(c.frame); });
        const auto during = link.cap.cyclic.back();
        const double moved = link.sim.axisAngle(c.axis) - start;
        const int driveBits = c.qvane ? 0x80 : 0x30;
        EXPECT_EQ(during.flags & driveBits, c.activeBit) << c.name;
        if (c.turns) {
            EXPECT_NEAR(during.power[c.entry], 50.0, 0.5) << c.name;
            EXPECT_GT(moved, 30.0) << c.name << ": 200 electrical deg/s on 14 poles is 28.6 deg/s";
        } else {
            EXPECT_EQ(during.power[c.entry], 0.0f) << c.name << ": released";
            EXPECT_GT(std::abs(moved), 10.0) << c.name << ": the released camera tips over";
        }
        if (!c.qvane) {
            EXPECT_LT(std::abs(during.error[1 - c.entry]), 1.0f) << c.name << ": the other motor holds";
        }
        link.run(3.0); // no more repeats: the test lapses and the loop brings the camera back
        EXPECT_EQ(link.cap.cyclic.back().flags & driveBits, 0) << c.name;
        EXPECT_LT(std::abs(link.cap.cyclic.back().error[c.entry]), 1.0f) << c.name;
    }
}

TEST(SimProtocol, SupplySagsUnderLoad)
{
    SimLink link(options(false));
    link.run(0.5);
    const float idle = link.cap.cyclic.back().volts;
    link.runSending(0.5, 0.1, [&] { link.send(116, {3, 0, 255}); }); // both motors, full power
    EXPECT_LT(link.cap.cyclic.back().volts, idle - 0.5f);
}

TEST(SimProtocol, TuningDriveStepsTheSetpointUntilToggledOff)
{
    for (bool qvane : {false, true}) {
        SimLink link(options(qvane));
        const Bytes toggle = qvane ? buildFrame(130, {117, 1 + 128}) : buildFrame(117, {1});
        const int bit = qvane ? 0x80 : 0x10;
        link.run(0.5);
        link.sendRaw(toggle);
        // Direct, tuned as the tool sends it, byte for byte: P 100, I 20, IA 2.5, D 50,
        // G 100, V1 10, V2 20; the 4 degree steps take the power from V1 up to V2.
        link.runSending(2.0, 0.04, [&] {
            if (!qvane) link.send(115, {0, 128, 0, 20, 64, 0, 0, 1, 0, 10, 0, 20, 40});
        });
        double high = 0, low = 0;
        float least = 100, most = 0;
        for (const auto& s : link.cap.cyclic) {
            if (s.t > 1.0 && s.t <= 1.5) high += s.angle[0] / 50.0;
            if (s.t > 2.0 && s.t <= 2.5) low += s.angle[0] / 50.0;
            if (s.t > 0.6) least = std::min(least, s.power[0]), most = std::max(most, s.power[0]);
        }
        EXPECT_NEAR(high, 2.0, 0.3) << qvane;
        EXPECT_NEAR(low, -2.0, 0.3) << qvane;
        EXPECT_NE(link.cap.cyclic.back().flags & bit, 0) << qvane;
        if (!qvane) {
            EXPECT_NEAR(least, 10.0, 0.5) << "static power is V1";
            EXPECT_NEAR(most, 20.0, 1.5) << "dynamic power is V2";
            EXPECT_NEAR(pPerDegree(link.cap, 0.6, 2.5), 64.0, 3.0) << "P 100 %";
        }
        link.sendRaw(toggle);
        link.run(1.0);
        EXPECT_EQ(link.cap.cyclic.back().flags & bit, 0) << qvane;
        EXPECT_LT(std::abs(link.cap.cyclic.back().angle[0]), 1.0f) << qvane;
    }
}

TEST(SimProtocol, BootloaderRestartIsSilentThenStartsFresh)
{
    for (bool qvane : {false, true}) {
        SimLink link(options(qvane));
        // Store an I rate of 33 for motor 0 / tilt; tune motor 0 / pan live.
        Bytes image = qvane ? block(0) : defaultImage();
        image[11] = 33;
        link.send(qvane ? 130 : 113, qvane ? prefixed(131, image) : image);
        const int tuned = qvane ? 2 : 0;
        if (qvane) link.send(133, {});
        link.runSending(0.5, 0.04, [&] { sendGains(link, qvane, tuned, Gains{}); });
        ASSERT_TRUE(link.sim.module().usingTunedGains(tuned));
        const Bytes read = qvane ? buildFrame(130, {128}) : buildFrame(112, {});

        link.cap.replies.clear();
        const double restart = link.sim.now();
        link.sendRaw({0x5A, 0x03, 0xFE, 0x01});
        link.run(1.0);
        link.sendRaw(read); // the bootloader does not answer it
        link.run(3.0);
        double lastBefore = 0, firstAfter = 1e9;
        for (const auto& s : link.cap.cyclic) {
            if (s.t <= restart) lastBefore = s.t;
            else firstAfter = std::min(firstAfter, s.t);
        }
        EXPECT_NEAR(firstAfter - lastBefore, 3.0, 0.011) << qvane;
        EXPECT_TRUE(link.cap.replies.empty()) << qvane;
        EXPECT_FALSE(link.sim.module().usingTunedGains(tuned)) << qvane;
        EXPECT_EQ(link.cap.cyclic.back().axis, qvane ? 0 : -1) << "a fresh Q-Vane reports tilt";
        link.sendRaw(read);
        link.run(0.02);
        ASSERT_EQ(link.cap.replies.size(), 1u) << qvane;
        EXPECT_EQ(link.cap.replies[0].payload[11], 33) << qvane << ": the configuration survives";
    }
}

TEST(SimProtocol, SameSeedGivesTheSameRun)
{
    auto run = [](uint64_t seed) {
        Simulator sim(options(false, seed));
        std::vector<uint8_t> out;
        sim.advance(1.0, out);
        sim.consume(buildFrame(116, {1, 50, 100}));
        sim.advance(1.0, out);
        return out;
    };
    EXPECT_EQ(run(9), run(9));
    EXPECT_NE(run(9), run(10));
}
