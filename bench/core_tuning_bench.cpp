// Cost of the tuning graph's model: one new sample (capture, trigger, store, the draw
// calls) and a full redraw of a 6001-sample sweep, both against a canvas that draws
// nothing, so the figures are the model's own share of the per-sample budget.
#include "tuning/graph_win_model.h"
#include "tuning/standalone_context.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>

namespace {

using namespace kdx;

class NullCanvas : public GraphCanvas {
public:
    double width() const override { return 1200; }
    double height() const override { return 600; }
    void clear(uint32_t) override {}
    void line(double x0, double y0, double x1, double y1, uint32_t, double) override
    {
        ++lines;
        benchmark::DoNotOptimize(x0 + y0 + x1 + y1);
    }
    void axisLabels(int, const AxisLabels&) override {}
    long long lines = 0;
};

struct Rig {
    NullCanvas canvas;
    FixedGainStore store{GainSet{}, false};
    FixedAnswerDialogs dialogs{Answer::No};
    NoShiftKey keys;
    std::unique_ptr<GraphWinModel> model = std::make_unique<GraphWinModel>(canvas, store, dialogs, keys);
};

// Steady repeat capture of 10 s sweeps, both motors reported per message as the
// telemetry decoder does; includes the two rescaling redraws per sweep, amortised.
// Argument 0: "Disp Clear" on (two segments per sample); 1: off (cursor, two erased
// and two new segments per sample). Second argument 1 turns automatic scaling on.
void BM_SampleCaptureAndDraw(benchmark::State& state)
{
    Rig rig;
    if (state.range(0) == 1) rig.model->capture().DisplayClearcb_Click();
    if (state.range(1) == 1) rig.model->capture().AutoScalecb_Click();
    long long n = 0;
    for (auto _ : state) {
        const double t = static_cast<double>(n++) * 0.01;
        rig.model->PutSample(0, 20 * std::sin(t), static_cast<float>(std::cos(3 * t)));
        rig.model->PutSample(1, 0.0, 0.0f);
    }
    state.SetItemsProcessed(state.iterations());
    state.counters["lines/sample"] = benchmark::Counter(static_cast<double>(rig.canvas.lines) / static_cast<double>(n));
}
BENCHMARK(BM_SampleCaptureAndDraw)->Args({0, 0})->Args({1, 0})->Args({0, 1});

// Full redraw of a 60 s sweep (6001 samples, 12000 segments plus grid and labels).
void BM_RedrawFullSweep(benchmark::State& state)
{
    Rig rig;
    rig.model->capture().TraceDurationcb_Click(3);
    for (int i = 0; i < kTraceLength; ++i) {
        rig.model->traces().RateTrace[i] = static_cast<float>(20 * std::sin(i * 0.01));
        rig.model->traces().ErrorTrace[i] = static_cast<float>(std::cos(i * 0.03));
    }
    for (auto _ : state) rig.model->renderer().RedrawTraces();
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_RedrawFullSweep)->Unit(benchmark::kMicrosecond);

} // namespace
