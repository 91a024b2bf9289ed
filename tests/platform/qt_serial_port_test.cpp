// The Qt serial adapter end to end over a real pseudo-terminal pair: the test holds the
// master side, the adapter opens the slave device like any serial port.
#include "platform/qt_serial_port.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

using namespace kdx;

namespace {

struct PtyPair {
    int master = -1;
    std::string slave;
    PtyPair()
    {
        master = posix_openpt(O_RDWR | O_NOCTTY);
        if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0) return;
        slave = ptsname(master);
    }
    ~PtyPair() { closeMaster(); }
    void closeMaster()
    {
        if (master >= 0) ::close(master);
        master = -1;
    }
};

// Runs the event loop for up to `ms`, or until `done` holds. The loop sleeps while idle,
// so the process's CPU time over a pump measures what the port costs.
void pump(int ms, const std::function<bool()>& done = {})
{
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    QTimer poll;
    if (done) {
        QObject::connect(&poll, &QTimer::timeout, &loop, [&] { if (done()) loop.quit(); });
        poll.start(5);
    }
    loop.exec();
}

double cpuSeconds()
{
    rusage ru{};
    getrusage(RUSAGE_SELF, &ru);
    return ru.ru_utime.tv_sec + ru.ru_stime.tv_sec + (ru.ru_utime.tv_usec + ru.ru_stime.tv_usec) / 1e6;
}

} // namespace

TEST(QtSerialPortPty, BytesTravelBothWaysAndAClosedFarEndIsOneLossWithoutSpinning)
{
    PtyPair pty;
    ASSERT_FALSE(pty.slave.empty());
    QtSerialPort port;
    std::vector<uint8_t> got;
    int losses = 0;
    port.onBytes = [&](std::span<const uint8_t> b) { got.insert(got.end(), b.begin(), b.end()); };
    port.onLost = [&](const std::string&) { ++losses; };
    std::string error;
    ASSERT_TRUE(port.open(pty.slave, error)) << error;

    // Module to tool: every byte value, in order.
    std::vector<uint8_t> sent(256);
    for (int i = 0; i < 256; ++i) sent[static_cast<std::size_t>(i)] = static_cast<uint8_t>(i);
    ASSERT_EQ(::write(pty.master, sent.data(), sent.size()), 256);
    pump(2000, [&] { return got.size() >= sent.size(); });
    EXPECT_EQ(got, sent);

    // Tool to module.
    const std::vector<uint8_t> frame{0x5A, 3, 0x70, 0x73};
    ASSERT_TRUE(port.write(frame, error)) << error;
    pump(200);
    std::vector<uint8_t> back(16);
    const ssize_t n = ::read(pty.master, back.data(), back.size());
    ASSERT_EQ(n, 4);
    back.resize(4);
    EXPECT_EQ(back, frame);

    // The far end goes away: one loss, the port closed, and the event loop idles.
    pty.closeMaster();
    pump(1000, [&] { return losses > 0; });
    EXPECT_EQ(losses, 1);
    EXPECT_FALSE(port.isOpen());
    const double before = cpuSeconds();
    pump(500);
    EXPECT_LT(cpuSeconds() - before, 0.25) << "the closed line keeps the event loop busy";
    EXPECT_EQ(losses, 1);
}

TEST(QtSerialPortPty, MissingDeviceCannotBeOpened)
{
    QtSerialPort port;
    std::string error;
    EXPECT_FALSE(port.open("/dev/kdx-no-such-port", error));
    EXPECT_FALSE(error.empty());
}

TEST(QtSerialPortPty, ExtraPortsAreListedAfterTheSystemsOwn)
{
    QtSerialPort port;
    port.addExtraPort("/tmp/kdx-virtual");
    const auto names = port.availablePorts();
    ASSERT_FALSE(names.empty());
    EXPECT_EQ(names.back(), "/tmp/kdx-virtual");
}
