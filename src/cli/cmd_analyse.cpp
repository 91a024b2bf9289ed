// kdxctl analyse: the tuning metrics of tuning files, exported sweeps and telemetry logs,
// one line per file, so the sweeps of a tuning session can be compared in a script.
#include "cli/command.h"
#include "cli/commands.h"
#include "cli/option_parser.h"
#include "cli/stdout_check.h"
#include "cli/text_table.h"
#include "tuning/sweep_export.h"
#include "tuning/sweep_file.h"
#include "tuning/sweep_metrics.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace kdx::cli {

namespace {

const OptionDecl kOptions[] = {
    {.name = "--motor",
     .takes = Takes::Value,
     .metavar = "M",
     .needs = "1 or 2",
     .help = "the motor of a direct two-motor log, 1 or 2 as on the Tuning\n"
             "Display's motor buttons (default 1); tuning files and Q-Vane\n"
             "logs hold one motor"},
    {.name = "--tsv",
     .help = "tab-separated columns under a header line; an absent value\n"
             "is an empty field"},
    {.name = "--json", .help = "one JSON object per line and file; an absent value is null"},
};

} // namespace

const Syntax kAnalyseSyntax{
    .synopsis = "usage: kdxctl analyse [--motor 1|2] [--tsv | --json] FILE...",
    .about = "Measures how well the gains hold the axis, one line per file, from the sweep\n"
             "of a tuning file (.btf, the Tuning Display's Save) or of the Tuning Display's\n"
             "CSV export, or the whole of a telemetry log (the Data Logging window's or\n"
             "kdxctl decode's), told apart by their first line. At 100 samples per second:\n"
             "  err_rms, err_peak  RMS and largest absolute error (deg)\n"
             "  rate_rms           RMS of the rate (deg/s)\n"
             "  freq_hz, share     the rate's dominant frequency, and the share of its power\n"
             "                     within 0.5 Hz of it (0 to 1)\n"
             "  ringing            yes when that share is 0.5 or more at 2 Hz or above\n"
             "  steps              set-point steps of the tuning drive in the sweep, and\n"
             "  overshoot_pct      their median overshoot (%),\n"
             "  rise_s, settle_s   rise time (10 to 90 %) and settling time (to within 5 %)\n"
             "A file that cannot be read is reported on standard error; the others are\n"
             "still analysed.",
    .options = kOptions,
    .positionals = {.min = 1,
                    .max = INT_MAX,
                    .missing = "no file given",
                    .name = "FILE",
                    .help = "a .btf tuning file, an exported sweep or a telemetry log (.csv)"},
    .helpColumn = 14,
    .example = "kdxctl analyse before.btf after.btf\n"
               "kdxctl analyse --motor 2 --json Run1.csv Run2.csv",
};

