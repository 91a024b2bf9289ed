// kdxctl read: reads the configuration of one module or many at once, prints it and
// keeps a backup file of each.
#include "cli/cli_args.h"
#include "cli/command.h"
#include "cli/commands.h"
#include "cli/json_writer.h"
#include "cli/module_link.h"
#include "cli/module_summary.h"
#include "cli/option_parser.h"
#include "cli/param_output.h"
#include "cli/stdout_check.h"
#include "config/config_file.h"
#include "config/driver_config.h"
#include "config/param_table.h"
#include "core/host_error.h"

#include <ostream>

namespace kdx::cli {

namespace {

const OptionDecl kOptions[] = {
    kPortsOption,
    kAxesOption,
    {.name = "-o",
     .takes = Takes::Value,
     .metavar = "FILE",
     .help = "the backup file of a single module (default\n"
             "kdx-backup-YYYYMMDD-HHMMSS.kdx or .bls in the current\n"
             "folder); an existing file is replaced"},
    {.name = "--backup-dir",
     .takes = Takes::Value,
     .metavar = "DIR",
     .needs = "a folder",
     .help = "save the backups in DIR, named after their ports (with\n"
             "several ports the default is a new folder\n"
             "kdx-backup-YYYYMMDD-HHMMSS)"},
    {.name = "--no-backup", .help = "print the configuration only; save no file"},
    {.name = "--tsv",
     .help = "print name<TAB>motor 1<TAB>motor 2 lines instead of the\n"
             "table (with several ports each line starts with the port\n"
             "and a TAB, and the table of results goes to standard\n"
             "error, as does the backup note)"},
    kJsonOption,
};

} // namespace

const Syntax kReadSyntax{
    .synopsis = "usage: kdxctl read --port DEV [--port DEV ...] [--axis tilt|roll|pan]\n"
                "                   [-o FILE | --backup-dir DIR | --no-backup] [--tsv | --json]",
    .about = "Reads the configuration memory of the module on DEV, prints its parameters and\n"
             "saves a backup: a two-axis .kdx file for a KDX wired directly, a single-axis\n"
             ".bls file for the KDX of one axis behind a Q-Vane. Which of the two is on the\n"
             "line is learned from its telemetry. With several ports every module is read\n"
             "at once and a table of the results ends the run.",
    .options = kOptions,
    .helpColumn = 20,
    .example = "kdxctl read --port /dev/ttyUSB0 -o before.kdx\n"
               "kdxctl read --port /dev/ttyUSB0 --axis roll -o roll-before-tuning.bls\n"
               "kdxctl read --port /dev/ttyUSB0 --port /dev/ttyUSB1 --backup-dir line-3",
};

namespace {

struct ModuleRead {
    bool qvane = false;
    std::vector<ParamRow> rows;
};

// Where a module's backup goes: nowhere, into `folder` named after its port, to
// `output`, or to a dated name in the current folder.
struct BackupPlan {
    bool save = true;
    std::string folder;
    std::string output;
};

int failed(CommandIo& io, const std::string& why)
{
    io.err << "kdxctl: " << why << "\n";
    return 1;
}

// Reads one module, keeps its backup and its parameter table; `o` says how it went.
void readModule(const ModuleJob& job, const BackupPlan& plan, ModuleRead& read, ModuleOutcome& o)
{
    o.port = job.port;
    o.result = "failed";
    ModuleLink link(job.port);
    if (!link.connect(job.axis, o.detail)) return;
    o.target = link.targetName();
    read.qvane = link.qvane();
    MemoryImage image{};
    if (!link.read(image, o.detail)) return;
    if (plan.save) {
        // The backup holds the module's bytes as read, with the image checksum a
        // saved configuration carries; it is kept even if the table cannot be shown.
        const std::string ext = link.qvane() ? ".bls" : ".kdx";
        const std::string path = !plan.folder.empty()
                                     ? plan.folder + "/" + backupFileName(job.port, link.qvane(), job.axis.value_or(0))
                                 : !plan.output.empty() ? plan.output
                                                        : datedBackupName() + ext;
        if (const auto box = saveConfigFile(path, image, !link.qvane())) {
            o.detail = path + ": " + box->prompt;
            return;
        }
        o.backup = path;
    }
    DriverConfig config;
    config.image() = image;
    try {
        config.ImageToParams();
    } catch (const HostError& e) {
        o.detail = job.port + ": the configuration read cannot be shown: " + e.what();
        return;
    }
    read.rows = paramTable(config, !link.qvane());
    o.result = "ok";
    o.detail = o.backup.empty() ? "read" : "read; saved to " + o.backup;
}

// The results as one JSON object.
void reportJson(CommandIo& io, const std::vector<ModuleOutcome>& outcomes, const std::vector<ModuleRead>& reads,
                const std::string& backupDir)
{
    JsonWriter w;
    w.beginObject().key("command").value("read").key("backupDir").valueOrNull(backupDir);
    w.key("ok").value(allOk(outcomes));
    summaryJson(w, outcomes, [&](JsonWriter& j, std::size_t i) {
        if (!outcomes[i].ok()) return;
        j.key("kind").value(reads[i].qvane ? "single-axis" : "two-axis");
        paramsJson(j, reads[i].rows, !reads[i].qvane);
    });
    io.out << w.endObject().line();
}

// The table of one module; returns the exit code.
int reportOne(CommandIo& io, const ModuleOutcome& o, const ModuleRead& read, bool tsv)
{
    if (!o.ok()) return failed(io, o.detail);
    io.out << (tsv ? paramTableTsv(read.rows) : paramTableText(read.rows, !read.qvane));
    // The backup was saved even when the table could not be shown: the read succeeded.
    if (!outputReached(io.out))
        return failed(io, std::string(kOutputLost) + (o.backup.empty() ? "" : "; the backup was saved to " + o.backup));
    if (!o.backup.empty()) (tsv ? io.err : io.out) << "backup saved to " << o.backup << "\n";
    return 0;
}

// Each module's table, then the table of results.
void reportMany(CommandIo& io, const std::vector<ModuleOutcome>& outcomes, const std::vector<ModuleRead>& reads,
                bool tsv)
{
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
        if (!outcomes[i].ok()) continue;
        if (tsv) {
            for (const ParamRow& r : reads[i].rows)
                io.out << outcomes[i].port << '\t' << r.name << '\t' << r.values[0] << '\t' << r.values[1] << '\n';
        } else {
            io.out << outcomes[i].port << " (" << outcomes[i].target << ")\n"
                   << paramTableText(reads[i].rows, !reads[i].qvane) << "\n";
        }
    }
    (tsv ? io.err : io.out) << summaryTable(outcomes);
}

} // namespace

