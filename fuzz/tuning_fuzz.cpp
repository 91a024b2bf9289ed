// Tuning files (".btf") through the loader, as the tuning window loads one: read from
// disk by the window's own file-reading code, the sweep into the trace buffer, the gains
// into memory #1, the duration and the graph redrawn; then what a user does next with
// loaded data (auto-scale, recall the loaded gains and send them). A host error abandons
// that step, as the event guard abandons a handler.
//
// Checked: a file read from disk loads exactly as its bytes do, and a missing one
// changes nothing; the load never stores beyond the buffer or reports gains it did not
// finish; every line drawn has finite coordinates.
#include "core/host_error.h"
#include "fuzz_support.h"
#include "link/frame.h"
#include "tuning/gain_message.h"
#include "tuning/graph_win_model.h"
#include "tuning/standalone_context.h"
#include "tuning/tuning_file.h"

#include <memory>
#include <optional>
#include <span>

namespace {

using namespace kdx;

[[noreturn]] void fail(const char* what) { fuzz::fail("tuning", what); }

template <typename F>
void guardedStep(F&& step)
{
    try {
        step();
    } catch (const HostError&) {
    }
}

// The tuning window's model with the main window's parameter set: one present,
// factory-like gains; every question answered "Yes", every prompt and file dialog
// cancelled.
struct Window {
    fuzz::CheckingCanvas canvas{"tuning"};
    FixedGainStore store{GainSet{100, 20, 2, 50, 15, 40, 100}, true};
    FixedAnswerDialogs dialogs{Answer::Yes};
    NoShiftKey keys;
    GraphWinModel model{canvas, store, dialogs, keys};

    std::string state() const
    {
        std::string text;
        guardedStep([&] { text = model.traceFileText(); });
        return text + std::to_string(model.capture().faces().TraceDurationcb[0]) +
               std::to_string(model.gains().memory(0).marker);
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    // Fresh windows for every input, so a finding replays on its own.
    const auto fromDisk = std::make_unique<Window>();
    const auto window = std::make_unique<Window>();
    GraphWinModel* const model = &window->model;
    const std::string untouched = fromDisk->state();
    if (fromDisk->model.LoadTraceFile(fuzz::scratchDir() + "/missing.btf") || fromDisk->state() != untouched)
        fail("a missing file was loaded");

    // false: not read, or no tuning data in it (the window says so); a host error
    // abandons both loads alike.
    std::optional<bool> read;
    guardedStep([&] { read = fromDisk->model.LoadTraceFile(fuzz::writeScratchFile("input.btf", {data, size})); });
    TuningFileLoad load;
    bool loaded = false;
    guardedStep([&] {
        load = model->LoadTraceBytes(std::span<const uint8_t>(data, size));
        loaded = true;
    });
    if (read != (loaded ? std::optional<bool>(load.headerRead) : std::nullopt) || fromDisk->state() != window->state())
        fail("the file read from disk loads differently from its bytes");
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
