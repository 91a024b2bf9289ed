// The tuning metrics of a full 60 s sweep (6001 samples): what the Tuning Display and
// kdxctl analyse compute per sweep, with a budget of 1 ms. The sweep is the simulated
// tilt axis with the tuning drive stepping its set point, sampled as its telemetry is.
#include "sim/kdx_model.h"
#include "tuning/sweep_metrics.h"
#include "tuning/trace_buffer.h"

#include <benchmark/benchmark.h>

#include <vector>

namespace {

void BM_SweepMetrics6001(benchmark::State& state)
{
    kdx::sim::KdxAxis axis(kdx::sim::axisPhysics(kdx::sim::AxisKind::Tilt), 7);
    axis.setTuningDrive(true);
    std::vector<float> rate, error;
    for (int i = 0; rate.size() < kdx::kTraceLength; ++i) {
        axis.step(12.6);
        if (i % 10 == 9) {
            rate.push_back(static_cast<float>(axis.report().rate));
            error.push_back(static_cast<float>(axis.report().error));
        }
    }
    int steps = 0;
    for (auto _ : state) {
        const kdx::SweepMetrics m = kdx::analyseSweep(rate, error);
        steps = m.step ? m.step->steps : 0;
        benchmark::DoNotOptimize(m);
    }
    state.counters["steps"] = steps;
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_SweepMetrics6001)->Unit(benchmark::kMicrosecond);

} // namespace
