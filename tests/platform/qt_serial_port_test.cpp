// The Qt serial adapter end to end over a real pseudo-terminal pair: the test holds the
// master side, the adapter opens the slave device like any serial port.
#include "fakes/qt_port_program.h"
#include "link/comms_link_window.h"
#include "platform/qt_serial_port.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

using namespace kdx;
using namespace kdx::test;

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

} // namespace

TEST(QtSerialPortPty, BytesTravelBothWaysAndAClosedFarEndIsOneLossThatClosesThePort)
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
    pumpEvents(2000, [&] { return got.size() >= sent.size(); });
    EXPECT_EQ(got, sent);

    // Tool to module.
    const std::vector<uint8_t> frame{0x5A, 3, 0x70, 0x73};
    ASSERT_TRUE(port.write(frame, error)) << error;
    pumpEvents(200);
    std::vector<uint8_t> back(16);
    const ssize_t n = ::read(pty.master, back.data(), back.size());
    ASSERT_EQ(n, 4);
    back.resize(4);
    EXPECT_EQ(back, frame);

    // The far end goes away: one loss, and the port closed so the hung-up line cannot
    // keep waking the event loop.
    pty.closeMaster();
    pumpEvents(1000, [&] { return losses > 0; });
    EXPECT_EQ(losses, 1);
    EXPECT_FALSE(port.isOpen());
    pumpEvents(200);
    EXPECT_EQ(losses, 1);
}

// Whatever another program left on the line, selecting the port in the Comms Link window
// sets 115200 baud, 8 data bits, no parity, 1 stop bit, no flow control, raw bytes.
TEST(QtSerialPortPty, SelectingAPortSetsTheLineWhateverItWasLeftAt)
{
    PtyPair pty;
    ASSERT_FALSE(pty.slave.empty());
    const int line = ::open(pty.slave.c_str(), O_RDWR | O_NOCTTY); // keeps the settings between opens
    ASSERT_GE(line, 0);
    termios t{};
    ASSERT_EQ(tcgetattr(line, &t), 0);
    cfsetispeed(&t, B9600);
    cfsetospeed(&t, B9600);
    t.c_cflag = (t.c_cflag & ~CSIZE) | CS7 | PARENB | CSTOPB | CRTSCTS;
    t.c_iflag |= IXON | IXOFF | ICRNL | ISTRIP;
    t.c_lflag |= ICANON | ECHO | ISIG | IEXTEN;
    t.c_oflag |= OPOST;
    ASSERT_EQ(tcsetattr(line, TCSANOW, &t), 0);

    QtSerialPort port;
    ScriptedDialogs dialogs;
    CommsLink link(port, dialogs);
    port.addExtraPort(pty.slave);
    link.Form_Load();
    ASSERT_TRUE(link.selectPortByName(pty.slave));
    ASSERT_EQ(tcgetattr(line, &t), 0);
    ::close(line);

    EXPECT_EQ(cfgetispeed(&t), speed_t{B115200});
    EXPECT_EQ(cfgetospeed(&t), speed_t{B115200});
    struct Flags {
        const char* what;
        tcflag_t field, mask, want;
    };
    const Flags cases[] = {
        {"8 data bits", t.c_cflag, CSIZE, CS8},
        {"no parity, 1 stop bit, no RTS/CTS", t.c_cflag, PARENB | CSTOPB | CRTSCTS, 0},
        {"receiver on, modem lines ignored", t.c_cflag, CREAD | CLOCAL, CREAD | CLOCAL},
        {"no XON/XOFF", t.c_iflag, IXON | IXOFF | IXANY, 0},
        {"input bytes untouched", t.c_iflag, ICRNL | INLCR | IGNCR | ISTRIP | INPCK | PARMRK, 0},
        {"not line by line, no echo, no signals", t.c_lflag, ICANON | ECHO | ISIG | IEXTEN, 0},
        {"output bytes untouched", t.c_oflag, OPOST, 0},
    };
    for (const Flags& f : cases) EXPECT_EQ(f.field & f.mask, f.want) << f.what;
    EXPECT_TRUE(dialogs.boxes.empty());
}
