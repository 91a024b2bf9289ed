// The simulated module behind the serial-port seam, in process: listed beside the real
// ports, streaming telemetry in real time, and answering the program's requests.
#include "link/frame.h"
#include "link/receiver.h"
#include "sim/qt_sim_port.h"

#include <QEventLoop>
#include <QTimer>
#include <gtest/gtest.h>

using namespace kdx;

namespace {

struct Counter : MessageSink {
    int cyclic = 0, relayed = 0, memory = 0, axisMemory = 0, bad = 0;
    void PutCyclicMsg(const MsgView&) override { ++cyclic; }
    void PutCyclicQvaneMsg(const MsgView&) override { ++relayed; }
    void PutMemoryMsg(const MsgView& m) override { memory = m.length(); }
    void PutAxisMemoryMsg(const MsgView& m) override { axisMemory = m.id(); }
    void PutMessageReceived(bool good) override { bad += !good; }
};

void runFor(int ms)
{
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
}

} // namespace

TEST(QtSimPort, SimulatedKdxStreamsAndAnswersAMemoryRead)
{
    QtSimPort port(nullptr);
    const auto names = port.availablePorts();
    ASSERT_EQ(names.size(), 2u);
    EXPECT_EQ(names[0], "Simulated KDX");
    Counter sink;
    Receiver rx(&sink);
    port.onBytes = [&](std::span<const uint8_t> b) { rx.receiveBytes(b); };
    std::string error;
    ASSERT_TRUE(port.open(QtSimPort::KdxName, error));
    runFor(500);
    EXPECT_GE(sink.cyclic, 35); // 100 per second, allowing for a loaded machine
    EXPECT_LE(sink.cyclic, 60);
    const std::vector<uint8_t> read{0x5A, 3, 112, 115};
    ASSERT_TRUE(port.write(read, error));
    runFor(100);
    EXPECT_EQ(sink.memory, 63); // 60 bytes of memory
    EXPECT_EQ(sink.bad, 0);
    port.close();
    const int seen = sink.cyclic;
    runFor(100);
    EXPECT_EQ(sink.cyclic, seen); // a closed port is silent
}

TEST(QtSimPort, SimulatedQVaneRelaysOneAxis)
{
    QtSimPort port(nullptr);
    Counter sink;
    Receiver rx(&sink);
    port.onBytes = [&](std::span<const uint8_t> b) { rx.receiveBytes(b); };
    std::string error;
    ASSERT_TRUE(port.open(QtSimPort::QVaneName, error));
    runFor(200);
    EXPECT_GT(sink.relayed, 0);
    EXPECT_EQ(sink.cyclic, 0);
    const std::vector<uint8_t> read{0x5A, 4, 130, 129, 7}; // relayed read for Roll
    ASSERT_TRUE(port.write(read, error));
    runFor(100);
    EXPECT_EQ(sink.axisMemory, 137);
}
