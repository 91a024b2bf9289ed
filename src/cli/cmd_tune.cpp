// kdxctl tune: the guided gain search run headless against a module: the tuning drive
// steps the set point, candidate gains go out in the gain message, each is scored from
// its sweep, and the table and the best gains are printed. The module's memory is
// never written; the starting gains go back on the wire when the search ends or stops.
#include "cli/cli_args.h"
#include "cli/command.h"
#include "cli/commands.h"
#include "cli/module_link.h"
#include "cli/option_parser.h"
#include "cli/stdout_check.h"
#include "cli/text_table.h"
#include "config/driver_config.h"
#include "core/host_error.h"
#include "link/frame.h"
#include "link/message_ids.h"
#include "link/message_sink.h"
#include "link/receiver.h"
#include "telemetry/cyclic_telemetry.h"
#include "tuning/gain_message.h"
#include "tuning/gain_panel.h"
#include "tuning/tuning_guide.h"

#include <chrono>
#include <csignal>
#include <iostream>
#include <unistd.h>
#include <cstdio>
#include <ostream>
#include <sstream>

namespace kdx::cli {

namespace {

const OptionDecl kOptions[] = {
    {.name = "--port",
     .takes = Takes::Value,
     .metavar = "DEV",
     .required = true,
     .help = "serial port, e.g. /dev/ttyUSB0 (or kdxctl sim --pty's path)"},
    {.name = "--motor",
     .takes = Takes::Value,
     .metavar = "N",
     .needs = "1 or 2",
     .required = true,
     .help = "the motor to tune, 1 or 2 as on the Tuning Display (1\n"
             "through a Q-Vane: its Tilt axis)"},
    {.name = "--gains",
     .takes = Takes::Value,
     .metavar = "P,D",
     .help = "start from this P and D (in %) instead of the module's\n"
             "configured ones; its other gains stay as configured"},
    {.name = "--search",
     .takes = Takes::Value,
     .metavar = "LIST",
     .help = "the gains to search, in order, from P, D, I and IA\n"
             "(default P,D)"},
    {.name = "--max-factor",
     .takes = Takes::Value,
     .metavar = "F",
     .help = "keep each gain within start / F .. start x F, 1 to 10\n"
             "(default 2); a gain starting at 0 may reach F x 2.5\n"
             "coarse steps"},
    {.name = "--sweep",
     .takes = Takes::Value,
     .metavar = "S",
     .needs = "4 or 10",
     .help = "seconds each candidate is measured, 4 or 10 (default 4),\n"
             "after 2 s of settling"},
    kJsonOption,
};

} // namespace

const Syntax kTuneSyntax{
    .synopsis = "usage: kdxctl tune --port DEV --motor N [--gains P,D] [--search LIST]\n"
                "                   [--max-factor F] [--sweep 4|10] [--json]",
    .about = "Searches for gains that hold the motor best, as the Tuning Display's guide\n"
             "does: with the tuning drive stepping the set point, one gain at a time is\n"
             "tried over its range, coarsely and then finely, each candidate sent in the\n"
             "gain message and measured over one sweep. A candidate scores its RMS error,\n"
             "doubled when the rate rings (over half its power at one frequency above\n"
             "3 Hz), plus a share for step overshoot beyond 20 %; when the start rings, D\n"
             "is searched first. The search stops early, sending the starting gains back\n"
             "at once, on Ctrl+C, when telemetry stops, when a candidate's ringing passes\n"
             "15 deg/s RMS (and the start's), or when the error rises above twice the\n"
             "start's. Prints every candidate and the best gains; nothing is written to\n"
             "the module's memory (kdxctl set and write, or the Tuning Display's Update\n"
             "Config and Write, keep them).",
    .options = kOptions,
    .helpColumn = 19,
    .example = "kdxctl tune --port /dev/ttyUSB0 --motor 1\n"
               "kdxctl tune --port /dev/pts/3 --motor 1 --gains 25,50 --sweep 10 --json",
};

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kGainMsgMs = 40;   // the Tuning Display's gain message period
constexpr int kWatchdogMs = 500; // no telemetry this long: the link is lost
constexpr int kFirstTelemetryMs = 1000;

volatile std::sig_atomic_t g_interrupted = 0;
extern "C" void onTuneInterrupt(int) { g_interrupted = 1; }

// Telemetry of the tuned motor to the guide.
class TuneSink : public MessageSink {
public:
    TuneSink(TuningGuide& guide, int motor) : guide_(guide), motor_(motor) {}
    void PutCyclicMsg(const MsgView& m) override { take(m, false); }
    void PutCyclicQvaneMsg(const MsgView& m) override { take(m, true); }
    void PutMemoryMsg(const MsgView&) override {}
    void PutAxisMemoryMsg(const MsgView&) override {}
    void PutMessageReceived(bool) override {}

