#pragma once
// Cyclic telemetry messages for tests, laid out by field: bytes[i] is InBuf(i) (0 the
// length, 1 the identifier), as the module's layout tables count.
#include "link/frame.h"

#include <cstdint>
#include <vector>

namespace kdx::test {

struct RawMotor {
    int rate = 0, error = 0, p = 0, i = 0, d = 0, elec = 0, power = 0, angle = 0; // words; power a byte
};

class CyclicBytes {
public:
    CyclicBytes(int id, int length) : bytes_(static_cast<std::size_t>(length), 0) { byte(0, length).byte(1, id); }
    static CyclicBytes direct(int length = 48) { return CyclicBytes(121, length); }
    static CyclicBytes relayed(int length = 25) { return CyclicBytes(122, length); }

    CyclicBytes& byte(int at, int value)
    {
        if (at < static_cast<int>(bytes_.size())) bytes_[static_cast<std::size_t>(at)] = static_cast<uint8_t>(value);
        return *this;
    }
    CyclicBytes& word(int at, int value) { return byte(at, value & 255).byte(at + 1, (value >> 8) & 255); }
    CyclicBytes& motor(int at, const RawMotor& m)
    {
        return word(at, m.rate)
            .word(at + 2, m.error)
            .word(at + 4, m.p)
            .word(at + 6, m.i)
            .word(at + 8, m.d)
            .word(at + 10, m.elec)
            .byte(at + 12, m.power)
            .word(at + 13, m.angle);
    }
    // As the receiver hands it on; the checksum byte is left 0.
    MsgView view()
    {
        for (std::size_t i = 0; i < bytes_.size(); ++i) buf_[i] = bytes_[i];
        return MsgView(buf_, static_cast<int>(bytes_.size()));
    }
    std::vector<uint8_t> frame(bool invertChecksum = false) const
    {
        return buildFrame(bytes_[1], std::vector<uint8_t>(bytes_.begin() + 2, bytes_.end() - 1), invertChecksum);
    }

private:
    std::vector<uint8_t> bytes_;
    InBuffer buf_{};
};

// Samples whose values exercise rounding and signs, and the log text they give.
inline CyclicBytes directSample()
{
    return CyclicBytes::direct()
        .motor(2, {-300, 64, 100, -1, 0, 16, 128, 0})
        .motor(17, {-32768, 32767, 3, -3, 1, -32, 255, 0})
        .byte(36, 100)
        .word(32, 3085);
}
inline CyclicBytes relayedSample(int axis)
{
    return CyclicBytes::relayed()
        .byte(2, axis)
        .motor(3, {128, -64, 640, 0, 32, 320, 64, 0})
        .byte(21, 45)
        .word(22, 12800)
        .word(18, 2816);
}

constexpr const char* kDirectHeader =
    "AxisRate0,AxisError0,Pcomp0,Icomp0,Dcomp0,ExtGain0%,ElecAngle0,Power0%,"
    "AxisRate1,AxisError1,Pcomp1,Icomp1,Dcomp1,ExtGain1%,ElecAngle1,Power1%,Voltage\r\n";
constexpr const char* kRelayedHeader =
    "Axis,AxisID,AxisAngle,AxisRate,AxisError,Pcomp,Icomp,Dcomp,ExtGain%,ElecAngle,Power%,Voltage\r\n";
constexpr const char* kDirectSampleLine =
    "-2.34,0.50,1.56,-0.02,0.00,100,0.3,50,-256.00,255.99,0.05,-0.05,0.02,0,-0.5,100,12.1\r\n";
// After the axis prefix ("Tilt,0," and so on).
constexpr const char* kRelayedSampleLine = "100.00,1.00,-0.50,10.00,0.00,0.50,45,5.0,25,11.0\r\n";

} // namespace kdx::test
