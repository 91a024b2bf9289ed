#pragma once
// The capture side of the tuning graph: one sample pair per cyclic message, the trigger
// state machine, and the graph's buttons (trigger, STOP, duration, Disp Clear, scale).
// Each handler updates the state and the button faces; the window paints the faces.
#include "core/colour.h"
#include "tuning/graph_renderer.h"
#include "tuning/trace_buffer.h"

#include <array>
#include <cstdint>
#include <functional>
#include <string_view>

namespace kdx {

namespace trigger_mode {
constexpr int32_t None = 0;
constexpr int32_t Repeat = 2;
constexpr int32_t Single = 3;
} // namespace trigger_mode

struct TraceDuration {
    float seconds;   // TraceSeconds, as the time axis is labelled
    int16_t samples; // TraceSamples
};
// Trace5scb, Trace10scb, Trace30scb, Trace60scb. The shortest is 400 samples on purpose.
constexpr std::array<TraceDuration, 4> kTraceDurations = {{{4.0f, 400}, {10.0f, 1000}, {30.0f, 3000}, {60.0f, 6000}}};
constexpr int kDuration10s = 1;

// What the window paints on the graph's buttons.
struct CaptureFaces {
    uint32_t RepeatTrigcb = colours::LightGrey;
    uint32_t NowTrigcb = colours::LightGrey;
    uint32_t StopTracecb = colours::Red;
    std::string_view StopTracecbCaption = "STOP";
    std::array<uint32_t, 4> TraceDurationcb = {colours::LightGrey, colours::LightGrey, colours::LightGrey,
                                               colours::LightGrey};
    uint32_t DisplayClearcb = colours::LightGrey;
    std::string_view DisplayClearcbCaption = "Off";
    uint32_t AutoScalecb = colours::LightGrey;
    uint32_t DefaultScalecb = colours::LightGrey; // never lit: it acts once per click

    bool operator==(const CaptureFaces&) const = default;
};

class TraceCapture {
public:
    static constexpr int kSpaceKey = 32;

    // Both are referenced and must outlive the capture.
    TraceCapture(TraceBuffer& traces, GraphRenderer& renderer);

    // One sample of one motor, from the telemetry decoder: arms a pending trigger, then
    // stores and draws the pair if the motor is the selected one and a sweep runs.
    void PutSample(int32_t Motor, double RateValue, float ErrorValue);
    // Ends the sweep's recording and greys "Single".
    void ResetTrigger();

    void RepeatTrigcb_Click();
    void NowTrigcb_Click();
    void StopTracecb_Click();
    // index 0..3 in the order of kTraceDurations.
    void TraceDurationcb_Click(int index);
    void DisplayClearcb_Click();
    void AutoScalecb_Click();
    void DefaultScalecb_Click();
    // The space bar does what STOP does.
    void Form_KeyDown(int keyCode);

    // The window's opening state, in the order it is set up.
    void Form_Load();
    // Before a tuning file is read into the buffer: no sweep running or armed, both
    // trigger buttons grey, the previous sweep zeroed.
    void StopForLoad();
    // After a file has been read: the newest loaded index becomes the sweep's end, the
    // shortest duration that shows all loaded samples is selected, and the graph redrawn.
    void ShowLoaded(int lastIndex);

    void setSelectedMotor(int32_t motor) { SelectedMotor_ = motor; }
    // Called once a sweep has closed: its samples are 0..SampleIndex of the buffer.
    void setOnSweepEnd(std::function<void()> onSweepEnd) { onSweepEnd_ = std::move(onSweepEnd); }

    int32_t TriggerMode() const { return TriggerMode_; }
    bool SweepStartPending() const { return SweepStartPending_; }
    bool TraceStopped() const { return TraceStopped_; }
    bool AutoScale() const { return AutoScale_; }
    int32_t SelectedMotor() const { return SelectedMotor_; }
    const CaptureFaces& faces() const { return faces_; }

private:
    void armTrigger();
    void storeSample(double rate, float error);
    void selectDuration(int index);

    TraceBuffer& traces_;
    GraphRenderer& renderer_;
    int32_t TriggerMode_ = trigger_mode::None;
    bool SweepStartPending_ = false;
    bool TraceStopped_ = false;
    bool AutoScale_ = false;
    int32_t SelectedMotor_ = 0;
    CaptureFaces faces_;
    std::function<void()> onSweepEnd_;
};

} // namespace kdx
