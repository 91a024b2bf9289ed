#include "telemetry/log_line.h"

#include "telemetry/fixed_format.h"

#include <string_view>

namespace kdx {

namespace {

constexpr std::string_view kRelayedTitles =
    "Axis,AxisID,AxisAngle,AxisRate,AxisError,Pcomp,Icomp,Dcomp,ExtGain%,ElecAngle,Power%,Voltage";
constexpr std::string_view kDirectTitles =
    "AxisRate0,AxisError0,Pcomp0,Icomp0,Dcomp0,ExtGain0%,ElecAngle0,Power0%,"
    "AxisRate1,AxisError1,Pcomp1,Icomp1,Dcomp1,ExtGain1%,ElecAngle1,Power1%,Voltage";
constexpr std::string_view kLineEnd = "\r\n";

// Line prefix per reported Q-Vane axis.
constexpr std::string_view kAxisPrefix[3] = {"Tilt,0,", "Roll,1,", "Pan,2,"};

// Decimal places of each column's pattern.
constexpr int kAngleDecimals = 2;     // "###0.00": logged angle, rate, error, P, I, D
constexpr int kExtGainDecimals = 0;   // "##0"
constexpr int kElecAngleDecimals = 1; // "###0.0"
constexpr int kPowerDecimals = 0;     // "###0"
constexpr int kVoltageDecimals = 1;   // "0.0"

void column(std::string& out, double value, int decimals)
{
    appendFixed(out, value, decimals);
    out += ',';
}

} // namespace

std::string telemetryFileTitles(bool targetIsQVane, std::optional<std::string_view> debugTitles)
{
    std::string s(targetIsQVane ? kRelayedTitles : kDirectTitles);
    if (debugTitles) {
        s += ',';
        s += *debugTitles;
    }
    s += kLineEnd;
    return s;
}

void appendTelemetryLogLine(std::string& out, const CyclicTelemetry& t, std::optional<std::string_view> debugValues)
{
    int motors = 2;
    if (t.TargetIsQVane) {
        motors = 1;
        if (t.QVaneAxis >= 0 && t.QVaneAxis < 3) out += kAxisPrefix[t.QVaneAxis];
        column(out, t.motor[0].LoggedAngle, kAngleDecimals);
    }
    for (int m = 0; m < motors; ++m) {
        const MotorTelemetry& v = t.motor[m];
        column(out, v.AxisRate, kAngleDecimals);
        column(out, v.AxisError, kAngleDecimals);
        column(out, v.Pcomp, kAngleDecimals);
        column(out, v.Icomp, kAngleDecimals);
        column(out, v.Dcomp, kAngleDecimals);
        column(out, v.ExtGain, kExtGainDecimals);
        column(out, v.ElecAngle, kElecAngleDecimals);
        column(out, v.Power, kPowerDecimals);
    }
    appendFixed(out, t.Voltage, kVoltageDecimals);
    if (debugValues) {
        out += ',';
        out += *debugValues;
    }
    out += kLineEnd;
}

} // namespace kdx
