#include "cli/module_summary.h"

#include <algorithm>
#include <ostream>

namespace kdx::cli {

std::string alignedTable(const std::vector<std::vector<std::string>>& rows)
{
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t c = 0; c < row.size(); ++c) widths[c] = std::max(widths[c], row[c].size());
    }
    std::string out;
    for (const auto& row : rows) {
        std::string line;
        for (std::size_t c = 0; c < row.size(); ++c) {
            line += row[c];
            if (c + 1 < row.size()) line += std::string(widths[c] - row[c].size() + 2, ' ');
        }
        while (!line.empty() && line.back() == ' ') line.pop_back();
        out += line + '\n';
    }
    return out;
}

std::string summaryTable(const std::vector<ModuleOutcome>& outcomes)
{
    std::vector<std::vector<std::string>> rows{{"port", "target", "result", "detail"}};
    for (const ModuleOutcome& o : outcomes)
        rows.push_back({o.port, o.target.empty() ? "-" : o.target, o.result, o.detail});
    return alignedTable(rows);
}

void summaryJson(JsonWriter& json, const std::vector<ModuleOutcome>& outcomes,
                 const std::function<void(JsonWriter&, std::size_t)>& more)
{
    json.key("modules").beginArray();
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
        const ModuleOutcome& o = outcomes[i];
        json.beginObject();
        json.key("port").value(o.port);
        json.key("target").valueOrNull(o.target);
        json.key("result").value(o.result);
        json.key("detail").value(o.detail);
        json.key("backup").valueOrNull(o.backup);
        if (more) more(json, i);
        json.endObject();
    }
    json.endArray();
}

bool allOk(const std::vector<ModuleOutcome>& outcomes)
{
    return std::all_of(outcomes.begin(), outcomes.end(), [](const ModuleOutcome& o) { return o.ok(); });
}

} // namespace kdx::cli

namespace kdx::cli {

int batchExit(std::ostream& err, const std::vector<ModuleOutcome>& outcomes, std::string_view failedWhat)
{
    if (allOk(outcomes)) return 0;
    if (outcomes.size() == 1) {
        err << "kdxctl: " << outcomes[0].detail << "\n";
    } else {
        const auto failed =
            std::count_if(outcomes.begin(), outcomes.end(), [](const ModuleOutcome& o) { return !o.ok(); });
        err << "kdxctl: " << failed << " of " << outcomes.size() << " modules " << failedWhat << "\n";
    }
    return 1;
}

} // namespace kdx::cli
