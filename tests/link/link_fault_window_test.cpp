// Faults on the line, end to end over real pseudo-terminals: the program (Comms Link,
// main window, tuning window) on the Qt serial port, the far end a simulated module
// served in real time, or a source of noise.
#include "fakes/heap_in_use.h"
#include "fakes/scripted_dialogs.h"
#include "link/comms_link_window.h"
#include "mainwindow/main_entry.h"
#include "platform/qt_serial_port.h"
#include "sim/pty_bridge.h"
#include "sim/simulator.h"
#include "tuning/graph_win_window.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QLabel>
#include <QTemporaryDir>
#include <QTimer>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <memory>
#include <random>
#include <thread>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

using namespace kdx;
using namespace kdx::test;

namespace {

double cpuSeconds()
{
    rusage ru{};
    getrusage(RUSAGE_SELF, &ru);
    return ru.ru_utime.tv_sec + ru.ru_stime.tv_sec + (ru.ru_utime.tv_usec + ru.ru_stime.tv_usec) / 1e6;
}

// Runs the event loop for up to `ms`, or until `done` holds.
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

// The program as kdxtool wires it, on the Qt serial port.
struct Program {
    QtSerialPort port;
    ScriptedDialogs dialogs;
    FakeKeyState keys;
    Workspace ws;
    CommsLink comms{port, dialogs};
    MainEntry main{ws};
    std::unique_ptr<GraphWin> graph;

