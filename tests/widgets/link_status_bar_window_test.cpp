// The main window's status bar through the whole program: the port and the link's state
// as the telemetry and the watchdog leave them.
#include "fakes/program_rig.h"
#include "telemetry/cyclic_frames.h"

#include <QLabel>
#include <QStatusBar>
#include <gtest/gtest.h>

#include <regex>

using namespace kdx;
using namespace kdx::test;

TEST(LinkStatusBarWindow, ShowsThePortAndLiveAfterTelemetryThenLostSinceWhenTheWatchdogMissesIt)
{
    ProgramRig r;
    LinkStatusBar& bar = r.program.statusBar;
    const auto text = [&](int i) { return bar.labels[static_cast<std::size_t>(i)]->text().toStdString(); };
    bar.refresh();
    EXPECT_EQ(text(0), "Port 1: /dev/ttyUSB0");
    EXPECT_EQ(text(3), "waiting for telemetry");

    for (int i = 0; i < 3; ++i) r.port.deliver(CyclicBytes::relayed().byte(2, 1).frame());
    r.comms.CommsTimeout_Timer(); // the watchdog's tick, telemetry heard since the last
    bar.refresh();
    EXPECT_EQ(text(0), "Port 1: /dev/ttyUSB0");
    EXPECT_EQ(text(1), "Q-Vane Roll");
    EXPECT_EQ(text(3), "live");

    r.comms.CommsTimeout_Timer(); // a tick without any: the link is lost
    bar.refresh();
    EXPECT_TRUE(std::regex_match(text(3), std::regex("lost since [0-2][0-9]:[0-5][0-9]:[0-5][0-9]"))) << text(3);
    EXPECT_EQ(text(0), "Port 1: /dev/ttyUSB0");
}
