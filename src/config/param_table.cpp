#include "config/param_table.h"

#include "config/param_fields.h"

#include <algorithm>

namespace kdx {

std::vector<ParamRow> paramTable(const DriverConfig& config, bool bothMotors)
{
    std::vector<ParamRow> rows;
    for (const ParamField& field : kParamFields) {
        ParamRow row{std::string(field.name), std::string(field.meaning), std::string(field.unit), {}};
        for (int m = 0; m < (bothMotors ? 2 : 1); ++m)
            row.values[static_cast<std::size_t>(m)] = fieldValue(config, field, m);
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
    std::string out = line("Parameter", "Motor 1", "Motor 2", "Unit", "Meaning");
    for (const ParamRow& r : rows) out += line(r.name, r.values[0], r.values[1], r.unit, r.meaning);
    return out;
}

} // namespace kdx
