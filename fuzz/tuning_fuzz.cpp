// Tuning files (".btf") through the loader, as the tuning window loads one: the sweep
// into the trace buffer, the gains into memory #1, the duration and the graph redrawn;
// then what a user does next with loaded data (auto-scale, recall the loaded gains and
// send them). A host error abandons that step, as the event guard abandons a handler.
//
// Checked: the load never stores beyond the buffer or reports gains it did not finish;
// every line drawn has finite coordinates.
#include "core/host_error.h"
#include "link/frame.h"
#include "tuning/gain_message.h"
#include "tuning/graph_canvas.h"
#include "tuning/graph_win_model.h"
#include "tuning/standalone_context.h"
#include "tuning/tuning_file.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <span>

namespace {

using namespace kdx;

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "tuning_fuzz: %s\n", what);
    std::abort();
}

class CheckingCanvas : public GraphCanvas {
public:
    double width() const override { return 1000; }
    double height() const override { return 500; }
    void clear(uint32_t) override {}
    void line(double x0, double y0, double x1, double y1, uint32_t, double pen) override
    {
        if (!std::isfinite(x0) || !std::isfinite(y0) || !std::isfinite(x1) || !std::isfinite(y1) || !std::isfinite(pen))
            fail("a line with a coordinate that is not a number");
    }
    void axisLabels(int, const AxisLabels&) override {}
};

template <typename F>
void guardedStep(F&& step)
{
    try {
        step();
    } catch (const HostError&) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    CheckingCanvas canvas;
    // The main window's parameter set: one present, factory-like gains; every question
    // answered "Yes", every prompt and file dialog cancelled.
    FixedGainStore store(GainSet{100, 20, 2, 50, 15, 40, 100}, true);
    FixedAnswerDialogs dialogs(Answer::Yes);
    NoShiftKey keys;
    // A fresh window for every input, so a finding replays on its own.
    const auto model = std::make_unique<GraphWinModel>(canvas, store, dialogs, keys);

    TuningFileLoad load;
    guardedStep([&] { load = model->LoadTraceBytes(std::span<const uint8_t>(data, size)); });
    if (load.pairsStored < 0 || load.pairsStored > kTraceLength) fail("more pairs stored than the buffer holds");
    if (load.gains && !load.complete) fail("gains reported from a load that did not finish");
    if (!load.headerRead && (load.pairsStored > 0 || load.gains)) fail("data stored without a header");

    guardedStep([&] { model->capture().AutoScalecb_Click(); });
    guardedStep([&] { model->capture().DefaultScalecb_Click(); });
    if (load.gains) {
        guardedStep([&] { model->gains().MemReccb_Click(0); });
        guardedStep([&] {
            const GainSet& v = model->gains().values();
            OutMsgBuffer out{};
            buildGainMsg(out, v.P, v.I, v.IA, v.D, v.G, v.V1, v.V2, model->gains().MotorIndex());
            (void)frameBody(out);
        });
    }
    // What a save of this state would write.
    guardedStep([&] { (void)model->traceFileText(); });
    return 0;
}
