// kdxctl show: the parameter table of a configuration file.
#include "cli/command.h"
#include "cli/commands.h"
#include "cli/option_parser.h"
#include "cli/stdout_check.h"
#include "config/config_file.h"
#include "config/driver_config.h"
#include "config/param_table.h"
#include "core/host_error.h"

#include <ostream>

namespace kdx::cli {

namespace {

const OptionSpec kOptions[] = {
    {.name = "--tsv",
     .help = "one line per parameter: name<TAB>motor 0<TAB>motor 1 (motor 1 empty\n"
             "for a single-axis file)"},
};

} // namespace

const Syntax kShowSyntax{
    .synopsis = "usage: kdxctl show [--tsv] FILE",
    .about = "Prints the parameters of a configuration file (.kdx two-axis or .bls\n"
             "single-axis) in display units, as the main window shows them.",
    .options = kOptions,
    .positionals = {.min = 1, .max = 1, .missing = "expected a configuration file", .extra = "one file only"},
    .helpColumn = 10,
    .example = "kdxctl show gimbal.kdx\n"
               "kdxctl show --tsv gimbal.kdx | grep PTerm",
};

int runShow(const Arguments& args, CommandIo& io)
{
    const bool tsv = args.has("--tsv");
    const std::string& file = args.positionals()[0];

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

} // namespace kdx::cli
