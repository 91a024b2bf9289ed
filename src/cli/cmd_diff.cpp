// kdxctl diff: two configurations, each a file or a module, compared parameter by
// parameter in display units.
#include "cli/cli_args.h"
#include "cli/command.h"
#include "cli/commands.h"
#include "cli/config_input.h"
#include "cli/json_writer.h"
#include "cli/module_link.h"
#include "cli/module_summary.h"
#include "cli/option_parser.h"
#include "cli/stdout_check.h"
#include "config/config_diff.h"

#include <ostream>

namespace kdx::cli {

namespace {

// Exit statuses, as diff(1) has them: a comparison that could not be made is not
// "different".
constexpr int kSame = 0, kDifferent = 1, kTrouble = 2;

const OptionDecl kOptions[] = {
    {.name = "--port",
     .takes = Takes::Value,
     .metavar = "DEV",
     .repeats = true,
     .help = "read a module instead of a file; given twice, both sides\n"
             "are modules (A is the first source on the command line)"},
    {.name = "--axis",
     .takes = Takes::Value,
     .metavar = "A",
     .repeats = true,
     .help = "through a Q-Vane: the axis to read, tilt, roll or pan\n"
             "(default tilt); once for every port, or once per --port"},
    {.name = "--motor",
     .takes = Takes::Value,
     .metavar = "M",
     .help = "the motor of a two-axis side compared with a single-axis\n"
             "one, 1 or 2 (default 1)"},
    {.name = "--tsv", .help = "print name<TAB>motor<TAB>A<TAB>B lines without a heading"},
    kJsonOption,
};

} // namespace

const Syntax kDiffSyntax{
    .synopsis = "usage: kdxctl diff [--motor 1|2] [--tsv | --json] A B\n"
                "       where A and B are each FILE or --port DEV [--axis tilt|roll|pan]",
    .about = "Compares two configurations, each a .kdx or .bls file or the module on a\n"
             "port, and prints one line per parameter that differs: its name as kdxctl show\n"
             "prints it, the motor, and the two values as the main window shows them. A\n"
             "change the window cannot show (a PWM count behind the same whole kHz) shows\n"
             "the raw values too; bytes no parameter shows are compared as ByteN. Exit\n"
             "status: 0 the same, 1 different, 2 no comparison (usage error, a file that\n"
             "cannot be loaded, a module that does not answer).",
    .options = kOptions,
    .positionals = {.min = 0, .max = 2, .extra = "two configurations at most ('{}' is extra)"},
    .helpColumn = 14,
    .example = "kdxctl diff before.kdx after.kdx\n"
               "kdxctl diff golden.kdx --port /dev/ttyUSB0\n"
               "kdxctl diff --port /dev/ttyUSB0 --axis tilt --port /dev/ttyUSB0 --axis roll",
};

namespace {

struct Side {
    std::string source; // the file or the port
    bool port = false;
    std::string target; // a module's "KDX" or "Q-Vane axis Roll"
    ConfigSnapshot config;
};

} // namespace

int runDiff(const Arguments& args, CommandIo& io)
{
    const auto words = args.inOrder({"--port"});
    if (words.size() != 2) return args.usageError(io, "expected two configurations: files, or --port DEV for a module");
    std::string usage;
    const auto jobs = moduleJobs(args, usage, true);
    if (!jobs) return args.usageError(io, usage);
    const auto motor = args.has("--motor") ? parseMotor(args.value("--motor")) : std::optional<int>(0);
    if (!motor) return args.usageError(io, "--motor is 1 or 2");
    const bool tsv = args.has("--tsv"), json = args.has("--json");
    if (tsv && json) return args.usageError(io, "give --tsv or --json, not both");

    auto trouble = [&](const std::string& why) {
        io.err << "kdxctl: " << why << "\n";
        return kTrouble;
    };
    Side sides[2];
    std::size_t nextJob = 0;
    for (int s = 0; s < 2; ++s) {
        Side& side = sides[s];
        const auto& [option, value] = words[static_cast<std::size_t>(s)];
        side.source = value;
        std::string error;
        if (option.empty()) {
            const ConfigLoad load = loadConfigInput(value, error);
            if (load.status == ConfigLoadStatus::Failed) return trouble(error);
            applyConfigLoad(load, side.config.image);
            side.config.twoAxis = load.twoAxis();
            continue;
        }
        side.port = true;
        ModuleLink link(value);
        if (!link.connect((*jobs)[nextJob++].axis, error) || !link.read(side.config.image, error))
            return trouble(error);
        side.target = link.targetName();
        side.config.twoAxis = !link.qvane();
    }

    const auto differences = diffConfigs(sides[0].config, sides[1].config, *motor);
    if (json) {
        JsonWriter w;
        w.beginObject();
        for (int s = 0; s < 2; ++s) {
            w.key(s == 0 ? "a" : "b").beginObject();
            w.key("source").value(sides[s].source).key("type").value(sides[s].port ? "port" : "file");
            w.key("target").valueOrNull(sides[s].target);
            w.key("kind").value(sides[s].config.twoAxis ? "two-axis" : "single-axis").endObject();
        }
        w.key("equal").value(differences.empty()).key("differences").beginArray();
        for (const ParamDifference& d : differences)
            w.beginObject()
                .key("name")
                .value(d.name)
                .key("motor")
                .value(d.motor + 1)
                .key("a")
                .value(d.a)
                .key("b")
                .value(d.b)
                .endObject();
        io.out << w.endArray().endObject().line();
    } else if (tsv) {
        for (const ParamDifference& d : differences)
            io.out << d.name << '\t' << d.motor + 1 << '\t' << d.a << '\t' << d.b << '\n';
    } else if (!differences.empty()) {
        std::vector<std::vector<std::string>> rows{{"Parameter", "Motor", sides[0].source, sides[1].source}};
        for (const ParamDifference& d : differences) rows.push_back({d.name, std::to_string(d.motor + 1), d.a, d.b});
        io.out << alignedTable(rows);
    }
    if (!outputReached(io.out)) return trouble(std::string(kOutputLost));
    return differences.empty() ? kSame : kDifferent;
}

} // namespace kdx::cli