    bool seen = false;
    bool driveActive = false;
    Clock::time_point last{};

private:
    void take(const MsgView& m, bool relayed)
    {
        try {
            const CyclicTelemetry t = relayed ? decodeCyclicQvaneMsg(m) : decodeCyclicMsg(m);
            const MotorTelemetry& mt = t.motor[static_cast<std::size_t>(relayed ? 0 : motor_)];
            seen = true;
            driveActive = mt.TestDriveActive;
            last = Clock::now();
            guide_.putSample(mt.AxisRate, mt.AxisError);
        } catch (const HostError&) {
            // a malformed message is skipped, as the live display skips it
        }
    }
    TuningGuide& guide_;
    int motor_;
};

// The gain message on the line, direct or relayed.
class LineOutput : public GuideOutput {
public:
    LineOutput(ModuleLink& link, int motor) : link_(link), motor_(motor) {}
    void sendGains(const GainSet& g) override
    {
        OutMsgBuffer msg{};
        buildGainMsg(msg, g.P, g.I, g.IA, g.D, g.G, g.V1, g.V2, motor_, GainMsgRoute{link_.qvane(), link_.axis()});
        std::vector<uint8_t> bytes{msg::StartByte};
        const auto body = frameBody(msg);
        bytes.insert(bytes.end(), body.begin(), body.end());
        std::string e;
        if (!link_.send(bytes, e) && error.empty()) error = e;
    }
    void setGainMessage(bool) override {} // kdxctl runs no gain message of its own
    std::string error;

private:
    ModuleLink& link_;
    int motor_;
};

const char* gainName(Gain g)
{
    switch (g) {
    case Gain::P: return "P";
    case Gain::I: return "I";
    case Gain::IA: return "IA";
    case Gain::D: return "D";
    default: return "?";
    }
}

std::optional<std::vector<Gain>> parseSearch(const std::string& text)
{
    std::vector<Gain> gains;
    std::stringstream in(text);
    std::string name;
    while (std::getline(in, name, ',')) {
        Gain g;
        if (name == "P" || name == "p") g = Gain::P;
        else if (name == "D" || name == "d") g = Gain::D;
        else if (name == "I" || name == "i") g = Gain::I;
        else if (name == "IA" || name == "ia") g = Gain::IA;
        else return std::nullopt;
        if (std::find(gains.begin(), gains.end(), g) != gains.end()) return std::nullopt;
        gains.push_back(g);
    }
    if (gains.empty()) return std::nullopt;
    return gains;
}

std::string fixed(double v, int decimals)
{
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.*f", decimals, v);
    return buf;
}

int gainDecimals(Gain g) { return g == Gain::IA ? 4 : 0; }

void printTable(std::ostream& out, const TuningGuide& guide)
{
    std::vector<std::vector<std::string>> cells;
    std::vector<std::string> header{"sweep"};
    for (Gain g : guide.settings().gains) header.emplace_back(gainName(g));
    for (const char* c : {"err_rms", "err_peak", "ringing", "overshoot_pct", "score"}) header.emplace_back(c);
    cells.push_back(header);
    const auto best = guide.best();
    for (std::size_t i = 0; i < guide.rows().size(); ++i) {
        const GuideRow& r = guide.rows()[i];
        std::vector<std::string> line{i == 0 ? "start" : std::to_string(i)};
        for (Gain g : guide.settings().gains) line.push_back(fixed(r.gains[g], gainDecimals(g)));
        line.push_back(fixed(r.errorRms, 3));
        line.push_back(fixed(r.errorPeak, 3));
        line.push_back(fixed(r.ringing, 2));
        line.push_back(r.overshoot ? fixed(*r.overshoot, 1) : "-");
        line.push_back(fixed(r.score, 3) + (best && r.gains == best->gains && r.score == best->score ? " *" : ""));
        cells.push_back(std::move(line));
    }
    // The sweep and the score (with its mark) left-aligned, numbers right-aligned.
    printAligned(out, cells, [&](std::size_t i) { return i == 0 || i + 1 == header.size(); });
}

std::string gainsText(const TuningGuide& guide, const GainSet& set, bool json)
{
    std::string s;
    for (Gain g : guide.settings().gains) {
        if (!s.empty()) s += json ? "," : " ";
        s += json ? std::string("\"") + gainName(g) + "\":" : std::string(gainName(g)) + " ";
        s += fixed(set[g], gainDecimals(g));
    }
    return json ? "{" + s + "}" : s;
}

const char* stopName(GuideStop s)
{
    switch (s) {
    case GuideStop::User: return "interrupted";
    case GuideStop::LinkLost: return "link lost";
    case GuideStop::Ringing: return "ringing";
    case GuideStop::ErrorRise: return "error rose";
    case GuideStop::None: break;
    }
    return nullptr;
}

void printJson(std::ostream& out, const TuningGuide& guide, int motor)
{
    out << "{\"motor\":" << motor << ",\"start\":" << gainsText(guide, guide.startGains(), true) << ",\"rows\":[";
    for (std::size_t i = 0; i < guide.rows().size(); ++i) {
        const GuideRow& r = guide.rows()[i];
        out << (i ? "," : "") << "{\"gains\":" << gainsText(guide, r.gains, true)
            << ",\"err_rms\":" << fixed(r.errorRms, 3) << ",\"err_peak\":" << fixed(r.errorPeak, 3)
            << ",\"ringing\":" << fixed(r.ringing, 2)
            << ",\"overshoot_pct\":" << (r.overshoot ? fixed(*r.overshoot, 1) : "null")
            << ",\"score\":" << fixed(r.score, 3) << "}";
    }
    out << "],\"best\":";
    if (const auto b = guide.best()) out << gainsText(guide, b->gains, true);
    else out << "null";
    const char* stop = stopName(guide.stopReason());
    out << ",\"sweeps\":" << guide.rows().size() << ",\"stopped\":" << (stop ? "\"" + std::string(stop) + "\"" : "null")
        << "}\n";
}

struct TuneOptions {
    int motor = 0;
    GuideSettings settings;
    std::optional<std::pair<double, double>> startPD; // --gains
};

// The options beyond the parser's own checks; the text of a usage error, if any.
std::optional<std::string> readTuneOptions(const Arguments& args, TuneOptions& o)
{
    const auto motor = parseMotor(args.value("--motor"));
    if (!motor) return "--motor is 1 or 2";
    o.motor = *motor;
    if (args.has("--search")) {
        const auto gains = parseSearch(args.value("--search"));
        if (!gains) return "--search takes names from P, D, I, IA, each once, e.g. P,D";
        o.settings.gains = *gains;
    }
    if (args.has("--max-factor")) {
        const auto f = parseNumber(args.value("--max-factor"));
        if (!f || *f < 1 || *f > 10) return "--max-factor is a number from 1 to 10";
        o.settings.maxFactor = *f;
    }
    if (args.has("--sweep")) {
        const std::string& s = args.value("--sweep");
        if (s != "4" && s != "10") return "--sweep is 4 or 10";
        o.settings.sweepSamples = s == "4" ? 400 : 1000;
    }
    if (args.has("--gains")) {
        const std::string& text = args.value("--gains");
        const auto comma = text.find(',');
        const auto p = comma == std::string::npos ? std::nullopt : parseNumber(text.substr(0, comma));
        const auto d = comma == std::string::npos ? std::nullopt : parseNumber(text.substr(comma + 1));
        const GainEntry& pe = gainEntry(Gain::P);
        if (!p || !d || *p < 0 || *p > pe.max || *d < 0 || *d > gainEntry(Gain::D).max)
            return "--gains is P,D in %, each 0 to 12700, e.g. 25,50";
        o.startPD = {{*p, *d}};
    }
    return std::nullopt;
}

// The module's gains for the motor, with --gains' P and D in their place.
GainSet startingGains(const MemoryImage& image, const TuneOptions& o)
{
    DriverConfig config;
    config.image() = image;
    config.ImageToParams();
    const int m = o.motor;
    GainSet start{config.GetP(m),  config.GetI(m),  config.GetIA(m), config.GetD(m),
                  config.GetV1(m), config.GetV2(m), config.GetG(m)};
    if (o.startPD) {
        start.P = static_cast<float>(o.startPD->first);
        start.D = static_cast<float>(o.startPD->second);
    }
    return start;
}

// Switches the motor's tuning drive on or off (each message toggles it).
void toggleDrive(ModuleLink& link, int motor)
{
    const auto frame = link.qvane() ? buildFrame(msg::RelayMarker, {static_cast<uint8_t>(msg::TuningDrive),
                                                                    static_cast<uint8_t>(1 + 128 + 16 * link.axis())})
                                    : buildFrame(msg::TuningDrive, {static_cast<uint8_t>(1 << motor)});
    std::string e;
    link.send(frame, e);
}

// The line, the receiver and the guide it feeds, in real time.
struct TuneLine {
    ModuleLink& link;
    Receiver& rx;
    TuningGuide& guide;
    TuneSink& sink;
    LineOutput& output;
    std::vector<uint8_t> bytes;
    std::string error;

