// kdxctl trim: the stretch of a recording between two byte marks, written to a copy
// exactly as the Comms Link window's "Write File" writes it.
#include "cli/cli_args.h"
#include "cli/command.h"
#include "cli/commands.h"
#include "link/trim.h"

#include <filesystem>
#include <optional>
#include <ostream>

namespace kdx::cli {

namespace {

const OptionDecl kOptions[] = {
    {.name = "--start",
     .takes = Takes::Value,
     .metavar = "N",
     .needs = "a byte count",
     .help = "the start mark, in bytes (0 .. 2147483647)"},
    {.name = "--end",
     .takes = Takes::Value,
     .metavar = "M",
     .needs = "a byte count",
     .help = "the end mark, in bytes, not before N; the copy holds M - N + 1\n"
             "bytes, or 2 when M equals N"},
};

} // namespace

const Syntax kTrimSyntax{
    .synopsis = "usage: kdxctl trim RECORDING --start N --end M",
    .about = "Writes the stretch of a recording between two byte marks to RECORDING_t (\"_t\"\n"
             "after the extension; an earlier copy of that name is replaced), exactly as the\n"
             "Comms Link window's Write File does with its Mark Start and Mark End. The copy\n"
             "starts one byte after N and ends one byte after M. Marks the recording cannot\n"
             "satisfy (an end before the start, or past the end of the recording) are\n"
             "refused before anything is written, and the copy is written to a temporary\n"
             "file first, so a failure never leaves a partial copy in place of a good one.",
    .options = kOptions,
    .positionals = {.min = 1,
                    .max = 1,
                    .missing = "no recording given",
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
    if (*end < *start)
        return args.usageError(io, "--end " + std::to_string(*end) + " is before --start " + std::to_string(*start));

    std::error_code ec;
    const auto size = std::filesystem::file_size(recording, ec);
    if (ec) {
        io.err << "kdxctl: trim: cannot open " << recording << ": " << ec.message() << "\n";
        return 1;
    }
    if (const int64_t needs = trimNeedsBytes(*start, *end); static_cast<int64_t>(size) < needs) {
        io.err << "kdxctl: trim: " << recording << " holds " << size << " bytes; the marks need " << needs
               << " (the copy ends one byte after the end mark); nothing was written\n";
        return 1;
    }

    const TrimResult r = trimRecording(recording, *start, *end, TrimWrite::Atomic);
    if (!r.ok) {
        io.err << "kdxctl: trim: " << trim::ErrorText << " " << r.reason << "; " << r.output << " was left as it was\n";
        return 1;
    }
    io.err << "trim: " << r.copied << " bytes written to " << r.output << "\n";
    return 0;
}

} // namespace kdx::cli
