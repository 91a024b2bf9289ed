#pragma once
// The main window's gain accessors, as the gain panel uses them: the stored parameter
// set of a motor (0 or 1) and whether a parameter set is present at all.
namespace kdx {

class GainStore {
public:
    virtual ~GainStore() = default;
    virtual float GetP(int motor) const = 0;
    virtual float GetI(int motor) const = 0;
    virtual float GetIA(int motor) const = 0;
    virtual float GetD(int motor) const = 0;
    virtual float GetV1(int motor) const = 0;
    virtual float GetV2(int motor) const = 0;
    virtual float GetG(int motor) const = 0;
    virtual void PutP(float value, int motor) = 0;
    virtual void PutI(float value, int motor) = 0;
    virtual void PutIA(float value, int motor) = 0;
    virtual void PutD(float value, int motor) = 0;
    virtual void PutV1(float value, int motor) = 0;
    virtual void PutV2(float value, int motor) = 0;
    virtual void PutG(float value, int motor) = 0;
    virtual bool GetGainsHaveBeenLoaded() const = 0;
    // Whether the configuration holds changes not yet written to the module.
    virtual bool GetDataModified() const = 0;
};

} // namespace kdx
