#include "tuning/gain_panel.h"

#include "core/host_numeric.h"
#include "tuning/tuning_texts.h"

namespace kdx {

namespace {

// The step clamps are the program's own and differ from the typed ranges on purpose.
constexpr float kIMax = 255;
constexpr float kGainThreshold = 12700;
constexpr float kPAbove = 12800;   // kept: larger than its threshold
constexpr float kDGAbove = 2550;   // kept: D and G above the threshold drop to this
constexpr float kIAMax = 15.9375f; // 255 sixteenths
constexpr float kIASteps = 16;
constexpr float kGClampMax = 12700;

uint32_t onOff(bool on) { return on ? colours::Green : colours::LightGrey; }

} // namespace

GainPanel::GainPanel(GainStore& store, Dialogs& dialogs, const KeyState& keys)
    : store_(store), dialogs_(dialogs), keys_(keys)
{
    setCaptions();
}

void GainPanel::ValueTb_Click(Gain which)
{
    const GainEntry& e = gainEntry(which);
    if (e.needsActive && !TuningActive_) return;
    const float value = values_[which];
    // Kept as designed: the default is the whole-number rounding, so an empty reply (or
    // Cancel) rounds the value (an I angle of 3.5 becomes 4).
    const std::string proposed = Format(CLng(value), "0.0");
    const std::string reply = dialogs_.InputBox(std::string(e.prompt), std::string(tuning_text::EntryTitle), proposed);
    accept(which, Val(reply.empty() ? proposed : reply));
    RefreshDisplay();
}

void GainPanel::EnterValue(Gain which, double value)
{
    if (gainEntry(which).needsActive && !TuningActive_) return;
    accept(which, value);
    RefreshDisplay();
}

void GainPanel::accept(Gain which, double result)
{
    const GainEntry& e = gainEntry(which);
    if (!(result >= e.min && result <= e.max)) return;
    values_[which] = toSingle(result);
    if (which == Gain::V1 || which == Gain::V2) VoltageOffset_ = values_.V2 - values_.V1;
}

void GainPanel::Inccb_Click(Gain which, int index) { step(which, index, +1); }
void GainPanel::Deccb_Click(Gain which, int index) { step(which, index, -1); }

void GainPanel::step(Gain which, int index, double sign)
{
    if (!TuningActive_) return;
    // Any step puts the tuned gains into use at once.
    if (!enabled_) Enablecb_Click(true);
    const GainEntry& e = gainEntry(which);
    const std::array<double, 2> steps = {e.fineStep, e.coarseStep};
    float& value = values_[which];
    value = toSingle(value + sign * at(steps, index));
    if (locked_ && which == Gain::V1) values_.V2 = toSingle(values_.V1 + VoltageOffset_);
    if (locked_ && which == Gain::V2) values_.V1 = toSingle(values_.V2 - VoltageOffset_);
    if (e.clamp == GainClamp::Gain) applyGainClamp();
    if (e.clamp == GainClamp::G) applyGClamp();
    RefreshDisplay();
}

void GainPanel::applyGainClamp()
{
    GainSet& v = values_;
    if (v.I < 0) v.I = 0;
    if (v.I > kIMax) v.I = kIMax;
    if (v.P < 0) v.P = 0;
    if (v.P > kGainThreshold) v.P = kPAbove;
    if (v.D < 0) v.D = 0;
    if (v.D > kGainThreshold) v.D = kDGAbove;
    if (v.G < 0) v.G = 0;
    if (v.G > kGainThreshold) v.G = kDGAbove;
    v.IA = CInt(static_cast<double>(v.IA) * kIASteps) / kIASteps;
    if (v.IA < 0) v.IA = 0;
    if (v.IA > kIAMax) v.IA = kIAMax;
}

void GainPanel::applyGClamp()
{
    if (values_.G > kGClampMax) values_.G = kGClampMax;
    if (values_.G < 0) values_.G = 0;
}

void GainPanel::LockVcb_Click(bool ticked)
{
    locked_ = ticked;
    VoltageOffset_ = values_.V2 - values_.V1;
}

void GainPanel::Enablecb_Click(bool ticked)
{
    if (!TuningActive_) {
        enabled_ = false; // no gains to send: the box goes back to unticked
        return;
    }
    enabled_ = ticked;
    faces_.Enablecb = onOff(ticked);
}

void GainPanel::SetEnable(bool /*flag*/)
{
    // Kept as designed: every call disables, whatever the argument.
    enabled_ = false;
    faces_.Enablecb = colours::LightGrey;
}

void GainPanel::MemStorecb_Click(int slot)
{
    if (slot < 0 || slot >= kGainMemoryButtons) raiseSubscript();
    if (keys_.shiftDown()) {
        if (previous_[slot].marker != 0) memory_[slot] = previous_[slot];
    } else if (TuningActive_) {
        storeInto(slot, values_);
    }
    RefreshDisplay();
}

void GainPanel::StoreMemory(int slot, const GainSet& values) { storeInto(slot, values); }

void GainPanel::storeInto(int slot, const GainSet& values)
{
    GainMemory& m = at(memory_, slot);
    if (m.marker != 0) previous_[slot] = m;
    m.values = values;
    m.marker = -1.0f;
}

void GainPanel::MemReccb_Click(int slot)
{
    if (slot < 0 || slot >= kGainMemoryButtons) raiseSubscript();
    const GainMemory& m = memory_[slot];
    if (m.marker == 0) return;
    values_ = m.values; // the voltage offset is not renewed
    RefreshDisplay();
}

void GainPanel::takeFromMain()
{
    const int m = MotorIndex_;
    values_ = GainSet{store_.GetP(m),  store_.GetI(m),  store_.GetIA(m), store_.GetD(m),
                      store_.GetV1(m), store_.GetV2(m), store_.GetG(m)};
    VoltageOffset_ = values_.V2 - values_.V1;
    RefreshDisplay();
}

void GainPanel::Revertcb_Click() { takeFromMain(); }

void GainPanel::SaveGaincb_Click()
{
    // Into the main window's parameter set only; writing the module is its own command.
    const int m = MotorIndex_;
    store_.PutP(values_.P, m);
    store_.PutI(values_.I, m);
    store_.PutIA(values_.IA, m);
    store_.PutD(values_.D, m);
    store_.PutV1(values_.V1, m);
    store_.PutV2(values_.V2, m);
    store_.PutG(values_.G, m);
    RefreshDisplay();
}

bool GainPanel::MotorSelcb_Click(int index)
{
    if (index != 0 && index != 1) raiseSubscript();
    if (GainsModified_ && GoForUpdate()) SaveGaincb_Click(); // for the motor selected so far
    if (!store_.GetGainsHaveBeenLoaded()) return false;
    MotorIndex_ = static_cast<int16_t>(index);
    faces_.MotorSelcb[index] = colours::Green;
    faces_.MotorSelcb[1 - index] = colours::LightGrey;
    takeFromMain();
    TuningActive_ = true;
    return true;
}

bool GainPanel::GoForUpdate()
{
    if (!GainsModified_) return true;
    const Answer a = dialogs_.MsgBox(std::string(tuning_text::GainModifiedText), box::YesNo,
                                     std::string(tuning_text::GainModifiedTitle));
    if (a != Answer::Yes) return false;
    GainsModified_ = false;
    return true;
}

void GainPanel::setCaptions()
{
    for (Gain g : kAllGains) {
        const GainEntry& e = gainEntry(g);
        std::string text = Format(values_[g], e.format);
        if (e.percent) text += '%';
        faces_.captions[static_cast<int>(g)] = std::move(text);
    }
}

void GainPanel::RefreshDisplay()
{
    setCaptions();
    const int m = MotorIndex_;
    const GainSet stored{store_.GetP(m),  store_.GetI(m),  store_.GetIA(m), store_.GetD(m),
                         store_.GetV1(m), store_.GetV2(m), store_.GetG(m)};
    // Until a motor is selected the panel holds no motor's gains (a loaded tuning file
    // only fills a memory), so there is nothing it could differ from.
    GainsModified_ = TuningActive_ && values_ != stored;
    faces_.SaveGaincb = onOff(GainsModified_);
    for (int slot = 0; slot < kGainMemoryButtons; ++slot) {
        const GainMemory& mem = memory_[slot];
        if (mem.marker == 0) {
            faces_.MemReccb[slot] = colours::LightGrey;
        } else {
            // A Store button that once turned green stays green.
            faces_.MemStorecb[slot] = colours::Green;
            faces_.MemReccb[slot] = onOff(mem.values == values_);
        }
    }
}

} // namespace kdx
