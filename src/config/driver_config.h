#pragma once
// The driver configuration as the main window holds it: the memory image, the
// parameter set in engineering units, the reverse check boxes, the copy of the debug
// identifier and the two flags. It converts between image and parameters, formats
// every parameter label and implements the gain accessors the tuning window uses.
// It draws nothing: the window registers two handlers and paints when they run.
#include "config/memory_image.h"
#include "config/param_label.h"
#include "config/param_set.h"

#include <array>
#include <cstdint>
#include <functional>
#include <string>

namespace kdx {

class DriverConfig {
public:
    // Runs wherever the system refreshes the parameter labels; the window re-reads
    // every caption() it shows.
    void setRefreshHandler(std::function<void()> handler) { refresh_ = std::move(handler); }
    // Runs on every SetDataModified call, with its flag: the window paints
    // WriteConfigcb green and shows "Write to Apply" for true, grey for false.
    void setDataModifiedHandler(std::function<void(bool)> handler) { modified_ = std::move(handler); }

    MemoryImage& image() { return image_; }
    const MemoryImage& image() const { return image_; }
    ParamSet& params() { return params_; }
    const ParamSet& params() const { return params_; }

    // Reversecb(motor): true when checked. Motor other than 0/1 raises the subscript error.
    bool reverse(int motor) const;
    void setReverse(int motor, bool checked);
    // Reversecb_Click: takes the box's new state and marks the data modified.
    void Reversecb_Click(int motor, bool checked);

    // The copy of image element 0 (the module's debug identifier), taken by ImageToParams
    // and changed by the DebIDtb entry. ParamsToImage does not write it back.
    int16_t debugId() const { return debugId_; }
    void setDebugId(int16_t id) { debugId_ = id; }

    // Image -> parameter set (both motors), then RefreshParamDisplay, then
    // SetDataModified(false). A host error stops it; values set before it stay.
    void ImageToParams();
    // Parameter set -> image in the module's write order, then the checksum element.
    // A frequency of 0 raises division by zero, an unrepresentable value the overflow
    // error; elements written before the fault keep their new values.
    void ParamsToImage();
    // Runs the refresh handler.
    void RefreshParamDisplay();
    // Ends a completed memory read or file load: ImageToParams, RefreshParamDisplay
    // again, and the gains-loaded flag.
    void acceptNewImage();

    // The caption the label shows for a motor (DebIDtb ignores the motor).
    std::string caption(ParamLabel label, int motor) const;
    // The parameter-set value behind the label, exactly as held (Hz for Freqtb).
    double value(ParamLabel label, int motor) const;

    // Gain accessors for the tuning window. Motor other than 0/1 raises the subscript
    // error. Every setter stores a 32-bit float and refreshes; only PutP also marks the
    // data modified (kept: the other gains are adjusted live and written separately).
    float GetP(int motor) const;
    float GetI(int motor) const;
    float GetIA(int motor) const;
    float GetD(int motor) const;
    float GetV1(int motor) const;
    float GetV2(int motor) const;
    float GetG(int motor) const;
    void PutP(float value, int motor);
    void PutI(float value, int motor);
    void PutIA(float value, int motor);
    void PutD(float value, int motor);
    void PutV1(float value, int motor);
    void PutV2(float value, int motor);
    void PutG(float value, int motor);

    bool GetDataModified() const { return DataModified; }
    void SetDataModified(bool flag);
    bool GetGainsHaveBeenLoaded() const { return gainsLoaded_; }

private:
    void putGain(std::array<float, 2> ParamSet::*gain, float value, int motor);
    void motorToParams(int motor);
    void motorToImage(int motor);

    MemoryImage image_{};
    ParamSet params_{};
    std::array<bool, 2> reverse_{};
    int16_t debugId_ = 0;
    bool DataModified = false;
    bool gainsLoaded_ = false;
    std::function<void()> refresh_;
    std::function<void(bool)> modified_;
};

// Axistb's text for an axis value: 0 "Tilt", 1 "Roll", 2 "Pan", anything else "Off".
std::string axisCaption(double axis);

} // namespace kdx
