// The whole path of one direct telemetry message through the program offscreen: the
// receiver, the decoder, the live-value labels, the tuning window's samples and a log
// line written to a file. The live rate is 100 messages a second. Labels are set only when
// their text changes; painting happens at screen rate, outside this loop.
#include "app/application.h"
#include "fakes/fake_serial_port.h"
#include "fakes/scripted_dialogs.h"
#include "link/frame.h"

#include <QDir>
#include <QLabel>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

#include <cmath>

namespace {

using namespace kdx;

std::vector<uint8_t> directStream(int messages)
{
    std::vector<uint8_t> out;
    for (int i = 0; i < messages; ++i) {
        std::vector<uint8_t> p(45, 0);
        const int rate = static_cast<int>(std::lround(std::sin(i * 0.05) * 2000));
        p[0] = static_cast<uint8_t>(rate & 255);
        p[1] = static_cast<uint8_t>((rate >> 8) & 255);
        p[12] = static_cast<uint8_t>(i & 255);
        p[43] = 1;
        p[44] = 5;
        const auto f = buildFrame(121, p);
        out.insert(out.end(), f.begin(), f.end());
    }
    return out;
}

void BM_DirectMessageThroughMainWindow(benchmark::State& state)
{
    QTemporaryDir dir;
    test::FakeSerialPort port;
    test::ScriptedDialogs dialogs;
    dialogs.failOnUnexpected = false;
    test::FakeKeyState keys;
    Application program(port, dialogs, keys);
    CommsLink& comms = program.comms;
    MainEntry& main = program.main;
    TelemetrySetup& logging = program.logging;
    program.graph.resize(1400, 800);
    logging.LogFileName->setText(QDir(dir.path()).filePath("Run1.csv"));
    program.Form_Load();
    logging.StartLog_Click();
    // 50 messages, then the two 500 ms ticks that would have come meanwhile (the quality
    // count is a 16-bit figure the tick resets).
    const int n = 50;
    const auto stream = directStream(n);
    for (auto _ : state) {
        port.deliver(stream, 512);
        main.CommsQualityTmr_Timer();
        comms.CommsTimeout_Timer();
    }
    const long long lines = logging.log().LinesLogged();
    logging.StopLog_Click();
    // Every message must have gone the whole way, or the figure means nothing.
    if (lines != static_cast<long long>(state.iterations()) * n)
        state.SkipWithError(("only " + std::to_string(lines) + " log lines").c_str());
    state.counters["messages/s"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * n, benchmark::Counter::kIsRate);
}
BENCHMARK(BM_DirectMessageThroughMainWindow)->Unit(benchmark::kMillisecond);

} // namespace
