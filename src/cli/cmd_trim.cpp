// kdxctl trim: the stretch of a recording between two byte marks, written to a copy
// exactly as the Comms Link window's "Write File" writes it.
#include "cli/cli_args.h"
#include "cli/command.h"
#include "link/trim.h"

#include <charconv>
#include <limits>
#include <optional>
#include <ostream>

namespace kdx::cli {

namespace {

const char* const kUsage =
    "usage: kdxctl trim RECORDING --start N --end M\n"
    "\n"
    "Writes the stretch of a recording between two byte marks to RECORDING_t (\"_t\"\n"
    "after the extension; an earlier copy of that name is replaced), exactly as the\n"
    "Comms Link window's Write File does with its Mark Start and Mark End. The copy\n"
    "starts one byte after N and ends one byte after M. A recording too short for\n"
    "that is an error, and the partial copy stays.\n"
    "\n"
    "  --start N   the start mark, in bytes (0 .. 2147483647)\n"
    "  --end M     the end mark, in bytes; the copy holds M - N + 1 bytes, or 2\n"
    "              when M is not above N\n"
    "\n"
    "example:\n"
    "  kdxctl trim 'Run 0.Log' --start 40960 --end 81920   # writes 'Run 0.Log_t'\n";

std::optional<int32_t> parseMark(const std::string& s)
{
    int32_t v = 0;
    const char* end = s.data() + s.size();
    const auto [p, ec] = std::from_chars(s.data(), end, v);
    if (ec != std::errc() || p != end || v < 0) return std::nullopt;
    return v;
}

int runTrim(const std::vector<std::string>& args, CommandIo& io)
{
    std::string recording;
    std::optional<int32_t> start, end;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (a == "--start" || a == "--end") {
            if (i + 1 >= args.size()) return usageError(io, "trim", a + " needs a byte count");
            const auto v = parseMark(args[++i]);
            if (!v) return usageError(io, "trim", a + " takes a byte count 0 .. 2147483647, not '" + args[i] + "'");
            (a == "--start" ? start : end) = v;
        } else if (!a.empty() && a[0] == '-') {
            return usageError(io, "trim", "unknown option '" + a + "'");
        } else if (recording.empty()) {
            recording = a;
        } else {
            return usageError(io, "trim", "one recording at a time ('" + a + "' is extra)");
        }
    }
    if (recording.empty()) return usageError(io, "trim", "no recording given");
    if (!start || !end) return usageError(io, "trim", "both --start and --end are needed");

    const TrimResult r = trimRecording(recording, *start, *end);
    if (!r.ok) {
        io.err << "kdxctl: trim: " << trim::ErrorText << " " << r.reason << " (" << r.copied << " bytes in "
               << r.output << ")\n";
        return 1;
    }
    io.err << "trim: " << r.copied << " bytes written to " << r.output << "\n";
    return 0;
}

} // namespace

KDX_COMMAND("trim", "writes the stretch of a recording between two marks to RECORDING_t", kUsage, runTrim);

} // namespace kdx::cli
