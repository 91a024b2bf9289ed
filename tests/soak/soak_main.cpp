// The soak run: an hour of simulated telemetry through the whole program offscreen, as
// fast as the program takes it. The simulated KDX talks to the program's fake port in
// 10 ms steps of simulated time; the program's timers are called at their simulated
// moments; the windows paint once per 20 ms. Meanwhile the main window shows live values
// and reads the configuration, the tuning window sweeps (10 s repeating, a 60 s sweep
// every tenth minute) with its gain message on and a gain nudged each minute, and the
// Data Logging window logs every message to a file in a temporary folder.
//
// Resident memory is read after the first simulated minute and at the end; the run
// fails (exit 1) when it grew by 5 MB or more, when a message box was shown, or when the
// log misses a message.
//
//   kdx_soak [--minutes N] [--seed N]
#include "fakes/program_rig.h"
#include "sim/simulator.h"
#include "telemetry/telemetry_setup_window.h"
#include "tuning/graph_win_model.h"
#include "tuning/graph_view_window.h"
#include "tuning/graph_win_window.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QTemporaryDir>
#include <QTimer>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <malloc.h>
#include <unistd.h>

namespace {

using namespace kdx;

double heapMegabytes()
{
    const struct mallinfo2 m = mallinfo2();
    return static_cast<double>(m.uordblks + m.hblkhd) / (1024.0 * 1024.0);
}

double residentMegabytes()
{
    std::ifstream statm("/proc/self/statm");
    long pages = 0, resident = 0;
    statm >> pages >> resident;
    return static_cast<double>(resident) * static_cast<double>(::sysconf(_SC_PAGESIZE)) / (1024.0 * 1024.0);
}

// Counts the paint events a widget receives.
struct PaintCounter : QObject {
    int paints = 0;
    bool eventFilter(QObject*, QEvent* e) override
    {
        if (e->type() == QEvent::Paint) ++paints;
        return false;
    }
};

int usage()
{
    std::fprintf(stderr, "usage: kdx_soak [--minutes N] [--seed N]\n");
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    int minutes = 60;
    uint64_t seed = 7;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        if (i + 1 >= argc) return usage();
        if (a == "--minutes") minutes = std::atoi(argv[++i]);
        else if (a == "--seed") seed = std::strtoull(argv[++i], nullptr, 10);
        else return usage();
    }
    if (minutes < 2) return usage();

    QTemporaryDir dir;
    if (!dir.isValid()) {
        std::fprintf(stderr, "kdx_soak: no temporary folder\n");
        return 1;
    }

    // The whole program on the fakes, wired as kdxtool's main() wires it.
    double now = 0; // simulated seconds
    test::ProgramRig rig([&] { return now; });
    rig.dialogs.failOnUnexpected = false; // every box is counted and fails the run below
    GraphWin& graph = rig.graph;
    TelemetrySetup& logging = rig.logging;
    const QString logPath = QDir(dir.path()).filePath("Run1.csv");
    logging.LogFileName->setText(logPath);

    PaintCounter graphPaints, ratePaints;
    graph.Graphpb->installEventFilter(&graphPaints);
    rig.main.AxisRatetb[0]->installEventFilter(&ratePaints);

    sim::Simulator module({.qvane = false, .seed = seed, .noise = 0.0});
    std::vector<uint8_t> fromModule;
    constexpr int kStepMs = 10;
    const long long steps = static_cast<long long>(minutes) * 60 * 1000 / kStepMs;
    double rssAfterMinute = 0;
    bool started = false;
    uint64_t goodAtStart = 0;
    const auto wallStart = std::chrono::steady_clock::now();

