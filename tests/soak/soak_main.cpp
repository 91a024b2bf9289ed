// The soak run: an hour of simulated telemetry through the whole program offscreen, as
// fast as the program takes it. The simulated KDX talks to the program's fake port in
// 10 ms steps of simulated time; the program's timers are called at their simulated
// moments; the windows paint once per 20 ms. Meanwhile the main window shows live values
// and reads the configuration, the tuning window sweeps (10 s repeating, a 60 s sweep
// every tenth minute from the second) with its gain message on and a gain nudged each
// minute, and the Data Logging window logs every message to a file in a temporary folder.
//
// Resident memory and the heap are read at every simulated minute. Whatever the program
// holds for good is in place well before half time, so over the second half of the run
// neither may grow: the run fails (exit 1) when the trend of resident memory or of the
// heap over the second half (a least-squares line through the minutes' readings) rises
// by more than GrowthLimitMbPerHour, when a message box was shown, or when the log
// misses a message. A short run judges its second half the same way; ./kdx test runs one.
//
//   kdx_soak [--minutes N] [--seed N]
#include "fakes/heap_in_use.h"
#include "fakes/program_rig.h"
#include "sim/simulator.h"
#include "telemetry/telemetry_setup_window.h"

#include <algorithm>
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

#include <unistd.h>

namespace {

using namespace kdx;

// A rise of a few hundred kB an hour is what a slow leak looks like in a run of a few
// hours; a program that holds nothing new stays within a few kB.
constexpr double GrowthLimitMbPerHour = 0.25;

double heapMegabytes() { return static_cast<double>(test::heapInUse()) / (1024.0 * 1024.0); }

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

// The slope of the least-squares line through (minute, value) readings, per hour.
double trendPerHour(const std::vector<double>& byMinute, int firstMinute)
{
    double n = 0, sx = 0, sy = 0, sxx = 0, sxy = 0;
    for (int m = firstMinute; m < static_cast<int>(byMinute.size()); ++m) {
        n += 1;
        sx += m;
        sy += byMinute[static_cast<std::size_t>(m)];
        sxx += static_cast<double>(m) * m;
        sxy += m * byMinute[static_cast<std::size_t>(m)];
    }
    const double d = n * sxx - sx * sx;
    return d > 0 ? 60.0 * (n * sxy - sx * sy) / d : 0.0;
}

int usage()
{
    std::fprintf(stderr, "usage: kdx_soak [--minutes N (8 or more)] [--seed N]\n");
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
    if (minutes < 8) return usage(); // half time comes after the first 60 s sweep

    QTemporaryDir dir;
    if (!dir.isValid()) {
        std::fprintf(stderr, "kdx_soak: no temporary folder\n");
        return 1;
    }

    // The whole program on the fakes, wired as kdxtool's main() wires it.
    test::ProgramRig rig;                 // on simulated time
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
    std::vector<double> rssByMinute{residentMegabytes()}, heapByMinute{heapMegabytes()}; // [m]: minute m
    bool started = false;
    uint64_t goodAtStart = 0;
    const auto wallStart = std::chrono::steady_clock::now();

    // The timers below run on simulated time only; their real counterparts stay stopped,
    // or a tick of the wall clock would land between two simulated ones.
    auto holdTheRealTimers = [&] {
        for (QTimer* t : {rig.comms.CommsTimeout, rig.comms.Comms2Timeout, rig.main.CommsQualityTmr, graph.GainMsgTmr,
                          logging.FlushTimer, rig.program.statusBar.refreshTimer})
            t->stop();
    };
    for (long long step = 1; step <= steps; ++step) {
        const long long ms = step * kStepMs;
        rig.clock.setSeconds(ms / 1000.0);
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
        if (ms % MainEntry::LiveDisplayMs == 0) rig.flushDisplay();
        if (ms % 500 == 0) {
            rig.comms.CommsTimeout_Timer();
            rig.main.CommsQualityTmr_Timer();
            rig.program.statusBar.refresh();
        }
        if (ms % 60000 == 30000) { // the user nudges P up or down each minute
            if ((ms / 60000) % 2 == 0) graph.Inccb_Click(Gain::P, 1);
            else graph.Deccb_Click(Gain::P, 1);
        }
        // A 60 s sweep every tenth minute from the second on (early, so that even a short
        // run has drawn one before half time), then back to 10 s.
        if (ms % 600000 == 120000) graph.TraceDurationcb_Click(3);
        if (ms % 600000 == 180000) graph.TraceDurationcb_Click(1);
        if (ms % 20 == 0) { // layout and paint, once a frame
            holdTheRealTimers();
            QCoreApplication::processEvents();
        }
        if (ms % 60000 == 0) {
            rssByMinute.push_back(residentMegabytes());
            heapByMinute.push_back(heapMegabytes());
        }
        if (ms % 600000 == 0)
            std::printf("soak: %3lld simulated minutes, resident %.1f MB, heap %.2f MB, %d log lines\n", ms / 60000,
                        residentMegabytes(), heapMegabytes(), logging.log().LinesLogged());
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
    std::printf("soak: resident memory %.1f MB after the first minute, %.1f MB at the end: %+.2f MB\n", rssByMinute[1],
                rssEnd, rssEnd - rssByMinute[1]);
    const int half = minutes / 2;
    const double rssTrend = trendPerHour(rssByMinute, half);
    const double heapTrend = trendPerHour(heapByMinute, half);
    std::printf("soak: growth from minute %d to %d: resident %+.3f MB/hour (limit %.2f), heap %+.3f MB/hour "
                "(limit %.2f)\n",
                half, minutes, rssTrend, GrowthLimitMbPerHour * std::max(1.0, 60.0 / minutes), heapTrend,
                GrowthLimitMbPerHour);

    // Resident memory moves in whole pages and with the allocator's trimming: over a short
    // run a few dozen pages look like a steep trend. A run shorter than an hour is allowed
    // the same rise over its second half as an hour's run; the heap is counted to the
    // byte and is held to the limit at any length.
    const double rssLimit = GrowthLimitMbPerHour * std::max(1.0, 60.0 / minutes);
    bool ok = true;
    if (rssTrend > rssLimit || heapTrend > GrowthLimitMbPerHour) {
        std::printf("soak: FAILED: memory grows over the second half\n");
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
