#pragma once
// Configuration files as kdxctl's commands take them.
#include "config/config_file.h"

#include <string>
#include <string_view>

namespace kdx::cli {

// Loads a .kdx or .bls file. On failure the load's status is Failed and `error` holds
// the line to print: "FILE: " and the program's own message, or "FILE: not a
// configuration file" for one that does not even start like one (no "*!" comment
// record and no good data record first). With `refusal` given, a data record holding
// anything but hexadecimal digits fails too, the message ending in `refusal`: stricter
// than loading into the program, which reads such a record as best it can (blanks as
// zeros), for commands whose bytes go on into a module or a file.
ConfigLoad loadConfigInput(const std::string& path, std::string& error, std::string_view refusal = {});

} // namespace kdx::cli