    // The timers below run on simulated time only; their real counterparts stay stopped,
    // or a tick of the wall clock would land between two simulated ones.
    auto holdTheRealTimers = [&] {
        for (QTimer* t : {rig.comms.CommsTimeout, rig.comms.Comms2Timeout, rig.main.CommsQualityTmr,
                          graph.GainMsgTmr, logging.FlushTimer})
            t->stop();
    };
    for (long long step = 1; step <= steps; ++step) {
        const long long ms = step * kStepMs;
        now = ms / 1000.0;
        module.consume(rig.port.written);
        rig.port.written.clear();
        fromModule.clear();
        module.advance(kStepMs / 1000.0, fromModule);
        rig.port.deliver(fromModule, 64);

        if (!started && rig.main.DisplayVisible && rig.main.GetGainsHaveBeenLoaded()) {
            logging.StartLog_Click();
            graph.MotorSelcb_Click(0);
            graph.Enablecb->click(); // the gain message from now on
            started = true;
            goodAtStart = rig.comms.receiver().goodMessages;
        }
        if (ms % 40 == 0 && graph.model().gains().gainMsgEnabled()) graph.GainMsgTmr_Timer();
        if (ms % 200 == 0) rig.comms.Comms2Timeout_Timer();
        if (ms % 250 == 0) logging.FlushTimer_Timer();
        if (ms % 500 == 0) {
            rig.comms.CommsTimeout_Timer();
            rig.main.CommsQualityTmr_Timer();
        }
        if (ms % 60000 == 30000) { // the user nudges P up or down each minute
            if ((ms / 60000) % 2 == 0) graph.Inccb_Click(Gain::P, 1);
            else graph.Deccb_Click(Gain::P, 1);
        }
        if (ms % 600000 == 0) graph.TraceDurationcb_Click(3);     // a 60 s sweep every tenth minute
        if (ms % 600000 == 60000) graph.TraceDurationcb_Click(1); // then back to 10 s
        if (ms % 20 == 0) { // layout and paint, once a frame
            holdTheRealTimers();
            QCoreApplication::processEvents();
        }
        if (ms == 60000) rssAfterMinute = residentMegabytes();
        if (ms % 600000 == 0)
            std::printf("soak: %3lld simulated minutes, resident %.1f MB, heap %.2f MB, %d log lines\n",
                        ms / 60000, residentMegabytes(), heapMegabytes(), logging.log().LinesLogged());
    }
    holdTheRealTimers();
    QCoreApplication::processEvents();
    const double rssEnd = residentMegabytes();
    const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - wallStart).count();
    const long long lines = logging.log().LinesLogged();
    logging.StopLog_Click();
    const auto logBytes = std::filesystem::file_size(logPath.toStdString());
    const uint64_t good = rig.comms.receiver().goodMessages;

    std::printf("soak: %d simulated minutes in %.1f s of wall time (%.0fx real time)\n", minutes, wall,
                minutes * 60.0 / wall);
    std::printf("soak: %llu good messages, %llu bad, %lld log lines (%.1f MB), %zu message boxes\n",
                static_cast<unsigned long long>(good),
                static_cast<unsigned long long>(rig.comms.receiver().badMessages), lines,
                static_cast<double>(logBytes) / (1024.0 * 1024.0), rig.dialogs.boxes.size());
    std::printf("soak: %d paints of the graph, %d of motor 0's rate label\n", graphPaints.paints, ratePaints.paints);
    std::printf("soak: resident memory %.1f MB after the first minute, %.1f MB at the end: %+.2f MB\n",
                rssAfterMinute, rssEnd, rssEnd - rssAfterMinute);

    bool ok = true;
    if (rssEnd - rssAfterMinute >= 5.0) {
        std::printf("soak: FAILED: resident memory grew by 5 MB or more\n");
        ok = false;
    }
    for (const auto& b : rig.dialogs.boxes) {
        std::printf("soak: FAILED: a box was shown: %s (%s)\n", b.prompt.c_str(), b.title.c_str());
        ok = false;
    }
    // Once logging started, every message is telemetry and every one is a line.
    if (!started || lines != static_cast<long long>(good - goodAtStart)) {
        std::printf("soak: FAILED: the log misses messages\n");
        ok = false;
    }
    return ok ? 0 : 1;
}
