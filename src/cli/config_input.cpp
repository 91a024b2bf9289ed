#include "cli/config_input.h"

#include <fstream>

namespace kdx::cli {

ConfigLoad loadConfigInput(const std::string& path, std::string& error, std::string_view refusal)
{
    ConfigLoad load = loadConfigFile(path, false);
    if (load.status != ConfigLoadStatus::Failed) {
        if (refusal.empty() || load.firstNonHexLine == 0) return load;
        error = path + ": line " + std::to_string(load.firstNonHexLine) +
                " holds characters that are not hexadecimal digits; " + std::string(refusal);
        load.status = ConfigLoadStatus::Failed;
        return load;
    }
    error = path + ": " + load.box.prompt;
    const bool unreadable = load.error == ConfigLoadError::Open || load.error == ConfigLoadError::Read;
    const bool firstLineBad = load.error == ConfigLoadError::InvalidFormat && load.errorLine == 1;
    if (!unreadable && (firstLineBad || load.dataRecords == 0)) {
        char start[2] = {};
        std::ifstream(path, std::ios::binary).read(start, 2);
        if (!(start[0] == '*' && start[1] == '!')) error = path + ": not a configuration file";
    }
    return load;
}

} // namespace kdx::cli
