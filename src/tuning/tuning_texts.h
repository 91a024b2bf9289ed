#pragma once
// Every text the Tuning Display shows: captions, tooltips, prompts, message boxes and the
// tuning file's fixed parts. Used to the letter, odd spellings and trailing blanks included.
#include <array>
#include <string_view>

namespace kdx::tuning_text {

constexpr std::string_view WindowCaption = "Tuning Display";

// Trigger, controls, duration and display frames.
constexpr std::string_view RepeatCaption = "Repeat";
constexpr std::string_view RepeatTip = "The trace will trigger continuously";
constexpr std::string_view SingleCaption = "Single";
constexpr std::string_view SingleTip = "Trigger now for a one-shot record";
constexpr std::string_view StopCaption = "STOP";
constexpr std::string_view StartCaption = "START";
constexpr std::string_view StopTip = "Stops the trace immediately";
constexpr std::array<std::string_view, 4> DurationTips = {"One trace shows 4s of data", "One trace shows 10s of data",
                                                          "One trace shows 30s of data", "One trace shows 60s of data"};
constexpr std::string_view DisplayClearOn = "On";
constexpr std::string_view DisplayClearOff = "Off";
constexpr std::string_view DisplayClearTip =
    "When on, the display is cleared after each sweep. When off, it is like a circular buffer.";
constexpr std::string_view EnableCaption = "Enab";
constexpr std::string_view EnableTip = "When green, the KDX will use these settings instead of the config settings";

// Graph.
constexpr std::string_view AxisRateCaption = "Axis Rate";
constexpr std::string_view AxisErrorCaption = "Axis Error";
constexpr std::string_view AutoScaleCaption = "Auto";
constexpr std::string_view AutoScaleTip = "Auto scales the Y axis";
constexpr std::string_view DefaultScaleCaption = "Default";
constexpr std::string_view DefaultScaleTip = "Sets the Y axis scale to the default range";
constexpr std::string_view FullWidthTip = "Expand the graph for the full width of the screen";

// Gain panel. Tooltips of the seven value fields, in the order P, I, IA, D, V1, V2, G
// (the I angle repeats the I term's text, as designed; "theshold" as designed).
constexpr std::array<std::string_view, 7> GainTips = {
    "Proportional Term (based on instantaneous error)",  "Integral term (based on any constant error)",
    "Integral term (based on any constant error)",       "Derivative component (based on rate)",
    "The voltage used when the position error is small", "The voltage used when the position error is > theshold",
    "The overall gain which affects P,I and D equally"};
constexpr std::string_view IAngleCaption = "I Angle";
constexpr std::string_view EntryTitle = "Gain Tuning Data Entry";
constexpr std::string_view LockCaption = "Lock";
constexpr std::string_view LockTip = "Locks V1 and V2 together so they increase/decrease the same";
constexpr std::string_view StoreCaption = "Store";
constexpr std::string_view StoreTip = "Stores the current gains settings into a temporary memory";
constexpr std::string_view RecallCaption = "Recall";
constexpr std::string_view RecallTip =
    "Recalls the temporary memory gain settings. Goes green when memory matches the current gain settings.";
constexpr std::string_view RevertCaption = "Revert";
constexpr std::string_view RevertTip = "Reverts the gain settings to the config memory settings";
constexpr std::string_view UpdateConfigCaption = "Update Config";
constexpr std::string_view UpdateConfigTip = "Write these settings to the main config window";
constexpr std::array<std::string_view, 2> MotorTips = {"Select motor #1", "Select motor #2"};

constexpr std::string_view GainModifiedText =
    "The Gain settings have been modified without saving to the main config window. Update them now ?";
constexpr std::string_view GainModifiedTitle = "Gain Modified";
constexpr std::string_view DisconnectedText =
    "Warning : Modified gain settings were being used which have not been written to the module.";
constexpr std::string_view DisconnectedTitle = "KDX Disconnected";

// Tuning files.
constexpr std::string_view SaveTraceCaption = "Save";
constexpr std::string_view SaveTraceTip = "Saves the current Tuning Display to a file.";
constexpr std::string_view LoadTraceCaption = "Load";
constexpr std::string_view LoadTraceTip =
    "Loads a display file for viewing. The Gain settings are also loaded into Memory #1.";
constexpr std::string_view FileFilter = "KDX Tuning Files (*.btf)|*.btf|All Files (*.*)|*.*";
constexpr std::string_view FileDefaultExt = "btf";
constexpr std::string_view FileHeader = "AxisRate, AxisError, P,I,IA,D,V1,V2,G,Spare1,Spare2";
constexpr std::string_view WriteErrorText = "Error writing trace file: ";
constexpr std::string_view WriteErrorTitle = "File Write";

} // namespace kdx::tuning_text
