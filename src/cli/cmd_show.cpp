// kdxctl show: the parameter table of a configuration file.
#include "cli/command.h"
#include "cli/stdout_check.h"
#include "config/config_file.h"
#include "config/driver_config.h"
#include "config/param_table.h"
#include "core/host_error.h"

#include <ostream>

namespace kdx::cli {

namespace {

const char* const kUsage =
    "usage: kdxctl show [--tsv] FILE\n"
    "\n"
    "Prints the parameters of a configuration file (.kdx two-axis or .bls\n"
    "single-axis) in display units, as the main window shows them.\n"
    "\n"
    "  --tsv   one line per parameter: name<TAB>motor 0<TAB>motor 1 (motor 1 empty\n"
    "          for a single-axis file)\n"
    "\n"
    "example:\n"
    "  kdxctl show gimbal.kdx\n"
    "  kdxctl show --tsv gimbal.kdx | grep PTerm\n";

int usageError(CommandIo& io, const std::string& what)
{
    io.err << "kdxctl show: " << what << " (try kdxctl show --help)\n";
    return 2;
}

int runShow(const std::vector<std::string>& args, CommandIo& io)
{
    bool tsv = false;
    std::string file;
    for (const std::string& a : args) {
        if (a == "--tsv") tsv = true;
        else if (!a.empty() && a[0] == '-') return usageError(io, "unknown option '" + a + "'");
        else if (file.empty()) file = a;
        else return usageError(io, "one file only");
    }
    if (file.empty()) return usageError(io, "expected a configuration file");

    const ConfigLoad load = loadConfigFile(file, false);
    if (load.status == ConfigLoadStatus::Failed) {
        io.err << "kdxctl: " << file << ": " << load.box.prompt << "\n";
        return 1;
    }
    DriverConfig config;
    applyConfigLoad(load, config.image());
    try {
        config.ImageToParams();
    } catch (const HostError& e) {
        io.err << "kdxctl: " << file << ": " << e.what() << "\n";
        return 1;
    }
    const auto rows = paramTable(config, load.twoAxis());
    io.out << (tsv ? paramTableTsv(rows) : paramTableText(rows, load.twoAxis()));
    if (!outputReached(io.out)) {
        io.err << "kdxctl: " << kOutputLost << "\n";
        return 1;
    }
    return 0;
}

} // namespace

KDX_COMMAND("show", "prints the parameters of a .kdx or .bls configuration file", kUsage, runShow);

} // namespace kdx::cli
