#include "telemetry/live_captions.h"

#include "core/colour.h"
#include "core/host_numeric.h"
#include "telemetry/fixed_format.h"

namespace kdx {

namespace {

void setFixed(std::string& s, double value, int decimals, const char* suffix = "")
{
    s.clear();
    appendFixed(s, value, decimals);
    s += suffix;
}

} // namespace

void fillLiveCaptions(const CyclicTelemetry& live, LiveCaptions& out)
{
    for (int m = 0; m < 2; ++m) {
        const MotorTelemetry& v = live.motor[m];
        MotorCaptions& c = out.motor[m];
        setFixed(c.ElecAngletb, v.ElecAngle, 0);
        setFixed(c.AxisRatetb, v.AxisRate, 1);
        setFixed(c.AxisErrortb, v.AxisError, 1);
        setFixed(c.AxisPtb, v.Pcomp, 2);
        setFixed(c.AxisItb, v.Icomp, 2);
        setFixed(c.AxisDtb, v.Dcomp, 2);
        setFixed(c.ExtGaintb, v.ExtGain, 0, "%");
        if (v.Power == 0) c.AxisPowertb = "OFF";
        else setFixed(c.AxisPowertb, v.Power, 0, "%");
        setFixed(c.AxisAngletb, v.AxisAngle, 1);
        c.TestDrivecbColour = testDriveColour(v.TestDriveActive);
    }
    setFixed(out.Voltagetb, live.Voltage, 1);
    out.Switchtb = (live.SwitchBits & 1) ? "On" : "Off";
}

LiveCaptions liveCaptions(const CyclicTelemetry& live)
{
    LiveCaptions c;
    fillLiveCaptions(live, c);
    return c;
}

std::string versionCaption(int major, int minor) { return Format(major, "0") + "." + Format(minor, "00"); }

uint32_t validityColour(bool valid) { return valid ? colours::Green : colours::Red; }

uint32_t testDriveColour(bool active) { return active ? colours::Green : colours::LightGrey; }

} // namespace kdx
