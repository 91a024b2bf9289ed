// An hour of a directly wired KDX, recorded from the simulated module, played at "Max"
// through the whole program offscreen: the Comms Link window's playback timer, the
// receiver, the main window's live values, the Tuning Display capturing repeating sweeps,
// and the telemetry log written to a file. The event loop runs for real, so the link's
// and the main window's 500 ms timers, the log's flush timer and the repaints of the
// shown windows all take their share. Reported: seconds per one-hour recording.
#include "app/application.h"
#include "fakes/fake_serial_port.h"
#include "fakes/scripted_dialogs.h"
#include "sim/recording.h"

#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QLabel>
#include <QTemporaryDir>
#include <QTimer>
#include <benchmark/benchmark.h>

namespace {

using namespace kdx;

constexpr double kRecordingSeconds = 3600;

// Made once per run: 360000 direct telemetry messages.
const std::string& hourRecording(std::string& error)
{
    static QTemporaryDir dir;
    static std::string path;
    if (path.empty() && dir.isValid()) {
        const std::string p = QDir(dir.path()).filePath("hour.rec").toStdString();
        if (sim::writeRecording(sim::SimOptions{}, kRecordingSeconds, p, error) > 0) path = p;
    }
    return path;
}

void BM_PlayOneHourAtMaxThroughTheProgram(benchmark::State& state)
{
    std::string error;
    const std::string& recording = hourRecording(error);
    if (recording.empty()) {
        state.SkipWithError(("no recording: " + error).c_str());
        return;
    }
    QTemporaryDir logDir;
    // The program on the fakes but on the system's clock: the playback paces itself by it.
    struct {
        test::FakeSerialPort port;
        test::ScriptedDialogs dialogs;
        test::FakeKeyState keys;
    } fakes;
    fakes.dialogs.failOnUnexpected = false;
    Application program(fakes.port, fakes.dialogs, fakes.keys);
    program.Form_Load();
    program.wait.InputSwitchTimer->stop();
    GraphWin& graph = program.graph;
    graph.resize(1400, 800);
    TelemetrySetup& logging = program.logging;
    logging.LogFileName->setText(QDir(logDir.path()).filePath("Run1.csv"));
    graph.RepeatTrigcb_Click();
    program.comms.show();
    program.comms.SetInputFilename(recording);
    program.comms.Rateob_Click(0); // "Max"

    long long qualityTicks = 0;
    QObject::connect(program.main.CommsQualityTmr, &QTimer::timeout, [&] { ++qualityTicks; });
    double seconds = 0;
    for (auto _ : state) {
        logging.StartLog_Click(); // a fresh log each hour
        QEventLoop loop;
        QTimer poll;
        poll.setInterval(20);
        QObject::connect(&poll, &QTimer::timeout, [&] {
            if (!program.comms.PlaybackActive) loop.quit();
        });
        QElapsedTimer clock;
        clock.start();
        program.comms.StartLogIn_Click();
        poll.start();
        loop.exec();
        seconds += static_cast<double>(clock.nsecsElapsed()) * 1e-9;
        state.SetIterationTime(static_cast<double>(clock.nsecsElapsed()) * 1e-9);
        logging.StopLog_Click();
    }
    const Receiver& rx = program.comms.receiver();
    const auto iterations = static_cast<double>(state.iterations());
    // Every message must have gone the whole way (the main window's 16-bit good-message
    // count, reset by its 500 ms tick, overflows and drops messages when that tick starves
    // or the feed outruns it), and the tick must have kept its pace, or the figure means
    // nothing.
    const uint64_t perHour = rx.goodMessages / static_cast<uint64_t>(state.iterations());
    if (rx.badMessages != 0 || perHour != static_cast<uint64_t>(kRecordingSeconds * 100) ||
        logging.log().LinesLogged() != static_cast<long long>(perHour) || qualityTicks < 1.5 * seconds)
        state.SkipWithError(("good " + std::to_string(rx.goodMessages) + ", bad " + std::to_string(rx.badMessages) +
                             ", last log lines " + std::to_string(logging.log().LinesLogged()) + ", quality ticks " +
                             std::to_string(qualityTicks) + " in " + std::to_string(seconds) + " s")
                                .c_str());
    state.counters["s_per_hour"] = seconds / iterations;
    state.counters["messages/s"] = static_cast<double>(rx.goodMessages) / seconds;
    state.counters["MB/s"] = static_cast<double>(program.comms.playback().BytesPlayed) * iterations / seconds / 1e6;
    state.counters["quality_ticks/s"] = static_cast<double>(qualityTicks) / seconds;
}
BENCHMARK(BM_PlayOneHourAtMaxThroughTheProgram)->UseManualTime()->Iterations(1)->Unit(benchmark::kSecond);

} // namespace
