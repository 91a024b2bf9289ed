#include "config/driver_config.h"

#include "config/conversions.h"
#include "core/host_numeric.h"

namespace kdx {

namespace {

using namespace layout;

constexpr double kPwmTick = 1.0 / 40000000.0; // 40 MHz period counter
constexpr double kDefaultPwmHz = 8000;

void putWord(MemoryImage& image, int index, long long value)
{
    image[static_cast<std::size_t>(index)] = static_cast<int16_t>(lowByte(value));
    image[static_cast<std::size_t>(index + 1)] = static_cast<int16_t>(highByte(value));
}

void putByte(MemoryImage& image, int index, long long value)
{
    image[static_cast<std::size_t>(index)] = static_cast<int16_t>(lowByte(value));
}

void putWhole(MemoryImage& image, int index, int16_t value) { image[static_cast<std::size_t>(index)] = value; }

} // namespace

bool DriverConfig::reverse(int motor) const { return at(reverse_, motor); }

void DriverConfig::setReverse(int motor, bool checked) { at(reverse_, motor) = checked; }

void DriverConfig::Reversecb_Click(int motor, bool checked)
{
    setReverse(motor, checked);
    SetDataModified(true);
}

void DriverConfig::SetDataModified(bool flag)
{
    DataModified = flag;
    if (modified_) modified_(flag);
}

void DriverConfig::RefreshParamDisplay()
{
    if (refresh_) refresh_();
}

void DriverConfig::ImageToParams()
{
    debugId_ = image_[DebugId];
    for (int m = 0; m < 2; ++m) motorToParams(m);
    RefreshParamDisplay();
    SetDataModified(false);
}

void DriverConfig::acceptNewImage()
{
    ImageToParams();
    RefreshParamDisplay();
    gainsLoaded_ = true;
}

void DriverConfig::motorToParams(int m)
{
    const int base = MotorBlockSize * m;
    auto e = [&](int k) -> int { return image_[static_cast<std::size_t>(base + k)]; };
    ParamSet& p = params_;

    // The high byte is tested first: a count with bit 15 set means "use the default".
    const int freqLow = e(PwmPeriod), freqHigh = e(PwmPeriod + 1);
    if (freqHigh < 128) {
        const double count = checked16(static_cast<long long>(freqHigh) * 256 + freqLow);
        const double period = count / 65536.0 * 0.0016384;
        p.PwmFreqHz[m] = period > 0 ? 1.0 / period : kDefaultPwmHz;
    } else {
        p.PwmFreqHz[m] = kDefaultPwmHz;
    }
    auto scaled = [&](const WordScale& s) { return scaledFromImage(s, e(s.offset), e(s.offset + 1)); };
    p.StaticPower[m] = scaled(StaticPowerScale);
    p.DynamicPower[m] = scaled(DynamicPowerScale);
    p.PTerm[m] = scaled(PTermScale);
    p.IAngle[m] = toSingle(e(IAngle) / 16.0);
    p.IRate[m] = static_cast<float>(e(IRate));
    p.DTerm[m] = scaled(DTermScale);
    p.DTermLimit[m] = static_cast<float>(e(DTermLimit));
    p.PowerErrorAngle[m] = e(PowerErrorAngle) / 16.0;
    p.QVaneAxis[m] = static_cast<float>(e(AxisFlags) & 3);
    reverse_[static_cast<std::size_t>(m)] = (e(AxisFlags) & ReverseBit) != 0;
    p.Poles[m] = static_cast<float>(e(Poles));
    p.GainPerc[m] = scaled(GainPercScale);
    p.RecoveryAngle[m] = static_cast<float>(e(RecoveryAngle));
    p.FixedPosTrim[m] = static_cast<float>(checked16(static_cast<long long>(e(FixedPosTrim)) * 2));
    // Read as unsigned: there is no sign in the ratio field.
    const long long ratioRaw = static_cast<long long>(e(DriveRatio + 1)) * 256 + e(DriveRatio);
    const double fraction = ratioRaw / 16384.0;
    p.DriveRatio[m] = fraction != 0 ? toSingle(1.0 / fraction) : 0.0f;
}

void DriverConfig::ParamsToImage()
{
    for (int m = 0; m < 2; ++m) motorToImage(m);
    image_[ImageChecksum] = imageChecksum(image_);
}

void DriverConfig::motorToImage(int m)
{
    const int base = MotorBlockSize * m;
    const ParamSet& p = params_;
    const auto i = static_cast<std::size_t>(m);

    const double count = Int(divide(1.0, p.PwmFreqHz[i]) / kPwmTick);
    putWord(image_, base + PwmPeriod, CLng(count));
    auto putScaled = [&](const WordScale& s, float shown) {
        putWord(image_, base + s.offset, scaledToImage(s, shown));
    };
    putScaled(StaticPowerScale, p.StaticPower[i]);
    putScaled(DynamicPowerScale, p.DynamicPower[i]);
    putScaled(PTermScale, p.PTerm[i]);
    putByte(image_, base + IAngle, CLng(p.IAngle[i] * 16.0));
    putByte(image_, base + IRate, CLng(p.IRate[i]));
    putScaled(DTermScale, p.DTerm[i]);
    putByte(image_, base + DTermLimit, CLng(p.DTermLimit[i]));
    // Kept: the power-error element is stored whole, not reduced to a byte, so 16
    // degrees leaves 256 in it (the wire carries its low byte).
    putWhole(image_, base + PowerErrorAngle, CInt(p.PowerErrorAngle[i] * 16.0));
    const double axisByte = reverse_[i] ? p.QVaneAxis[i] + double(ReverseBit) : p.QVaneAxis[i];
    putWhole(image_, base + AxisFlags, CInt(axisByte));
    putWhole(image_, base + Poles, CInt(p.Poles[i]));
    putWhole(image_, base + RecoveryAngle, CInt(p.RecoveryAngle[i]));
    // Kept: halves round to even, so a trim of 3 degrees writes 2 counts (reads back as 4)
    // and 1 degree writes 0.
    putWhole(image_, base + FixedPosTrim, CInt(p.FixedPosTrim[i] / 2.0));
    putScaled(GainPercScale, p.GainPerc[i]);
    if (p.DriveRatio[i] == 0) {
        putWord(image_, base + DriveRatio, 0);
    } else {
        const float scaled = toSingle(1.0 / p.DriveRatio[i] * 16384.0);
        putWord(image_, base + DriveRatio, CLng(scaled));
    }
}

std::string axisCaption(double axis)
{
    if (axis == 0) return "Tilt";
    if (axis == 1) return "Roll";
    if (axis == 2) return "Pan";
    return "Off";
}

double DriverConfig::value(ParamLabel label, int motor) const
{
    if (label == ParamLabel::DebIDtb) return debugId_;
    const ParamSet& p = params_;
    auto f = [&](const auto& values) { return static_cast<double>(at(values, motor)); };
    switch (label) {
    case ParamLabel::PTermtb: return f(p.PTerm);
    case ParamLabel::IAngletb: return f(p.IAngle);
    case ParamLabel::IRatetb: return f(p.IRate);
    case ParamLabel::DTermtb: return f(p.DTerm);
    case ParamLabel::Powertb: return f(p.StaticPower);
    case ParamLabel::PowerHitb: return f(p.DynamicPower);
    case ParamLabel::PowerErrortb: return f(p.PowerErrorAngle);
    case ParamLabel::Freqtb: return f(p.PwmFreqHz);
    case ParamLabel::Gaintb: return f(p.GainPerc);
    case ParamLabel::RecoveryAngletb: return f(p.RecoveryAngle);
    case ParamLabel::Polestb: return f(p.Poles);
    case ParamLabel::Ratiotb: return f(p.DriveRatio);
    case ParamLabel::Axistb: return f(p.QVaneAxis);
    case ParamLabel::FPTrimtb: return f(p.FixedPosTrim);
    case ParamLabel::DTermLimittb: return f(p.DTermLimit);
    case ParamLabel::DebIDtb: break;
    }
    return 0;
}

std::string DriverConfig::caption(ParamLabel label, int motor) const
{
    const double v = value(label, motor);
    switch (label) {
    case ParamLabel::IAngletb:
    case ParamLabel::PowerErrortb: return Format(v, "0.00");
    case ParamLabel::Powertb:
    case ParamLabel::PowerHitb: return Format(v, "0.0");
    // Whole kHz only, with a ".0" that is always zero.
    case ParamLabel::Freqtb: return Format(Int(v / 1000.0), "0.0");
    case ParamLabel::Ratiotb: return v == 1.0 ? std::string("1:1") : Format(v, "0.0") + ":1";
    case ParamLabel::Axistb: return axisCaption(v);
    default: return Format(v, "0");
    }
}

float DriverConfig::GetP(int motor) const { return at(params_.PTerm, motor); }
float DriverConfig::GetI(int motor) const { return at(params_.IRate, motor); }
float DriverConfig::GetIA(int motor) const { return at(params_.IAngle, motor); }
float DriverConfig::GetD(int motor) const { return at(params_.DTerm, motor); }
float DriverConfig::GetV1(int motor) const { return at(params_.StaticPower, motor); }
float DriverConfig::GetV2(int motor) const { return at(params_.DynamicPower, motor); }
float DriverConfig::GetG(int motor) const { return at(params_.GainPerc, motor); }

// The gain panel's writes: only P marks the configuration modified (kept as designed);
// every write refreshes the display.
void DriverConfig::putGain(std::array<float, 2> ParamSet::*gain, float value, int motor)
{
    at(params_.*gain, motor) = value;
    RefreshParamDisplay();
}

void DriverConfig::PutP(float value, int motor)
{
    at(params_.PTerm, motor) = value;
    SetDataModified(true);
    RefreshParamDisplay();
}

void DriverConfig::PutI(float value, int motor) { putGain(&ParamSet::IRate, value, motor); }
void DriverConfig::PutIA(float value, int motor) { putGain(&ParamSet::IAngle, value, motor); }
void DriverConfig::PutD(float value, int motor) { putGain(&ParamSet::DTerm, value, motor); }
void DriverConfig::PutV1(float value, int motor) { putGain(&ParamSet::StaticPower, value, motor); }
void DriverConfig::PutV2(float value, int motor) { putGain(&ParamSet::DynamicPower, value, motor); }
void DriverConfig::PutG(float value, int motor) { putGain(&ParamSet::GainPerc, value, motor); }

} // namespace kdx
