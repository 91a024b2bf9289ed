#pragma once
// Small argument helpers shared by kdxctl's commands.
#include "cli/command.h"

#include <optional>
#include <string>

namespace kdx::cli {

// One usage line on stderr ("kdxctl NAME: WHAT (try kdxctl NAME --help)"); returns 2.
int usageError(CommandIo& io, const std::string& command, const std::string& what);

// "tilt"/"roll"/"pan" (or 0/1/2) to the Q-Vane axis number.
std::optional<int> parseAxis(const std::string& s);

} // namespace kdx::cli
