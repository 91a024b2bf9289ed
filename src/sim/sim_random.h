#pragma once
// The simulated module's random source: xoshiro256** seeded through splitmix64, with
// its own normal draws, so that a seed gives the same run on every compiler and
// standard library (std::normal_distribution does not promise that).
#include <array>
#include <cmath>
#include <cstdint>

namespace kdx::sim {

class SimRandom {
public:
    explicit SimRandom(uint64_t seed)
    {
        uint64_t x = seed;
        for (auto& word : s_) {
            // splitmix64: spreads any seed, 0 included, over the whole state.
            x += 0x9E3779B97F4A7C15ull;
            uint64_t z = x;
            z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
            z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
            word = z ^ (z >> 31);
        }
    }

    uint64_t next()
    {
        const uint64_t result = rotl(s_[1] * 5, 7) * 9;
        const uint64_t t = s_[1] << 17;
        s_[2] ^= s_[0];
        s_[3] ^= s_[1];
        s_[1] ^= s_[2];
        s_[0] ^= s_[3];
        s_[2] ^= t;
        s_[3] = rotl(s_[3], 45);
        return result;
    }

    // Uniform in [0, 1), 53 bits.
    double uniform() { return static_cast<double>(next() >> 11) * 0x1.0p-53; }
    double uniform(double lo, double hi) { return lo + (hi - lo) * uniform(); }

    // Standard normal (Box-Muller, both values used).
    double normal()
    {
        if (hasSpare_) {
            hasSpare_ = false;
            return spare_;
        }
        double u1 = uniform();
        if (u1 < 1e-300) u1 = 1e-300;
        const double u2 = uniform();
        const double r = std::sqrt(-2.0 * std::log(u1));
        const double a = 6.283185307179586 * u2;
        spare_ = r * std::sin(a);
        hasSpare_ = true;
        return r * std::cos(a);
    }

    // A cheap near-normal draw (sum of four uniforms, unit variance) for sensor noise,
    // where the shape of the tails does not matter.
    double roughNormal()
    {
        const uint64_t v = next();
        double sum = 0.0;
        for (int i = 0; i < 4; ++i) sum += static_cast<double>((v >> (16 * i)) & 0xFFFF);
        return (sum / 65536.0 - 2.0) * 1.7320508075688772; // variance of the sum is 4/12
    }

private:
    static uint64_t rotl(uint64_t x, int k) { return (x << k) | (x >> (64 - k)); }

    std::array<uint64_t, 4> s_{};
    double spare_ = 0.0;
    bool hasSpare_ = false;
};

} // namespace kdx::sim
