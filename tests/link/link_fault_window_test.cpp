// Faults on the line, end to end over a real pseudo-terminal: the program (Comms Link,
// main window, tuning window) on the Qt serial port, the far end a simulated module
// served in real time. (Noise flooding the line is a benchmark: gui_link_flood_bench.)
#include "fakes/qt_port_program.h"
#include "sim/pty_bridge.h"
#include "sim/simulator.h"

#include <QDir>
#include <QLabel>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <memory>
#include <thread>

using namespace kdx;
using namespace kdx::test;

namespace {

// The simulated module served on a new pseudo-terminal by a thread, in real time, as
// `kdxctl sim --pty` serves it. `link` is made a symbolic link to the device, so the
// program sees one port name for every module served this way.
class ServedModule {
public:
    explicit ServedModule(const std::string& link)
    {
        std::string error;
        if (!bridge_.open(error)) {
            ADD_FAILURE() << error;
            return;
        }
        std::filesystem::remove(link);
        std::filesystem::create_symlink(bridge_.devicePath(), link);
        thread_ = std::thread([this] {
            std::string error;
            bridge_.serve(
                sim_, [this] { return stop_.load(); }, error);
        });
    }
    // The far end goes away: the device's last descriptors close.
    ~ServedModule()
    {
        stop_ = true;
        if (thread_.joinable()) thread_.join();
    }

private:
    sim::Simulator sim_{{.qvane = false, .seed = 5}};
    sim::PtyBridge bridge_;
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

} // namespace

TEST(LinkFaultWindow, TheFarEndVanishingIsOneMessageAndThePortReopensByItselfWhenItIsBack)
{
    QTemporaryDir dir;
    const std::string device = QDir(dir.path()).filePath("kdx-line").toStdString();
    auto module = std::make_unique<ServedModule>(device);
    QtPortProgram p(device);
    ASSERT_TRUE(p.comms.PortOpen);
    pumpEvents(3000, [&] { return p.comms.GetCommsGood() && p.main.GetGainsHaveBeenLoaded(); });
    ASSERT_TRUE(p.comms.GetCommsGood());
    ASSERT_TRUE(p.main.GetGainsHaveBeenLoaded()) << "the configuration was read over the line";

    module.reset();                  // mid-stream
    std::filesystem::remove(device); // and its name goes with it
    pumpEvents(2000, [&] { return !p.dialogs.boxes.empty(); });
    pumpEvents(1100); // the watchdog's second tick without telemetry has come meanwhile
    ASSERT_EQ(p.dialogs.boxes.size(), 1u);
    EXPECT_NE(p.dialogs.boxes[0].prompt.find("was lost"), std::string::npos) << p.dialogs.boxes[0].prompt;
    EXPECT_EQ(p.dialogs.boxes[0].title, "Comms Port");
    EXPECT_FALSE(p.comms.PortOpen);
    EXPECT_FALSE(p.port.isOpen());
    EXPECT_FALSE(p.comms.GetCommsGood());

    // Still usable: a read goes nowhere and times out as usual, without another box.
    p.main.ReadConfigcb_Click();
    p.main.MemReqTimer_Timer();
    EXPECT_EQ(p.main.MemReqtb->text(), " Timed out");
    EXPECT_EQ(p.dialogs.boxes.size(), 1u);

    EXPECT_EQ(p.comms.linkStatus().state, LinkState::Reconnecting);
    EXPECT_EQ(p.comms.linkStatus().port, device);

    // The module is back under the same name, on a new pseudo-terminal: the port reopens
    // by itself and telemetry resumes, without another word.
    const uint64_t goodBefore = p.comms.receiver().goodMessages;
    module = std::make_unique<ServedModule>(device);
    pumpEvents(1000 + CommsLink::ReconnectCheckMs, [&] { return p.comms.PortOpen; });
    ASSERT_TRUE(p.comms.PortOpen) << "reopened within a second of its return";
    pumpEvents(3000, [&] { return p.comms.GetCommsGood() && p.comms.receiver().goodMessages > goodBefore + 50; });
    EXPECT_TRUE(p.comms.GetCommsGood());
    EXPECT_GT(p.comms.receiver().goodMessages, goodBefore + 50);
    EXPECT_EQ(p.comms.linkStatus().port, device);
    EXPECT_EQ(p.dialogs.boxes.size(), 1u);
}