int runRead(const Arguments& args, CommandIo& io)
{
    std::string usage;
    const auto jobs = moduleJobs(args, usage);
    if (!jobs) return args.usageError(io, usage);
    const bool several = jobs->size() > 1;
    if (several && args.has("-o")) return args.usageError(io, "-o names one file; with several ports use --backup-dir");
    if (static_cast<int>(args.has("-o")) + args.has("--backup-dir") + args.has("--no-backup") > 1)
        return args.usageError(io, "give one of -o, --backup-dir and --no-backup");
    if (args.has("--tsv") && args.has("--json")) return args.usageError(io, "give --tsv or --json, not both");
    const bool tsv = args.has("--tsv");

    std::string error;
    BackupPlan plan{.save = !args.has("--no-backup"), .folder = {}, .output = args.value("-o")};
    BackupFolder backupFolder;
    if (plan.save && (several || args.has("--backup-dir")) && !backupFolder.make(args.value("--backup-dir"), error))
        return failed(io, error);
    plan.folder = backupFolder.path();

    std::vector<ModuleOutcome> outcomes(jobs->size());
    std::vector<ModuleRead> reads(jobs->size());
    onEveryModule(jobs->size(), [&](std::size_t i) { readModule((*jobs)[i], plan, reads[i], outcomes[i]); });
    backupFolder.finish();

    if (args.has("--json")) {
        reportJson(io, outcomes, reads, backupFolder.path());
    } else if (!several) {
        if (const int code = reportOne(io, outcomes[0], reads[0], tsv); code != 0) return code;
    } else {
        reportMany(io, outcomes, reads, tsv);
    }
    if (!outputReached(io.out)) return failed(io, std::string(kOutputLost));
    return batchExit(io.err, outcomes, "could not be read");
}

} // namespace kdx::cli
