// kdxctl show: the parameter table of a configuration file.
#include "cli/cli_args.h"
#include "cli/command.h"
#include "cli/commands.h"
#include "cli/config_input.h"
#include "cli/option_parser.h"
#include "cli/param_output.h"
#include "cli/stdout_check.h"
#include "config/driver_config.h"
#include "config/param_table.h"
#include "core/host_error.h"

#include <ostream>

namespace kdx::cli {

namespace {

const OptionDecl kOptions[] = {
    {.name = "--tsv",
     .help = "one line per parameter: name<TAB>motor 1<TAB>motor 2 (motor 2\n"
             "empty for a single-axis file)"},
    kJsonOption,
};

} // namespace

const Syntax kShowSyntax{
    .synopsis = "usage: kdxctl show [--tsv | --json] FILE",
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
    const bool tsv = args.has("--tsv"), json = args.has("--json");
    if (tsv && json) return args.usageError(io, "give --tsv or --json, not both");
    const std::string& file = args.positionals()[0];

    std::string error;
    const ConfigLoad load = loadConfigInput(file, error);
    if (load.status == ConfigLoadStatus::Failed) {
        io.err << "kdxctl: " << error << "\n";
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
    if (json) {
        JsonWriter w;
        w.beginObject().key("file").value(file).key("kind").value(load.twoAxis() ? "two-axis" : "single-axis");
        paramsJson(w, rows, load.twoAxis());
        io.out << w.endObject().line();
    } else {
        io.out << (tsv ? paramTableTsv(rows) : paramTableText(rows, load.twoAxis()));
    }
    if (!outputReached(io.out)) {
        io.err << "kdxctl: " << kOutputLost << "\n";
        return 1;
    }
    return 0;
}

} // namespace kdx::cli
