#pragma once
// The gain panel of the Tuning Display: the seven tuning values of one motor, their
// entry prompts and step buttons with the clamps, the voltage lock, four memories (and
// a fifth without buttons) with undo of the last store, and the exchange with the main
// window's parameter set. Handlers update the state and the control faces; the window
// paints the faces and runs GainMsgTmr while gainMsgEnabled() holds.
#include "core/colour.h"
#include "platform/dialogs.h"
#include "platform/key_state.h"
#include "tuning/gain_set.h"
#include "tuning/gain_store.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace kdx {

enum class GainClamp { None, Gain, G };

// One row of the panel: its value label, entry prompt and range, whether the label
// click needs an active panel, the two steps, the clamp after a step, the label format.
struct GainEntry {
    std::string_view label;
    std::string_view prompt;
    double min, max;
    bool needsActive;
    double fineStep, coarseStep; // button index 0 and 1
    GainClamp clamp;
    std::string_view format;
    bool percent; // "%" appended to the formatted number
};

constexpr std::array<GainEntry, kGainCount> kGainEntries = {{
    {"Ptb", "Enter new P term % -12800..12700", -12800, 12700, true, 1, 10, GainClamp::Gain, "0", true},
    {"Itb", "Enter new I term (-32000 .. 32000) ", -32000, 32000, true, 1, 10, GainClamp::Gain, "0", false},
    {"IAtb", "Enter new I angle (0..15.9) ", 0, 15.9375, true, 0.0625, 1, GainClamp::Gain, "0.00", false},
    {"Dtb", "Enter new D term (-12800%..12700%) ", -12800, 12700, true, 1, 10, GainClamp::Gain, "0", true},
    {"V1tb", "Enter Voltage (low)", 0, 42, false, 0.1, 1, GainClamp::None, "0.0", false},
    {"V2tb", "Enter Voltage (high)", 0, 42, false, 0.1, 1, GainClamp::None, "0.0", false},
    {"Gtb", "Enter new Gain % (-12800..12700) ", -12800, 12700, false, 1, 10, GainClamp::G, "0", true},
}};

constexpr const GainEntry& gainEntry(Gain g) { return kGainEntries[static_cast<int>(g)]; }

// A memory slot: the seven values and its in-use marker (0 empty, -1 holds a set).
struct GainMemory {
    GainSet values;
    float marker = 0;
    bool operator==(const GainMemory&) const = default;
};
constexpr int kGainMemories = 5; // slot 4 has no buttons and is never shown
constexpr int kGainMemoryButtons = 4;

struct GainPanelFaces {
    std::array<std::string, kGainCount> captions; // Ptb .. Gtb
    uint32_t SaveGaincb = colours::LightGrey;
    std::array<uint32_t, kGainMemoryButtons> MemStorecb = {colours::LightGrey, colours::LightGrey, colours::LightGrey,
                                                           colours::LightGrey};
    std::array<uint32_t, kGainMemoryButtons> MemReccb = {colours::LightGrey, colours::LightGrey, colours::LightGrey,
                                                         colours::LightGrey};
    std::array<uint32_t, 2> MotorSelcb = {colours::LightGrey, colours::LightGrey};
    uint32_t Enablecb = colours::LightGrey;
};

class GainPanel {
public:
    // All three are referenced and must outlive the panel.
    GainPanel(GainStore& store, Dialogs& dialogs, const KeyState& keys);

    // A click on a value label: the entry prompt, a range check, the display refresh.
    void ValueTb_Click(Gain which);
    // A value put in as if typed at its prompt: kept only within the prompt's range.
    void EnterValue(Gain which, double value);
    // Step buttons; index 0 is the fine step, 1 the coarse one.
    void Inccb_Click(Gain which, int index);
    void Deccb_Click(Gain which, int index);
    // `ticked` is the check box's state after the click.
    void LockVcb_Click(bool ticked);
    void Enablecb_Click(bool ticked);
    // Called by the main window: always unticks "Enab" and stops the gain message.
    void SetEnable(bool flag);
    // Store (with Shift held: undo the last store) and recall, slots 0..3.
    void MemStorecb_Click(int slot);
    void MemReccb_Click(int slot);
    // Store given values into a slot 0..4 without the display refresh (the file loader
    // refreshes once it is done).
    void StoreMemory(int slot, const GainSet& values);
    void Revertcb_Click();
    void SaveGaincb_Click();
    // Returns whether the motor was selected (there is a parameter set to tune).
    bool MotorSelcb_Click(int index);
    // Whether unsaved tuning changes may be dropped; asks the user when there are some.
    bool GoForUpdate();
    bool GetDataModified() const { return GainsModified_; }
    // Captions, modified state and memory colours from the current values.
    void RefreshDisplay();

    const GainSet& values() const { return values_; }
    int16_t MotorIndex() const { return MotorIndex_; }
    float VoltageOffset() const { return VoltageOffset_; }
    bool TuningActive() const { return TuningActive_; }
    bool Locked() const { return locked_; }
    // "Enab" ticked; GainMsgTmr runs exactly while this holds.
    bool gainMsgEnabled() const { return enabled_; }
    const GainMemory& memory(int slot) const { return at(memory_, slot); }
    const GainMemory& previousMemory(int slot) const { return at(previous_, slot); }
    const GainPanelFaces& faces() const { return faces_; }

private:
    void step(Gain which, int index, double sign);
    void accept(Gain which, double typed);
    void applyGainClamp();
    void applyGClamp();
    void takeFromMain();
    void storeInto(int slot, const GainSet& values);
    void setCaptions();

    GainStore& store_;
    Dialogs& dialogs_;
    const KeyState& keys_;

    GainSet values_;
    int16_t MotorIndex_ = 0;
    float VoltageOffset_ = 0;
    bool GainsModified_ = false;
    bool TuningActive_ = false;
    bool locked_ = false;
    bool enabled_ = false;
    std::array<GainMemory, kGainMemories> memory_{};
    std::array<GainMemory, kGainMemories> previous_{};
    GainPanelFaces faces_;
};

} // namespace kdx