    // Up to `ms` of bytes into the receiver; false when the line failed.
    bool pump(int ms)
    {
        bytes.clear();
        if (!link.receive(bytes, ms, error) && !g_interrupted) return false;
        rx.receiveBytes(bytes);
        return true;
    }

    // Runs the guide to its end, a stop or a fault: the gain message every 40 ms, the
    // telemetry between. Returns 1 when the line or the telemetry failed.
    int follow(CommandIo& io, bool progress)
    {
        auto nextTick = Clock::now() + std::chrono::milliseconds(kGainMsgMs);
        std::size_t reported = 0;
        while (guide.running()) {
            if (g_interrupted) {
                guide.stop();
                return 0;
            }
            const auto now = Clock::now();
            if (now - sink.last > std::chrono::milliseconds(kWatchdogMs)) {
                guide.linkLost();
                error = "telemetry stopped";
                return 1;
            }
            if (now >= nextTick) {
                guide.gainMsgTick();
                nextTick += std::chrono::milliseconds(kGainMsgMs);
            }
            const auto wait = std::chrono::duration_cast<std::chrono::milliseconds>(nextTick - Clock::now()).count();
            if (!pump(static_cast<int>(std::clamp<long long>(wait, 1, kGainMsgMs)))) {
                guide.linkLost();
                return 1;
            }
            if (!output.error.empty()) {
                guide.linkLost();
                error = output.error;
                return 1;
            }
            for (; progress && reported < guide.rows().size(); ++reported) {
                const GuideRow& r = guide.rows()[reported];
                io.err << "tune: sweep " << reported + 1 << " of " << guide.plannedSweeps() << ": "
                       << gainsText(guide, r.gains, false) << ", err_rms " << fixed(r.errorRms, 3) << "\n";
            }
        }
        return 0;
    }
};

// The table (or JSON) and the exit code.
int reportTune(CommandIo& io, const TuningGuide& guide, const TuneOptions& o, bool json, int rc,
               const std::string& error)
{
    if (json) {
        printJson(io.out, guide, o.motor + 1);
    } else if (!guide.rows().empty()) {
        printTable(io.out, guide);
        const GuideRow b = *guide.best();
        io.out << "best: " << gainsText(guide, b.gains, false) << " (err_rms " << fixed(b.errorRms, 3) << " against "
               << fixed(guide.rows().front().errorRms, 3) << " at the start, " << guide.rows().size() << " sweeps)\n"
               << "nothing was written to the module; the starting gains were sent back\n";
    }
    if (!outputReached(io.out)) {
        io.err << "kdxctl: " << kOutputLost << "\n";
        return 1;
    }
    if (guide.stopReason() != GuideStop::None) {
        io.err << "kdxctl: tune: " << guide.statusText() << (error.empty() ? "" : " (" + error + ")") << "\n";
        return 1;
    }
    if (rc) io.err << "kdxctl: tune: " << error << "\n";
    return rc;
}

} // namespace

