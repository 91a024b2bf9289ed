#include "sim/telemetry_encoder.h"

#include "link/message_ids.h"

#include <algorithm>
#include <cmath>

namespace kdx::sim {

namespace {

// Field scales: the tool divides by these.
constexpr double kRateScale = 128, kErrorScale = 128, kAngleScale = 128;
constexpr double kComponentScale = 64, kElecScale = 64;
constexpr double kVoltScale = 256;

class Payload {
public:
    void byte(int v) { bytes_[n_++] = static_cast<uint8_t>(v & 0xFF); }
    void word(double value, double scale)
    {
        const double scaled = value * scale;
        const long v = std::isfinite(scaled) ? std::lrint(std::clamp(scaled, -32768.0, 32767.0)) : 0;
        byte(static_cast<int>(v & 0xFF));
        byte(static_cast<int>((v >> 8) & 0xFF));
    }
    void power(double percent)
    {
        const double raw = percent * 256.0 / 100.0;
        byte(std::isfinite(raw) ? static_cast<int>(std::lrint(std::clamp(raw, 0.0, 255.0))) : 0);
    }
    // The eight per-motor fields, in the order both layouts share.
    void motor(const AxisReport& r)
    {
        word(r.rate, kRateScale);
        word(r.error, kErrorScale);
        word(r.pComp, kComponentScale);
        word(r.iComp, kComponentScale);
        word(r.dComp, kComponentScale);
        word(r.elecAngle, kElecScale);
        power(r.powerPercent);
        word(r.angle, kAngleScale);
    }
    std::span<const uint8_t> bytes() const { return {bytes_.data(), n_}; }

private:
    std::array<uint8_t, 64> bytes_{};
    std::size_t n_ = 0;
};

} // namespace

void appendFrame(std::vector<uint8_t>& out, int id, std::span<const uint8_t> payload)
{
    const auto length = static_cast<unsigned>(payload.size() + 3);
    out.push_back(msg::StartByte);
    out.push_back(static_cast<uint8_t>(length));
    out.push_back(static_cast<uint8_t>(id));
    unsigned sum = length + static_cast<unsigned>(id);
    for (uint8_t b : payload) {
        out.push_back(b);
        sum += b;
    }
    out.push_back(static_cast<uint8_t>(sum & 0xFF));
}

void appendDirectTelemetry(const DirectTelemetry& t, std::vector<uint8_t>& out)
{
    Payload p;
    p.motor(t.motor[0]);
    p.motor(t.motor[1]);
    p.word(t.volts, kVoltScale);
    int flags = t.switchBits & 0x0F;
    if (t.motor[0].testDriveActive) flags |= 0x10;
    if (t.motor[1].testDriveActive) flags |= 0x20;
    if (t.inputValid) flags |= 0x80;
    p.byte(flags);
    p.byte(t.motorConfigBits);
    p.byte(t.extGain[0]);
    p.byte(t.extGain[1]);
    for (uint8_t d : t.debug) p.byte(d);
    p.byte(t.firmwareMajor);
    p.byte(t.firmwareMinor);
    appendFrame(out, msg::Cyclic, p.bytes());
}

void appendRelayedTelemetry(const RelayedTelemetry& t, std::vector<uint8_t>& out)
{
    Payload p;
    p.byte(t.axis);
    p.motor(t.report);
    p.word(t.volts, kVoltScale);
    int flags = t.switchBits & 0x0F;
    for (int i = 0; i < 3; ++i)
        if (t.inputValid[static_cast<std::size_t>(i)]) flags |= 0x10 << i;
    if (t.report.testDriveActive) flags |= 0x80;
    p.byte(flags);
    p.byte(t.extGain);
    p.word(t.report.joint, kAngleScale);
    appendFrame(out, msg::CyclicQVane, p.bytes());
}

} // namespace kdx::sim
