// Cost of drawing the tuning graph into its backing image, on a 1200 x 600 graph:
//  - one new sample as the capture draws it with "Disp Clear" off (the cursor, two
//    erased and two new segments), with the painter kept open between samples as it is
//    between screen frames, and with a painter begun and ended for every sample;
//  - the same through the whole capture path, the two redraws per sweep included, without
//    and with a 60 s reference sweep pinned behind the live traces;
//  - a full redraw of a 60 s sweep (6001 samples, 12000 segments, grid, labels);
//  - the widget's blit of the image to the screen.
// Run offscreen; figures are for comparison within one run.
#include "tuning/graph_view_window.h"
#include "tuning/graph_win_model.h"
#include "tuning/qt_image_canvas.h"
#include "tuning/standalone_context.h"

#include <QApplication>
#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <vector>

namespace {

using namespace kdx;

constexpr int kWidth = 1200;
constexpr int kHeight = 600;

struct Rig {
    QtImageCanvas canvas;
    FixedGainStore store{GainSet{}, false};
    FixedAnswerDialogs dialogs{Answer::No};
    NoShiftKey keys;
    std::unique_ptr<GraphWinModel> model;
    Rig()
    {
        canvas.resize(kWidth, kHeight);
        model = std::make_unique<GraphWinModel>(canvas, store, dialogs, keys);
    }
    // A full sweep of both channels in the buffer, as the previous sweep to erase.
    void fillSweep(double phase)
    {
        TraceBuffer& t = model->traces();
        for (int i = 0; i < kTraceLength; ++i) {
            t.RateTrace[i] = static_cast<float>(20 * std::sin(i * 0.01 + phase));
            t.ErrorTrace[i] = static_cast<float>(std::cos(i * 0.03 + phase));
            t.PrevRateTrace[i] = static_cast<float>(25 * std::sin(i * 0.013));
            t.PrevErrorTrace[i] = static_cast<float>(1.5 * std::cos(i * 0.021));
        }
    }
};

// The drawing of one new sample, exactly the calls the capture makes for it with
// "Disp Clear" off. Argument 1: a painter is begun and ended for every sample (a screen
// repaint between every two samples), the worst case; 0: the painter stays open.
void BM_NewSampleDrawing(benchmark::State& state)
{
    Rig rig;
    rig.model->capture().TraceDurationcb_Click(1); // 10 s: 1000 samples across 1200 pixels
    rig.fillSweep(0.5);
    const bool flushEach = state.range(0) == 1;
    GraphRenderer& g = rig.model->renderer();
    const TraceBuffer& t = rig.model->traces();
    int i = 1;
    for (auto _ : state) {
        const double x0 = i - 1, x1 = i;
        g.DrawSweepCursor(x1);
        g.DrawTraceSegment(x0, x1, t.PrevRateTrace[i - 1], t.PrevRateTrace[i], 0, true);
        g.DrawTraceSegment(x0, x1, t.PrevErrorTrace[i - 1], t.PrevErrorTrace[i], 1, true);
        g.DrawTraceSegment(x0, x1, t.RateTrace[i - 1], t.RateTrace[i], 0, false);
        g.DrawTraceSegment(x0, x1, t.ErrorTrace[i - 1], t.ErrorTrace[i], 1, false);
        if (flushEach) rig.canvas.flush();
        if (++i > 1000) i = 1;
    }
    rig.canvas.flush();
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_NewSampleDrawing)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

// Steady repeat capture of 10 s sweeps through the model, both motors per message as the
// telemetry decoder reports them, "Disp Clear" off; the two redraws per sweep (half time
// and one sample before the end) are included, amortised over the sweep. Argument 1:
// a 60 s sweep is pinned as the reference, so every redraw draws it too.
void BM_CaptureSampleOnImage(benchmark::State& state)
{
    Rig rig;
    rig.model->capture().DisplayClearcb_Click(); // off
    if (state.range(0) == 1) {
        std::vector<float> rate(kTraceLength), error(kTraceLength);
        for (int i = 0; i < kTraceLength; ++i) {
            rate[i] = static_cast<float>(25 * std::sin(i * 0.013));
            error[i] = static_cast<float>(1.5 * std::cos(i * 0.021));
        }
        rig.model->review().setCurrent(rate, error, GainSet{});
        rig.model->review().Pin();
    }
    long long n = 0;
    for (auto _ : state) {
        const double t = static_cast<double>(n++) * 0.01;
        rig.model->PutSample(0, 20 * std::sin(t), static_cast<float>(std::cos(3 * t)));
        rig.model->PutSample(1, 0.0, 0.0f);
        // A screen frame every other sample (100 samples/s against 60 frames/s).
        if (n % 2 == 0) rig.canvas.flush();
    }
    rig.canvas.flush();
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_CaptureSampleOnImage)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

// RedrawTraces of a full 60 s sweep, the image complete (painter ended) at the end.
void BM_RedrawFullSweep(benchmark::State& state)
{
    Rig rig;
    rig.model->capture().TraceDurationcb_Click(3);
    rig.fillSweep(0.0);
    rig.model->traces().Capturing = false;
    for (auto _ : state) {
        rig.model->renderer().RedrawTraces();
        rig.canvas.flush();
    }
}
BENCHMARK(BM_RedrawFullSweep)->Unit(benchmark::kMillisecond);

// The widget's paint: the whole image blitted to the window's backing store.
void BM_BlitToScreen(benchmark::State& state)
{
    GraphView view;
    view.resize(kWidth, kHeight);
    view.show();
    QApplication::processEvents();
    for (auto _ : state) view.repaint();
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_BlitToScreen)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
