#pragma once
// The parameter set: one value per parameter and motor, in engineering units. Each
// member has the width the values carry, so display and write-back round exactly as
// the module's tools always have:
//  - float members hold 32-bit values. The byte-sized parameters (IRate, DTermLimit,
//    Poles, RecoveryAngle, QVaneAxis, FixedPosTrim) are whole numbers after a read but
//    keep the fraction of a typed entry (entering 2.5 as the axis shows "Off" and
//    writes back 130), so they are floats too; a float holds every 16-bit integer.
//  - PwmFreqHz and PowerErrorAngle are computed in 64-bit after a read.
#include <array>

namespace kdx {

struct ParamSet {
    std::array<double, 2> PwmFreqHz{};       // Hz
    std::array<float, 2> StaticPower{};      // %, gain "V1"
    std::array<float, 2> DynamicPower{};     // %, gain "V2"
    std::array<float, 2> PTerm{};            // %, gain "P"
    std::array<float, 2> IAngle{};           // degrees, gain "IA"
    std::array<float, 2> IRate{};            // gain "I"
    std::array<float, 2> DTerm{};            // %, gain "D"
    std::array<double, 2> PowerErrorAngle{}; // degrees
    std::array<float, 2> QVaneAxis{};        // 0 Tilt, 1 Roll, 2 Pan, 3 Off
    std::array<float, 2> DTermLimit{};       // 0 .. 255
    std::array<float, 2> Poles{};
    std::array<float, 2> GainPerc{};      // %, gain "G"
    std::array<float, 2> DriveRatio{};    // 3 means 3:1; 0 when the image holds 0
    std::array<float, 2> RecoveryAngle{}; // degrees, 0 disables recovery
    std::array<float, 2> FixedPosTrim{};  // degrees

    bool operator==(const ParamSet&) const = default;
};

} // namespace kdx
