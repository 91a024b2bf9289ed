#pragma once
// The end of a command that worked on several modules: one row per module, as a table
// or as JSON.
#include "cli/json_writer.h"

#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace kdx::cli {

struct ModuleOutcome {
    std::string port;
    std::string target; // "KDX", "Q-Vane axis Roll"; empty when nothing answered
    std::string result; // "ok", or what went wrong: "failed", "not written"
    std::string detail; // what was done, or the one line saying what went wrong
    std::string backup; // the file the module's configuration was saved to, if any

    bool ok() const { return result == "ok"; }
};

// Columns padded to their widest cell, two blanks apart, trailing blanks dropped.
std::string alignedTable(const std::vector<std::vector<std::string>>& rows);

// A heading and one row per module: port, target, result, detail.
std::string summaryTable(const std::vector<ModuleOutcome>& outcomes);

// "modules": [ {"port", "target", "result", "detail", "backup", then what `more` adds} ].
void summaryJson(JsonWriter& json, const std::vector<ModuleOutcome>& outcomes,
                 const std::function<void(JsonWriter&, std::size_t)>& more = {});

// Whether every module succeeded.
bool allOk(const std::vector<ModuleOutcome>& outcomes);

// The exit status of the whole run: 0 when every module succeeded; otherwise 1, after
// one line on stderr: the module's error, or with several modules "N of M modules "
// followed by `failedWhat` ("could not be read").
int batchExit(std::ostream& err, const std::vector<ModuleOutcome>& outcomes, std::string_view failedWhat);

} // namespace kdx::cli
