#include "tuning/trace_capture.h"

#include "core/host_numeric.h"
#include "tuning/tuning_texts.h"

#include <algorithm>

namespace kdx {

TraceCapture::TraceCapture(TraceBuffer& traces, GraphRenderer& renderer) : traces_(traces), renderer_(renderer) {}

void TraceCapture::Form_Load()
{
    renderer_.PutYAxisMinMax(0, 100.0f, 0);
    renderer_.PutYAxisMinMax(0, 100.0f, 1);
    renderer_.PutXAxisMinMax(0, 100.0f);
    traces_.TraceSeconds = 10.0f;
    traces_.DisplayClear = false;
    DisplayClearcb_Click(); // so the window opens with "Disp Clear" on
    AutoScale_ = false;
    ResetTrigger();
    RepeatTrigcb_Click();
    renderer_.SetDefaultScale();
    TraceDurationcb_Click(kDuration10s);
}

void TraceCapture::PutSample(int32_t Motor, double RateValue, float ErrorValue)
{
    armTrigger();
    if (Motor == SelectedMotor_ && traces_.Capturing) storeSample(RateValue, ErrorValue);
}

void TraceCapture::armTrigger()
{
    if (TraceStopped_ || traces_.Capturing) return;
    if (TriggerMode_ == trigger_mode::Repeat) {
        traces_.Capturing = true;
        SweepStartPending_ = true;
    } else if (TriggerMode_ == trigger_mode::Single) {
        traces_.Capturing = true;
        SweepStartPending_ = true;
        TriggerMode_ = trigger_mode::None; // one shot consumed
    }
}

void TraceCapture::storeSample(double rate, float error)
{
    if (TraceStopped_) return; // a frozen sweep resumes at the same index
    TraceBuffer& t = traces_;
    const int i = t.SampleIndex;
    const float r = toSingle(rate);
    // Kept as designed: the pair lands at the current index even when it then starts a
    // new sweep, so a sweep's first sample also overwrites the previous closing one.
    at(t.RateTrace, i) = r;
    at(t.ErrorTrace, i) = error;
    if (i > t.ValidEnd) t.ValidEnd = static_cast<int16_t>(i);

    if (SweepStartPending_) {
        t.SampleIndex = 0;
        t.RateTrace[0] = r;
        t.ErrorTrace[0] = error;
        t.SweepStartValues = {rate, error};
        if (t.DisplayClear) renderer_.InitGraphFull();
        else renderer_.InitGraphPartial();
        SweepStartPending_ = false;
    } else {
        const double x0 = i - 1, x1 = i;
        if (!t.DisplayClear) {
            // Overwriting the old sweep in place: wipe it just ahead of the new point.
            renderer_.DrawSweepCursor(x1);
            renderer_.DrawTraceSegment(x0, x1, at(t.PrevRateTrace, i - 1), t.PrevRateTrace[i], 0, true);
            renderer_.DrawTraceSegment(x0, x1, t.PrevErrorTrace[i - 1], t.PrevErrorTrace[i], 1, true);
        }
        renderer_.DrawTraceSegment(x0, x1, at(t.RateTrace, i - 1), t.RateTrace[i], 0, false);
        renderer_.DrawTraceSegment(x0, x1, t.ErrorTrace[i - 1], t.ErrorTrace[i], 1, false);
    }

    if (t.SampleIndex < t.TraceSamples) {
        ++t.SampleIndex;
        // Rescale (or redraw) at half time and one sample before the end.
        if (t.SampleIndex == t.TraceSamples / 2.0 || t.SampleIndex == t.TraceSamples - 1)
            renderer_.ApplyScale(AutoScale_);
    } else {
        ResetTrigger();
        const int last = t.TraceSamples;
        at(t.PrevRateTrace, last);
        std::copy_n(t.RateTrace.begin(), last + 1, t.PrevRateTrace.begin());
        std::copy_n(t.ErrorTrace.begin(), last + 1, t.PrevErrorTrace.begin());
        if (onSweepEnd_) onSweepEnd_();
    }
}

void TraceCapture::ResetTrigger()
{
    traces_.Capturing = false;
    faces_.NowTrigcb = colours::LightGrey;
}

void TraceCapture::RepeatTrigcb_Click()
{
    if (TriggerMode_ != trigger_mode::Repeat) {
        faces_.RepeatTrigcb = colours::Green;
        faces_.NowTrigcb = colours::LightGrey;
        TriggerMode_ = trigger_mode::Repeat;
    } else {
        faces_.RepeatTrigcb = colours::LightGrey;
        TriggerMode_ = trigger_mode::None;
    }
}

void TraceCapture::NowTrigcb_Click()
{
    if (traces_.Capturing) {
        // The running sweep still completes; nothing re-arms after it.
        TriggerMode_ = trigger_mode::None;
        faces_.RepeatTrigcb = colours::LightGrey;
        faces_.NowTrigcb = colours::LightGrey;
    } else {
        faces_.RepeatTrigcb = colours::LightGrey;
        faces_.NowTrigcb = colours::Green;
        TriggerMode_ = trigger_mode::Single;
    }
}

void TraceCapture::StopTracecb_Click()
{
    TraceStopped_ = !TraceStopped_;
    if (TraceStopped_) {
        faces_.StopTracecb = colours::Green;
        faces_.StopTracecbCaption = tuning_text::StartCaption;
    } else {
        faces_.StopTracecb = colours::Red;
        faces_.StopTracecbCaption = tuning_text::StopCaption;
    }
}

void TraceCapture::Form_KeyDown(int keyCode)
{
    if (keyCode == kSpaceKey) StopTracecb_Click();
}

void TraceCapture::selectDuration(int index)
{
    const TraceDuration& d = at(kTraceDurations, index);
    for (int k = 0; k < 4; ++k) faces_.TraceDurationcb[k] = k == index ? colours::Green : colours::LightGrey;
    traces_.TraceSeconds = d.seconds;
    traces_.TraceSamples = d.samples;
    renderer_.PutXAxisMinMax(0, d.samples);
}

void TraceCapture::TraceDurationcb_Click(int index)
{
    // A running sweep carries on towards the new end point.
    selectDuration(index);
    renderer_.RedrawTraces();
}

void TraceCapture::DisplayClearcb_Click()
{
    traces_.DisplayClear = !traces_.DisplayClear;
    faces_.DisplayClearcb = traces_.DisplayClear ? colours::Green : colours::LightGrey;
    faces_.DisplayClearcbCaption = traces_.DisplayClear ? tuning_text::DisplayClearOn : tuning_text::DisplayClearOff;
    renderer_.ApplyScale(AutoScale_);
}

void TraceCapture::AutoScalecb_Click()
{
    // Turning it off keeps the last automatic ranges until "Default".
    AutoScale_ = !AutoScale_;
    faces_.AutoScalecb = AutoScale_ ? colours::Green : colours::LightGrey;
    renderer_.ApplyScale(AutoScale_);
}

void TraceCapture::DefaultScalecb_Click() { renderer_.SetDefaultScale(); }

void TraceCapture::StopForLoad()
{
    TriggerMode_ = trigger_mode::None;
    faces_.RepeatTrigcb = colours::LightGrey;
    ResetTrigger();
    SweepStartPending_ = false;
    traces_.ClearPrevTraces();
    traces_.SampleIndex = 0; // the buffer itself keeps what the file does not overwrite
}

void TraceCapture::ShowLoaded(int lastIndex)
{
    lastIndex = std::clamp(lastIndex, 0, kTraceLength - 1);
    traces_.SampleIndex = static_cast<int16_t>(lastIndex);
    traces_.ValidEnd = traces_.SampleIndex;
    int index = 0;
    while (index < 3 && kTraceDurations[index].samples < lastIndex) ++index;
    selectDuration(index);
    renderer_.ApplyScale(AutoScale_);
}

} // namespace kdx
