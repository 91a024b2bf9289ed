// kdxctl write: writes a configuration file into one module or many at once, saving
// each module's configuration first, and checks each by reading back.
#include "cli/cli_args.h"
#include "cli/command.h"
#include "cli/commands.h"
#include "cli/config_input.h"
#include "cli/json_writer.h"
#include "cli/module_link.h"
#include "cli/module_summary.h"
#include "cli/option_parser.h"
#include "cli/stdout_check.h"

#include <optional>
#include <ostream>

namespace kdx::cli {

namespace {

const OptionDecl kOptions[] = {
    kPortsOption,
    kAxesOption,
    {.name = "--motor",
     .takes = Takes::Value,
     .metavar = "M",
     .help = "through a Q-Vane with a two-axis file: the motor block\n"
             "to write, 1 or 2 as kdxtool numbers them (default 1; 0\n"
             "also means motor 1)"},
    {.name = "--backup-dir",
     .takes = Takes::Value,
     .metavar = "DIR",
     .needs = "a folder",
     .help = "save each module's configuration in DIR before writing\n"
             "(default: a new kdx-backup-YYYYMMDD-HHMMSS folder in the\n"
             "current one)"},
    {.name = "--no-backup", .help = "write without saving the configurations first"},
    kJsonOption,
};

} // namespace

const Syntax kWriteSyntax{
    .synopsis = "usage: kdxctl write --port DEV [--port DEV ...] [--axis tilt|roll|pan]\n"
                "                    [--motor 1|2] [--backup-dir DIR | --no-backup] [--json] FILE",
    .about = "Writes the memory image of a configuration file into the module on DEV byte for\n"
             "byte, reads it back, and succeeds only if the module then holds exactly that.\n"
             "A KDX wired directly takes a two-axis .kdx file (both motor blocks); the KDX of\n"
             "a Q-Vane axis takes one motor block, from a .bls file or, with --motor, from\n"
             "either motor of a .kdx file. A file whose data records hold anything but\n"
             "hexadecimal digits is refused before anything is sent.\n"
             "Each module's configuration is read and saved before the write, so a bad batch\n"
             "can be undone by writing the saved files back. With several ports every module\n"
             "is served at once and a table of the results ends the run; the exit status is\n"
             "0 only if every module was written and verified.",
    .options = kOptions,
    .positionals = {.min = 1, .max = 1, .missing = "expected a configuration file", .extra = "one file only"},
    .helpColumn = 20,
    .example = "kdxctl write --port /dev/ttyUSB0 before.kdx\n"
               "kdxctl write --port /dev/ttyUSB0 --axis pan pan-axis.bls\n"
               "kdxctl write --port /dev/ttyUSB0 --port /dev/ttyUSB1 gimbal.kdx",
};

namespace {

int failed(CommandIo& io, const std::string& why)
{
    io.err << "kdxctl: " << why << "\n";
    return 1;
}

// Writes the loaded file into one module after saving what it held in `folder` (none:
// no backup); `o` says how it went and `written` what was written, for the one-module line.
void writeModule(const ModuleJob& job, const std::string& file, const ConfigLoad& load, int motor,
                 const std::string& folder, ModuleOutcome& o, std::string& written)
{
    o.port = job.port;
    o.result = "not written";
    ModuleLink link(job.port);
    if (!link.connect(job.axis, o.detail)) return;
    o.target = link.targetName();
    if (!link.qvane() && !load.twoAxis()) {
        o.detail = file + " holds one motor block; a KDX wired directly needs a two-axis .kdx file";
        return;
    }
    if (!folder.empty()) {
        MemoryImage previous{};
        if (!link.read(previous, o.detail)) return;
        const std::string path = folder + "/" + backupFileName(job.port, link.qvane(), job.axis.value_or(0));
        if (const auto box = saveConfigFile(path, previous, !link.qvane())) {
            o.detail = "cannot save the backup " + path + ": " + box->prompt;
            return;
        }
        o.backup = path;
    }
    MemoryImage image{};
    const bool secondMotor = link.qvane() && load.twoAxis() && motor == 1;
    applyConfigLoad(load, image, secondMotor);
    if (!link.writeAndVerify(image, o.detail)) {
        if (link.wrote()) o.result = "failed";
        return;
    }
    o.result = "ok";
    written = "wrote " + std::to_string(link.elements()) + " bytes";
    if (link.qvane() && load.twoAxis()) written += " (motor " + std::to_string(motor + 1) + " of " + file + ")";
    o.detail = written + " and read them back";
}

} // namespace

int runWrite(const Arguments& args, CommandIo& io)
{
    const std::string& file = args.positionals()[0];
    std::string usage;
    const auto jobs = moduleJobs(args, usage);
    if (!jobs) return args.usageError(io, usage);
    const auto motor = args.has("--motor") ? parseMotor(args.value("--motor")) : std::optional<int>(0);
    if (!motor) return args.usageError(io, "--motor is 1 or 2");
    const bool backups = !args.has("--no-backup");
    if (!backups && args.has("--backup-dir"))
        return args.usageError(io, "--no-backup and --backup-dir exclude each other");

    std::string error;
    // Bytes that are not in the file never go into a module.
    const ConfigLoad load = loadConfigInput(file, error, "nothing was written");
    if (load.status == ConfigLoadStatus::Failed) return failed(io, error);
    BackupFolder backupFolder;
    if (backups && !backupFolder.make(args.value("--backup-dir"), error)) return failed(io, error);
    const std::string folder = backupFolder.path();

    std::vector<ModuleOutcome> outcomes(jobs->size());
    std::vector<std::string> written(jobs->size());
    onEveryModule(jobs->size(),
                  [&](std::size_t i) { writeModule((*jobs)[i], file, load, *motor, folder, outcomes[i], written[i]); });

    backupFolder.finish();
    if (args.has("--json")) {
        JsonWriter w;
        w.beginObject().key("command").value("write").key("file").value(file);
        w.key("backupDir").valueOrNull(backupFolder.path()).key("ok").value(allOk(outcomes));
        summaryJson(w, outcomes);
        io.out << w.endObject().line();
    } else if (outcomes.size() == 1) {
        const ModuleOutcome& o = outcomes[0];
        if (!o.backup.empty()) io.out << "previous configuration saved to " << o.backup << "\n";
        if (!o.ok()) return failed(io, o.detail);
        io.out << written[0] << " to " << o.port << " (" << o.target << ") and read them back\n";
    } else {
        io.out << summaryTable(outcomes);
        if (!backupFolder.path().empty()) io.out << "previous configurations saved in " << folder << "\n";
    }
    if (!outputReached(io.out)) return failed(io, std::string(kOutputLost));
    return batchExit(io.err, outcomes, "were not written and verified");
}

} // namespace kdx::cli