    explicit Program(const std::string& device)
    {
        ws.comms = &comms;
        ws.dialogs = &dialogs;
        ws.keys = &keys;
        ws.port = &port;
        ws.main = &main;
        graph = std::make_unique<GraphWin>(ws);
        ws.graph = graph.get();
        comms.setMessageSink(&main);
        port.addExtraPort(device);
        comms.Form_Load();
        main.Form_Load();
        comms.selectPortByName(device);
    }
};

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
            bridge_.serve(sim_, [this] { return stop_.load(); }, error);
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

TEST(LinkFaultWindow, TheFarEndVanishingIsOneMessageAnIdleProgramAndTelemetryResumesOnReselect)
{
    QTemporaryDir dir;
    const std::string device = QDir(dir.path()).filePath("kdx-line").toStdString();
    auto module = std::make_unique<ServedModule>(device);
    Program p(device);
    ASSERT_TRUE(p.comms.PortOpen);
    pump(3000, [&] { return p.comms.GetCommsGood() && p.main.GetGainsHaveBeenLoaded(); });
    ASSERT_TRUE(p.comms.GetCommsGood());
    ASSERT_TRUE(p.main.GetGainsHaveBeenLoaded()) << "the configuration was read over the line";

    module.reset(); // mid-stream
    pump(2000, [&] { return !p.dialogs.boxes.empty(); });
    pump(1100); // the watchdog's second tick without telemetry has come meanwhile
    ASSERT_EQ(p.dialogs.boxes.size(), 1u);
    EXPECT_NE(p.dialogs.boxes[0].prompt.find("was lost"), std::string::npos) << p.dialogs.boxes[0].prompt;
    EXPECT_EQ(p.dialogs.boxes[0].title, "Comms Port");
    EXPECT_FALSE(p.comms.PortOpen);
    EXPECT_FALSE(p.port.isOpen());
    EXPECT_FALSE(p.comms.GetCommsGood());

    const double before = cpuSeconds();
    pump(1000);
    EXPECT_LT(cpuSeconds() - before, 0.2) << "the lost line keeps the program busy";

    // Still usable: a read goes nowhere and times out as usual, without another box.
    p.main.ReadConfigcb_Click();
    p.main.MemReqTimer_Timer();
    EXPECT_EQ(p.main.MemReqtb->text(), " Timed out");
    EXPECT_EQ(p.dialogs.boxes.size(), 1u);

    // The module is back under the same name: Scan, then select the port.
    module = std::make_unique<ServedModule>(device);
    p.comms.RescanCOMportscb_Click();
    const uint64_t goodBefore = p.comms.receiver().goodMessages;
    ASSERT_TRUE(p.comms.selectPortByName(device));
    pump(3000, [&] { return p.comms.GetCommsGood() && p.comms.receiver().goodMessages > goodBefore + 50; });
    EXPECT_TRUE(p.comms.GetCommsGood());
    EXPECT_GT(p.comms.receiver().goodMessages, goodBefore + 50);
    EXPECT_EQ(p.dialogs.boxes.size(), 1u);
}

TEST(LinkFaultWindow, NoiseAtTenTimesTheByteRateKeepsTheWindowResponsiveAndMemoryFlat)
{
    // The normal byte rate: what the simulated module sends in a second.
    std::size_t normalRate = 0;
    {
        sim::Simulator module({.qvane = false, .seed = 1});
        std::vector<uint8_t> second;
        module.advance(1.0, second);
        normalRate = second.size();
    }
    ASSERT_GT(normalRate, 4000u);
    const std::size_t floodRate = 10 * normalRate;
    constexpr int kSeconds = 10;
    constexpr int kSliceMs = 10;

    const int master = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(master, 0);
    ASSERT_EQ(grantpt(master), 0);
    ASSERT_EQ(unlockpt(master), 0);
    const std::string device = ptsname(master);
    Program p(device);
    ASSERT_TRUE(p.comms.PortOpen);
    p.dialogs.failOnUnexpected = false; // counted below
    std::atomic<std::size_t> received{0};
    auto deliver = p.port.onBytes;
    p.port.onBytes = [&](std::span<const uint8_t> b) {
        received += b.size();
        deliver(b);
    };

    // The far end: the module streams normally for a second and a half (the program
    // shows its windows and reads the configuration), then the line carries nothing but
    // noise. Paced on an absolute clock; what the program sends is read and dropped.
    enum Phase { Module, Noise, Done };
    std::atomic<int> phase{Module};
    std::atomic<std::size_t> sentAtFlood{0}, sent{0};
    std::thread far([&] {
        ::fcntl(master, F_SETFL, ::fcntl(master, F_GETFL) | O_NONBLOCK);
        auto writeAll = [&](const std::vector<uint8_t>& bytes) {
            std::size_t at = 0;
            while (at < bytes.size()) {
                const ssize_t n = ::write(master, bytes.data() + at, bytes.size() - at);
                if (n > 0) at += static_cast<std::size_t>(n);
                else std::this_thread::sleep_for(std::chrono::milliseconds(1)); // the line is full
            }
            sent += bytes.size();
        };
        sim::Simulator module({.qvane = false, .seed = 1});
        std::mt19937 random(1234);
        std::vector<uint8_t> out, in(4096);
        const auto start = std::chrono::steady_clock::now();
        for (int i = 1; i <= (1500 + kSeconds * 1000) / kSliceMs; ++i) {
            ssize_t n;
            while ((n = ::read(master, in.data(), in.size())) > 0)
                if (phase == Module) module.consume(std::span<const uint8_t>(in.data(), static_cast<std::size_t>(n)));
            if (i == 1500 / kSliceMs + 1) {
                sentAtFlood = sent.load();
                phase = Noise;
            }
            out.clear();
            if (phase == Module) {
                module.advance(kSliceMs / 1000.0, out);
            } else {
                out.resize(floodRate * kSliceMs / 1000);
                for (auto& b : out) b = static_cast<uint8_t>(random());
            }
            writeAll(out);
            std::this_thread::sleep_until(start + std::chrono::milliseconds(i * kSliceMs));
        }
        phase = Done;
    });

    // Responsiveness: the longest wait of a 10 ms timer during the flood.
    QElapsedTimer clock;
    clock.start();
    qint64 last = 0, longestWait = 0;
    QTimer beat;
    QObject::connect(&beat, &QTimer::timeout, [&] {
        const qint64 t = clock.elapsed();
        if (phase == Noise) longestWait = std::max(longestWait, t - last);
        last = t;
    });
    beat.start(10);
    pump(3000, [&] { return phase != Module; });
    const bool configured = p.main.GetGainsHaveBeenLoaded();
    const std::size_t heapAtFlood = heapInUse();
    pump((kSeconds + 5) * 1000, [&] { return phase == Done && received >= sent; });
    const std::size_t heapAtEnd = heapInUse();
    beat.stop();
    far.join();
    ::close(master);

    EXPECT_TRUE(configured) << "the module was heard before the noise";
    EXPECT_EQ(phase.load(), Done);
    EXPECT_EQ(received.load(), sent.load()) << "the program kept up with the line";
    EXPECT_GE(sent - sentAtFlood, floodRate * kSeconds);
    EXPECT_LT(longestWait, 100) << "an event waited this long (ms)";
    const double growthKb = (static_cast<double>(heapAtEnd) - static_cast<double>(heapAtFlood)) / 1024;
    EXPECT_LT(growthKb, 256) << "the heap grew by this much (KB) during the flood";
    std::printf("flood: %zu bytes of noise at %zu B/s; longest event wait %lld ms; heap %+.0f KB; "
                "%d noise bytes and bad messages counted\n",
                sent - sentAtFlood, floodRate, static_cast<long long>(longestWait), growthKb,
                p.comms.receiver().CommsErrorCount);
    for (const auto& b : p.dialogs.boxes) ADD_FAILURE() << "noise raised a box: " << b.prompt;
}