namespace {

enum class Style { Text, Tsv, Json };

struct Row {
    std::string file;
    SweepFile sweep;
    int motor = 0; // 1 or 2; 0 for a one-motor file
    SweepMetrics m;
};

// The columns: the metrics as the tuning window's panel and its CSV export name them.
const auto& kColumns = kSweepMetricFields;

std::string jsonString(const std::string& s)
{
    std::string out = "\"";
    for (const char ch : s) {
        const auto c = static_cast<unsigned char>(ch);
        if (c == '"' || c == '\\') {
            out += '\\';
            out += ch;
        } else if (c < 0x20) {
            char buf[8];
            std::snprintf(buf, sizeof buf, "\\u%04x", c);
            out += buf;
        } else {
            out += ch;
        }
    }
    return out + "\"";
}

const char* sourceName(SweepSource s)
{
    switch (s) {
    case SweepSource::TuningFile: return "tuning file";
    case SweepSource::DirectLog: return "direct log";
    case SweepSource::QVaneLog: return "Q-Vane log";
    case SweepSource::SweepExport: return "sweep export";
    }
    return "";
}

void printJson(std::ostream& out, const Row& r)
{
    out << "{\"file\":" << jsonString(r.file) << ",\"source\":\"" << sourceName(r.sweep.source) << "\",\"motor\":";
    if (r.motor > 0) out << r.motor;
    else out << "null";
    for (const MetricField& c : kColumns) {
        const auto v = c.text(r.m);
        out << ",\"" << c.name << "\":";
        if (!v) out << "null";
        else if (c.yesNo) out << (*v == "yes" ? "true" : "false");
        else out << *v;
    }
    out << ",\"gains\":";
    if (!r.sweep.gains) {
        out << "null";
    } else {
        const char* names[kGainCount] = {"P", "I", "IA", "D", "V1", "V2", "G"};
        for (std::size_t g = 0; g < kAllGains.size(); ++g)
            out << (g ? "," : "{") << '"' << names[g] << "\":" << fixedText((*r.sweep.gains)[kAllGains[g]], 2);
        out << "}";
    }
    out << "}\n";
}

void printTable(std::ostream& out, const std::vector<Row>& rows, Style style)
{
    std::vector<std::vector<std::string>> cells;
    std::vector<std::string> header{"file"};
    for (const MetricField& c : kColumns) header.emplace_back(c.name);
    cells.push_back(header);
    for (const Row& r : rows) {
        std::vector<std::string> line{r.file};
        for (const MetricField& c : kColumns) line.push_back(c.text(r.m).value_or(style == Style::Tsv ? "" : "-"));
        cells.push_back(std::move(line));
    }
    if (style == Style::Tsv) {
        for (const auto& line : cells) {
            for (std::size_t i = 0; i < line.size(); ++i) out << (i ? "\t" : "") << line[i];
            out << "\n";
        }
        return;
    }
    // The file and the words left-aligned, numbers right-aligned.
    printAligned(out, cells, [](std::size_t i) { return i == 0 || kColumns[i - 1].yesNo; });
}

// The whole file, or nothing with the reason in `error`.
std::optional<std::vector<uint8_t>> readWhole(const std::string& path, std::string& error)
{
    errno = 0;
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (!f) {
        error = std::strerror(errno ? errno : ENOENT);
        return std::nullopt;
    }
    std::vector<uint8_t> bytes;
    uint8_t block[65536];
    std::size_t n;
    while ((n = std::fread(block, 1, sizeof block, f)) > 0) bytes.insert(bytes.end(), block, block + n);
    const int err = std::ferror(f) ? (errno ? errno : EIO) : 0;
    std::fclose(f);
    if (err) {
        error = std::strerror(err);
        return std::nullopt;
    }
    return bytes;
}

} // namespace

int runAnalyse(const Arguments& args, CommandIo& io)
{
    if (args.has("--tsv") && args.has("--json")) return args.usageError(io, "give --tsv or --json, not both");
    int motor = 1;
    if (args.has("--motor")) {
        const std::string& m = args.value("--motor");
        if (m != "1" && m != "2") return args.usageError(io, "--motor is 1 or 2");
        motor = m == "1" ? 1 : 2;
    }
    const Style style = args.has("--json") ? Style::Json : args.has("--tsv") ? Style::Tsv : Style::Text;

    std::vector<Row> rows;
    bool failed = false;
    for (const std::string& file : args.positionals()) {
        std::string error;
        const auto bytes = readWhole(file, error);
        auto read = bytes ? readSweepFile(*bytes, motor - 1) : std::variant<SweepFile, std::string>(error);
        if (const auto* why = std::get_if<std::string>(&read)) {
            io.err << "kdxctl: analyse: " << file << ": " << *why << "\n";
            failed = true;
            continue;
        }
        Row r{file, std::move(std::get<SweepFile>(read)), 0, {}};
        if (r.sweep.source == SweepSource::DirectLog) r.motor = motor;
        r.m = analyseSweep(r.sweep.rate, r.sweep.error);
        r.sweep.rate = {}; // a long log's samples need not wait for the table
        r.sweep.error = {};
        if (style == Style::Json) printJson(io.out, r);
        else rows.push_back(std::move(r));
    }
    if (style != Style::Json && !rows.empty()) printTable(io.out, rows, style);
    if (!outputReached(io.out)) {
        io.err << "kdxctl: " << kOutputLost << "\n";
        return 1;
    }
    return failed ? 1 : 0;
}

} // namespace kdx::cli
