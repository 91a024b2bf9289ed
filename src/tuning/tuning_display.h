#pragma once
// What the main window asks of the tuning display: the samples of the live values, the
// gain message switched off, the second motor's presence, the input indicator, a tuning
// file named at start-up, and whether tuned gains wait to go into the configuration.
#include <string>

namespace kdx {

class TuningDisplay {
public:
    virtual ~TuningDisplay() = default;
    // One telemetry sample of a motor (0 or 1): axis rate and axis error.
    virtual void PutSample(int motor, float rate, float error) = 0;
    // Unticks "Enab" and stops the gain message; the flag is ignored, every call disables.
    virtual void SetEnable(bool flag) = 0;
    virtual void SetSecondMotorVisible(bool visible) = 0;
    virtual void SetInputValid(bool valid) = 0;
    virtual void LoadTuningFileOnInit(const std::string& path) = 0;
    // Tuned gains not yet written back to the configuration.
    virtual bool GetDataModified() const = 0;
};

} // namespace kdx
