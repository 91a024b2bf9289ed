// kdxctl trim: the stretch of a recording between two byte marks, written to a copy
// exactly as the Comms Link window's "Write File" writes it.
#include "cli/cli_args.h"
#include "cli/command.h"
#include "cli/commands.h"
#include "link/trim.h"

#include <optional>
#include <ostream>

namespace kdx::cli {

namespace {

const OptionSpec kOptions[] = {
    {.name = "--start", .takes = Takes::Value, .metavar = "N", .needs = "a byte count",
     .help = "the start mark, in bytes (0 .. 2147483647)"},
    {.name = "--end", .takes = Takes::Value, .metavar = "M", .needs = "a byte count",
     .help = "the end mark, in bytes; the copy holds M - N + 1 bytes, or 2\n"
             "when M is not above N"},
};

} // namespace

const Syntax kTrimSyntax{
    .synopsis = "usage: kdxctl trim RECORDING --start N --end M",
    .about = "Writes the stretch of a recording between two byte marks to RECORDING_t (\"_t\"\n"
             "after the extension; an earlier copy of that name is replaced), exactly as the\n"
             "Comms Link window's Write File does with its Mark Start and Mark End. The copy\n"
             "starts one byte after N and ends one byte after M. A recording too short for\n"
             "that is an error, and the partial copy stays.",
    .options = kOptions,
    .positionals = {.min = 1, .max = 1, .missing = "no recording given",
                    .extra = "one recording at a time ('{}' is extra)"},
    .helpColumn = 14,
    .example = "kdxctl trim 'Run 0.Log' --start 40960 --end 81920   # writes 'Run 0.Log_t'",
};

int runTrim(const Arguments& args, CommandIo& io)
{
    const std::string& recording = args.positionals()[0];
    std::optional<int32_t> start, end;
    for (auto [option, mark] : {std::pair{"--start", &start}, {"--end", &end}}) {
        if (!args.has(option)) continue;
        const std::string& text = args.value(option);
        if (!(*mark = parseWhole<int32_t>(text)) || **mark < 0)
            return args.usageError(io, std::string(option) + " takes a byte count 0 .. 2147483647, not '" + text + "'");
    }
    if (!start || !end) return args.usageError(io, "both --start and --end are needed");

    const TrimResult r = trimRecording(recording, *start, *end);
    if (!r.ok) {
        io.err << "kdxctl: trim: " << trim::ErrorText << " " << r.reason << " (" << r.copied << " bytes in "
               << r.output << ")\n";
        return 1;
    }
    io.err << "trim: " << r.copied << " bytes written to " << r.output << "\n";
    return 0;
}

} // namespace kdx::cli
