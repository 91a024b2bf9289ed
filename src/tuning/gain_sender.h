#pragma once
// The motor drive the tuning window takes over: the gain message of the selected motor,
// and the end of a direction test that would fight the gains.
namespace kdx {

class GainSender {
public:
    virtual ~GainSender() = default;
    // The gain message, direct or relayed by the target mode; MotorIndex is 0 or 1.
    virtual void SendPID(float P, float I, float IA, float D, float G, float V1, float V2, int MotorIndex) = 0;
    // Ends both motors' direction tests; a motor switched off stays off.
    virtual void CancelTest() = 0;
};

} // namespace kdx
