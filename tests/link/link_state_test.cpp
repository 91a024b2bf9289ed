// The status bar's texts and where a vanished port is found again: what the user reads
// at the bottom of the main window, and which device the program reopens by itself.
#include "link/port_return.h"
#include "link/status_line.h"

#include <gtest/gtest.h>

#include <ctime>

using namespace kdx;
using namespace std::chrono;

namespace {

system_clock::time_point localTime(int h, int m, int s)
{
    std::tm t{};
    t.tm_year = 126;
    t.tm_mon = 10;
    t.tm_mday = 24;
    t.tm_hour = h;
    t.tm_min = m;
    t.tm_sec = s;
    t.tm_isdst = -1;
    return system_clock::from_time_t(std::mktime(&t));
}

PortIdentity usb(std::string path, std::string serial, uint16_t vid = 0x0403, uint16_t pid = 0x6001)
{
    PortIdentity p = PortIdentity::at(std::move(path));
    p.serialNumber = std::move(serial);
    p.vendorId = vid;
    p.productId = pid;
    return p;
}

} // namespace

TEST(StatusLine, EachLinkStateReadsAsTheUserExpects)
{
    struct Case {
        StatusInputs in;
        StatusTexts want;
    };
    const auto link = [](LinkState s, std::string port, int number) {
        LinkStatus l;
        l.state = s;
        l.port = std::move(port);
        l.portNumber = number;
        return l;
    };
    LinkStatus lost = link(LinkState::Lost, "/dev/ttyUSB0", 1);
    lost.lostAt = localTime(14, 3, 7);
    LinkStatus playing = link(LinkState::Playing, "", 0);
    playing.playbackFile = "flight 3.rec";
    playing.playbackRate = " x2";
    const Case cases[] = {
        {{}, {"No port", "KDX", "", "no port open", "0 msg/s"}},
        {{link(LinkState::Waiting, "/dev/ttyUSB1", 2)},
         {"Port 2: /dev/ttyUSB1", "KDX", "", "waiting for telemetry", "0 msg/s"}},
        {{link(LinkState::Live, "/dev/ttyUSB1", 2), false, 3, 1, 5, 49.6},
         {"Port 2: /dev/ttyUSB1", "KDX", "Firmware 1.05", "live", "50 msg/s"}},
        {{link(LinkState::Live, "Sim Q-Vane", 17), true, 1, 2, 12, 25},
         {"Port 17: Sim Q-Vane", "Q-Vane Roll", "Firmware 2.12", "live", "25 msg/s"}},
        {{lost, true, 2}, {"Port 1: /dev/ttyUSB0", "Q-Vane Pan", "", "lost since 14:03:07", "0 msg/s"}},
        {{link(LinkState::Reconnecting, "/dev/serial/by-id/usb-kdx", 0), true, 3},
         {"Port /dev/serial/by-id/usb-kdx", "Q-Vane", "", "reconnecting", "0 msg/s"}},
        {{playing, false, 3, 1, 5, 98}, {"No port", "KDX", "Firmware 1.05", "playing flight 3.rec at x2", "98 msg/s"}},
    };
    for (const Case& c : cases) {
        const StatusTexts t = statusTexts(c.in);
        SCOPED_TRACE(c.want.link);
        EXPECT_EQ(t.port, c.want.port);
        EXPECT_EQ(t.target, c.want.target);
        EXPECT_EQ(t.firmware, c.want.firmware);
        EXPECT_EQ(t.link, c.want.link);
        EXPECT_EQ(t.rate, c.want.rate);
    }
}

TEST(StatusLine, MessageRateIsTheCountsDifferenceOverTheTimeBetweenReadings)
{
    MessageRate rate;
    constexpr int64_t ms = 1000000;
    EXPECT_EQ(rate.update(1000, 7 * ms), 0) << "nothing to compare the first reading with";
    EXPECT_DOUBLE_EQ(rate.update(1025, 507 * ms), 50);
    EXPECT_DOUBLE_EQ(rate.update(1025, 1007 * ms), 0);
    EXPECT_DOUBLE_EQ(rate.update(1100, 2507 * ms), 50);
}

// A device at the lost path is taken unless the system says it is another adapter; an
// adapter is known again by its serial number at any path, or without one by its ids
// when no other adapter alike is plugged in.
TEST(PortReturn, TheLostPortIsFoundAtItsPathOrByItsAdapterIdentity)
{
    struct Case {
        const char* what;
        PortIdentity lost;
        std::vector<PortIdentity> listed;
        bool pathPresent;
        std::optional<std::string> want;
    };
    const PortIdentity pty = PortIdentity::at("/tmp/kdx-line");
    const Case cases[] = {
        {"a link back at its path", pty, {}, true, "/tmp/kdx-line"},
        {"a link not back yet", pty, {usb("/dev/ttyUSB0", "A1")}, false, std::nullopt},
        {"same adapter, same path", usb("/dev/ttyUSB0", "A1"), {usb("/dev/ttyUSB0", "A1")}, true, "/dev/ttyUSB0"},
        {"same adapter, new path", usb("/dev/ttyUSB0", "A1"), {usb("/dev/ttyUSB1", "A1")}, false, "/dev/ttyUSB1"},
        {"another adapter took the path", usb("/dev/ttyUSB0", "A1"), {usb("/dev/ttyUSB0", "B2")}, true, std::nullopt},
        {"same serial, other maker",
         usb("/dev/ttyUSB0", "A1"),
         {usb("/dev/ttyUSB1", "A1", 0x10c4, 0xea60)},
         false,
         std::nullopt},
        {"no serial, one alike", usb("/dev/ttyUSB0", ""), {usb("/dev/ttyUSB2", "")}, false, "/dev/ttyUSB2"},
        {"no serial, two alike",
         usb("/dev/ttyUSB0", ""),
         {usb("/dev/ttyUSB2", ""), usb("/dev/ttyUSB3", "")},
         false,
         std::nullopt},
    };
    for (const Case& c : cases) EXPECT_EQ(returnedPath(c.lost, c.listed, c.pathPresent), c.want) << c.what;
}
