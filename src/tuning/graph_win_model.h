#pragma once
// Everything the Tuning Display (GraphWin) does that needs no widget, in one object the
// window owns: the trace buffer, the graph renderer drawing on the window's canvas, the
// capture and trigger state, the gain panel, and the tuning files. The window forwards
// its events here and then paints the faces (capture().faces(), gains().faces()).
#include "platform/dialogs.h"
#include "platform/key_state.h"
#include "tuning/gain_panel.h"
#include "tuning/gain_store.h"
#include "tuning/graph_canvas.h"
#include "tuning/graph_renderer.h"
#include "tuning/sweep_review.h"
#include "tuning/trace_buffer.h"
#include "tuning/trace_capture.h"
#include "tuning/tuning_file.h"

#include <cstdint>
#include <span>
#include <string>

namespace kdx {

class GraphWinModel {
public:
    // All four are referenced and must outlive the model. Sets up the opening state
    // (Form_Load): "Disp Clear" on, Repeat armed, default scale, 10 s sweeps.
    GraphWinModel(GraphCanvas& canvas, GainStore& store, Dialogs& dialogs, const KeyState& keys);
    GraphWinModel(const GraphWinModel&) = delete;
    GraphWinModel& operator=(const GraphWinModel&) = delete;

    TraceBuffer& traces() { return traces_; }
    const TraceBuffer& traces() const { return traces_; }
    GraphRenderer& renderer() { return renderer_; }
    TraceCapture& capture() { return capture_; }
    const TraceCapture& capture() const { return capture_; }
    GainPanel& gains() { return gains_; }
    const GainPanel& gains() const { return gains_; }
    // The latest sweep's numbers and the pinned reference.
    SweepReview& review() { return review_; }

    // From the telemetry decoder, once per cyclic message for each motor.
    void PutSample(int32_t Motor, double RateValue, float ErrorValue);
    // From the link's receive time-out: warns when modified gains were in use (the main
    // window's or this window's). Capture is not touched.
    void PutCommsJustWentBad(bool mainDataModified);
    // Motor buttons: the gain panel's selection, and the graph records that motor.
    void MotorSelcb_Click(int index);
    void Form_KeyDown(int keyCode) { capture_.Form_KeyDown(keyCode); }
    bool GetDataModified() const { return gains_.GetDataModified(); }

    // The save/load dialogs' set-up.
    static FileDialogRequest traceFileRequest();
    // Save button and menu: asks for a name (cancel does nothing), then SaveTraceFile.
    void SaveTracecb_Click();
    // Writes the file atomically; on failure shows "Error writing trace file: " + the
    // reason and returns false.
    bool SaveTraceFile(const std::string& path);
    // The bytes a save writes: samples 0 .. the last captured index, the panel's gains.
    std::string traceFileText() const;
    // Load button and menu: asks for a name (cancel does nothing), then LoadTraceFile.
    void LoadTracecb_Click();
    // Loads a named file (also LoadTuningFileOnInit). False, after the "File Read" box
    // naming the file and the reason, when it cannot be read or holds no tuning data.
    bool LoadTraceFile(const std::string& path);
    // Loads tuning-file bytes: capture stopped, buffer filled, gains into memory #1,
    // duration chosen to show every loaded sample, graph and panel refreshed; the file's
    // samples, every line of it, become the latest sweep to measure.
    TuningFileLoad LoadTraceBytes(std::span<const uint8_t> bytes);

private:
    Dialogs& dialogs_;
    TraceBuffer traces_;
    GraphRenderer renderer_;
    TraceCapture capture_;
    GainPanel gains_;
    SweepReview review_;
};

} // namespace kdx
