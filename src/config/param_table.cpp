#include "config/param_table.h"

#include <algorithm>

namespace kdx {

namespace {

struct RowDef {
    const char* name;
    const char* meaning;
    const char* unit;
    ParamLabel label;
    bool reverse; // the Reversecb state rather than a label
};

constexpr RowDef kRows[] = {
    {"PwmFreqHz", "PWM frequency", "kHz", ParamLabel::Freqtb, false},
    {"StaticPower", "static power", "%", ParamLabel::Powertb, false},
    {"DynamicPower", "dynamic power", "%", ParamLabel::PowerHitb, false},
    {"PTerm", "P term", "%", ParamLabel::PTermtb, false},
    {"IAngle", "angle where I ramps to zero", "deg", ParamLabel::IAngletb, false},
    {"IRate", "I ramp rate", "", ParamLabel::IRatetb, false},
    {"DTerm", "D term", "%", ParamLabel::DTermtb, false},
    {"PowerErrorAngle", "angle error for max power", "deg", ParamLabel::PowerErrortb, false},
    {"QVaneAxis", "Q-Vane axis", "", ParamLabel::Axistb, false},
    {"Reverse", "drive reversed (1 = yes)", "", ParamLabel::Axistb, true},
    {"DTermLimit", "D term limit", "", ParamLabel::DTermLimittb, false},
    {"Poles", "motor poles", "", ParamLabel::Polestb, false},
    {"GainPerc", "gain", "%", ParamLabel::Gaintb, false},
    {"DriveRatio", "motor-to-load drive ratio", "", ParamLabel::Ratiotb, false},
    {"RecoveryAngle", "recovery angle (0 = off)", "deg", ParamLabel::RecoveryAngletb, false},
    {"FixedPosTrim", "power-up fixed position trim", "deg", ParamLabel::FPTrimtb, false},
};

} // namespace

std::vector<ParamRow> paramTable(const DriverConfig& config, bool bothMotors)
{
    std::vector<ParamRow> rows;
    for (const RowDef& def : kRows) {
        ParamRow row{def.name, def.meaning, def.unit, {}};
        for (int m = 0; m < (bothMotors ? 2 : 1); ++m)
            row.values[static_cast<std::size_t>(m)] =
                def.reverse ? (config.reverse(m) ? "1" : "0") : config.caption(def.label, m);
        rows.push_back(std::move(row));
    }
    return rows;
}

std::string paramTableTsv(const std::vector<ParamRow>& rows)
{
    std::string out;
    for (const ParamRow& r : rows) out += r.name + '\t' + r.values[0] + '\t' + r.values[1] + '\n';
    return out;
}

std::string paramTableText(const std::vector<ParamRow>& rows, bool bothMotors)
{
    std::size_t wName = 9, w0 = 7, w1 = 7, wUnit = 4;
    for (const ParamRow& r : rows) {
        wName = std::max(wName, r.name.size());
        w0 = std::max(w0, r.values[0].size());
        w1 = std::max(w1, r.values[1].size());
        wUnit = std::max(wUnit, r.unit.size());
    }
    auto pad = [](const std::string& s, std::size_t w, bool right) {
        const std::string fill(w > s.size() ? w - s.size() : 0, ' ');
        return right ? fill + s : s + fill;
    };
    auto line = [&](const std::string& n, const std::string& a, const std::string& b, const std::string& u,
                    const std::string& m) {
        std::string s = pad(n, wName, false) + "  " + pad(a, w0, true);
        if (bothMotors) s += "  " + pad(b, w1, true);
        s += "  " + pad(u, wUnit, false) + "  " + m;
        while (!s.empty() && s.back() == ' ') s.pop_back();
        return s + '\n';
    };
    std::string out = line("Parameter", "Motor 0", "Motor 1", "Unit", "Meaning");
    for (const ParamRow& r : rows) out += line(r.name, r.values[0], r.values[1], r.unit, r.meaning);
    return out;
}

} // namespace kdx
