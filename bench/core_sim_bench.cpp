// The simulated module's speed when it writes recordings: simulated seconds produced
// per second of wall time (reported as sim_s_per_s), direct KDX and Q-Vane. Timed by
// the wall clock, so a busy machine shows as a lower figure.
#include "sim/recording.h"
#include "sim/simulator.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

namespace {

constexpr double kSecondsPerRun = 10.0;
constexpr double kSecondsPerFile = 60.0; // a typical recording; its fsync is paid once

void recordInMemory(benchmark::State& state)
{
    kdx::sim::SimOptions options;
    options.qvane = state.range(0) != 0;
    std::size_t bytes = 0;
    double simulated = 0;
    for (auto _ : state) {
        kdx::sim::Simulator sim(options);
        kdx::sim::runRecording(sim, kSecondsPerRun, [&](std::span<const uint8_t> chunk) {
            bytes += chunk.size();
            benchmark::DoNotOptimize(chunk.data());
        });
        simulated += kSecondsPerRun;
    }
    state.counters["sim_s_per_s"] = benchmark::Counter(simulated, benchmark::Counter::kIsRate);
    state.SetBytesProcessed(static_cast<int64_t>(bytes));
    state.SetLabel(options.qvane ? "Q-Vane" : "KDX");
}
BENCHMARK(recordInMemory)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();

// The whole of `kdxctl sim --record`: model, framing and the file written and renamed.
void recordToFile(benchmark::State& state)
{
    kdx::sim::SimOptions options;
    options.qvane = state.range(0) != 0;
    const std::string path = "/tmp/kdx_sim_bench_" + std::to_string(state.range(0)) + ".bin";
    double simulated = 0;
    for (auto _ : state) {
        std::string error;
        if (kdx::sim::writeRecording(options, kSecondsPerFile, path, error) < 0) {
            state.SkipWithError(error.c_str());
            break;
        }
        simulated += kSecondsPerFile;
    }
    std::remove(path.c_str());
    state.counters["sim_s_per_s"] = benchmark::Counter(simulated, benchmark::Counter::kIsRate);
    state.SetLabel(options.qvane ? "Q-Vane" : "KDX");
}
BENCHMARK(recordToFile)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
