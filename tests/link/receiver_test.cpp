#include "core/host_error.h"
#include "link/frame.h"
#include "link/receiver.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace kdx;

namespace {

// Records every call the receiver makes, as "id:len" strings.
struct RecordingSink : MessageSink, LinkLossListener {
    std::vector<std::string> calls;
    int good = 0, bad = 0, losses = 0;
    bool throwOnCyclic = false;
    void PutCyclicMsg(const MsgView& m) override
    {
        calls.push_back("y:" + std::to_string(m.length()));
        if (throwOnCyclic) (void)m[47];
    }
    void PutCyclicQvaneMsg(const MsgView& m) override { calls.push_back("z:" + std::to_string(m.length())); }
    void PutMemoryMsg(const MsgView& m) override { calls.push_back("x:" + std::to_string(m.length())); }
    void PutAxisMemoryMsg(const MsgView& m) override
    {
        calls.push_back("ax" + std::to_string(m.id()) + ":" + std::to_string(m.length()));
    }
    void PutMessageReceived(bool g) override { g ? ++good : ++bad; }
    void PutCommsJustWentBad() override { ++losses; }
};

std::vector<uint8_t> cat(std::initializer_list<std::vector<uint8_t>> parts)
{
    std::vector<uint8_t> out;
    for (const auto& p : parts) out.insert(out.end(), p.begin(), p.end());
    return out;
}

} // namespace

TEST(Receiver, FramingAndResyncRules)
{
    const auto cyclic = buildFrame(121, std::vector<uint8_t>(45, 7));
    const auto memory = buildFrame(120, std::vector<uint8_t>(60, 1));
    struct Case {
        const char* name;
        std::vector<uint8_t> bytes;
        std::vector<std::string> calls;
        int good, bad, errors;
    };
    const std::vector<Case> cases = {
        {"plain cyclic", cyclic, {"y:48"}, 1, 0, 0},
        {"inverted checksum accepted", buildFrame(121, std::vector<uint8_t>(45, 7), true), {"y:48"}, 1, 0, 0},
        {"noise before a frame counts per byte", cat({{1, 2, 3}, cyclic}), {"y:48"}, 1, 0, 3},
        {"stray start byte inside a payload is data", buildFrame(120, std::vector<uint8_t>(60, 0x5A)), {"x:63"}, 1, 0, 0},
        {"stray start byte between frames eats the next", cat({{0x5A}, cyclic}), {}, 0, 0, 0},
        {"length below three abandons, next byte may start", cat({{0x5A, 2}, cyclic}), {"y:48"}, 1, 0, 0},
        {"length zero then start", cat({{0x5A, 0}, memory}), {"x:63"}, 1, 0, 0},
        {"length three carries id and checksum only", {0x5A, 3, 0x70, 0x73}, {}, 1, 0, 0},
        {"bad checksum counted, frame not rescanned", cat({{0x5A, 5, 9, 0x5A, 4, 0}, cyclic}), {"y:48"}, 1, 1, 1},
        {"relayed axis memory", buildFrame(137, std::vector<uint8_t>(32, 3)), {"ax137:35"}, 1, 0, 0},
        {"unknown id good but ignored", buildFrame(200, {1, 2}), {}, 1, 0, 0},
        {"relayed telemetry", buildFrame(122, std::vector<uint8_t>(22, 0)), {"z:25"}, 1, 0, 0},
    };
    for (const auto& c : cases) {
        RecordingSink sink;
        Receiver rx(&sink, &sink);
        rx.receiveBytes(c.bytes);
        EXPECT_EQ(sink.calls, c.calls) << c.name;
        EXPECT_EQ(sink.good, c.good) << c.name;
        EXPECT_EQ(sink.bad, c.bad) << c.name;
        EXPECT_EQ(rx.CommsErrorCount, c.errors) << c.name;
    }
}

// A short cyclic message abandons its handler and leaves the guard held: what follows is
// dropped without a count (or, fed while free, not taken) until the watchdog's tick.
TEST(Receiver, AFaultedHandlerHoldsTheGuardUntilTheWatchdogsTick)
{
    RecordingSink sink;
    sink.throwOnCyclic = true;
    Receiver rx(&sink, &sink);
    const auto faulting = buildFrame(121, std::vector<uint8_t>(10, 0)); // L = 13, reads index 47
    const auto cyclic = buildFrame(121, std::vector<uint8_t>(45, 0));
    EXPECT_EQ(rx.receiveWhileFree(cat({faulting, cyclic})), faulting.size());
    EXPECT_FALSE(rx.CommsGood); // the count and the link state come after the handler
    sink.throwOnCyclic = false;
    rx.receiveBytes(cyclic);
    EXPECT_EQ(rx.receiveWhileFree(cyclic), 0u);
    EXPECT_EQ(sink.calls, std::vector<std::string>{"y:13"});
    EXPECT_EQ(sink.good + sink.bad, 1);
    EXPECT_EQ(rx.CommsErrorCount, 0);
    EXPECT_FALSE(rx.InSync);
    rx.CommsTimeout_Timer();
    EXPECT_EQ(rx.receiveWhileFree(cyclic), cyclic.size());
    EXPECT_EQ(sink.calls.size(), 2u);
    EXPECT_TRUE(rx.GetCommsGood());
}

TEST(Receiver, WatchdogReportsEachLossOnce)
{
    RecordingSink sink;
    Receiver rx(&sink, &sink);
    const auto cyclic = buildFrame(121, std::vector<uint8_t>(45, 0));
    rx.CommsTimeout_Timer();
    EXPECT_EQ(sink.losses, 0); // never good, nothing lost
    rx.receiveBytes(cyclic);
    EXPECT_TRUE(rx.GetCommsGood());
    rx.CommsTimeout_Timer(); // saw a message: stays good
    EXPECT_TRUE(rx.GetCommsGood());
    rx.CommsTimeout_Timer();
    rx.CommsTimeout_Timer();
    EXPECT_FALSE(rx.GetCommsGood());
    EXPECT_EQ(sink.losses, 1);
    // Memory replies do not keep the link good.
    rx.receiveBytes(cyclic);
    rx.CommsTimeout_Timer();
    rx.receiveBytes(buildFrame(120, std::vector<uint8_t>(60, 0)));
    rx.CommsTimeout_Timer();
    EXPECT_EQ(sink.losses, 2);
}

TEST(Receiver, CyclicCountWrapsAt32000)
{
    Receiver rx;
    rx.CyclicMsgCount = 31999;
    rx.receiveBytes(buildFrame(122, std::vector<uint8_t>(22, 0)));
    EXPECT_EQ(rx.CyclicMsgCount, 0);
}

TEST(Frame, SendMessageBytes)
{
    OutMsgBuffer m{};
    m[0] = 3;
    m[1] = 254;
    m[2] = 257;
    EXPECT_EQ(frameBody(m), (std::vector<uint8_t>{3, 0xFE, 0x01}));
    m[0] = 3;
    m[1] = 112;
    putChecksum(m);
    EXPECT_EQ(frameBody(m), (std::vector<uint8_t>{3, 0x70, 0x73}));
    m[0] = 2;
    EXPECT_TRUE(frameBody(m).empty()); // only the start byte goes out
    m[0] = 256;
    EXPECT_THROW(frameBody(m), HostError);
}
