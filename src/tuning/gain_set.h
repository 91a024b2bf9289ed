#pragma once
// The seven tuning values of one motor, as the gain panel, its memories, the gain
// message and the tuning files carry them.
#include "core/host_numeric.h"

#include <array>
#include <cstdint>

namespace kdx {

enum class Gain : int { P, I, IA, D, V1, V2, G };
constexpr int kGainCount = 7;
constexpr std::array<Gain, kGainCount> kAllGains = {Gain::P, Gain::I, Gain::IA, Gain::D, Gain::V1, Gain::V2, Gain::G};

struct GainSet {
    float P = 0;  // %
    float I = 0;  // raw units
    float IA = 0; // degrees, in sixteenths once clamped
    float D = 0;  // %
    float V1 = 0; // volts
    float V2 = 0; // volts
    float G = 0;  // %

    float& operator[](Gain g)
    {
        switch (g) {
        case Gain::P: return P;
        case Gain::I: return I;
        case Gain::IA: return IA;
        case Gain::D: return D;
        case Gain::V1: return V1;
        case Gain::V2: return V2;
        case Gain::G: return G;
        }
        raiseSubscript();
    }
    float operator[](Gain g) const { return const_cast<GainSet&>(*this)[g]; }
    // Exact comparison, as the panel's "modified" and "matches memory" tests use.
    bool operator==(const GainSet&) const = default;
};

} // namespace kdx