int runTune(const Arguments& args, CommandIo& io)
{
    TuneOptions o;
    if (const auto usage = readTuneOptions(args, o)) return args.usageError(io, *usage);

    ModuleLink link(args.value("--port"));
    std::string error;
    MemoryImage image{};
    if (!link.connect(std::nullopt, error) || !link.read(image, error)) {
        io.err << "kdxctl: tune: " << error << "\n";
        return 1;
    }
    if (link.qvane() && o.motor != 0) {
        io.err << "kdxctl: tune: a Q-Vane relays one motor per axis: use --motor 1\n";
        return 1;
    }
    const GainSet start = startingGains(image, o);

    LineOutput output(link, o.motor);
    TuningGuide guide(output, o.settings);
    TuneSink sink(guide, o.motor);
    Receiver rx(&sink);
    TuneLine line{link, rx, guide, sink, output, {}, {}};

    g_interrupted = 0;
    const auto previous = std::signal(SIGINT, onTuneInterrupt);
    const auto listenUntil = Clock::now() + std::chrono::milliseconds(kFirstTelemetryMs);
    while (!sink.seen && !g_interrupted && Clock::now() < listenUntil && line.pump(50)) {
    }
    // The tuning drive: switched on unless it already runs, and off again at the end.
    bool driveSwitched = false;
    int rc = 0;
    if (!sink.seen) {
        line.error = "no cyclic telemetry after the read";
        rc = 1;
    } else {
        if (!sink.driveActive) {
            toggleDrive(link, o.motor);
            driveSwitched = true;
        }
        // Progress only for a person watching: a script's stderr keeps the one line of a failure.
        const bool progress = &io.err == &std::cerr && ::isatty(STDERR_FILENO);
        if (progress)
            io.err << "tune: " << guide.plannedSweeps() << " sweeps of "
                   << (o.settings.settleSamples + o.settings.sweepSamples) / 100
                   << " s each; Ctrl+C stops and restores the gains\n";
        guide.start(start, false);
        rc = line.follow(io, progress);
    }
    if (driveSwitched) toggleDrive(link, o.motor);
    std::signal(SIGINT, previous == SIG_ERR ? SIG_DFL : previous);
    return reportTune(io, guide, o, args.has("--json"), rc, line.error);
}

} // namespace kdx::cli
