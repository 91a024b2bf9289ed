// kdxctl sim: the simulated module on a pseudo-terminal, or into a recording.
#include "cli/cli_args.h"
#include "cli/command.h"
#include "cli/commands.h"
#include "sim/pty_bridge.h"
#include "sim/recording.h"
#include "sim/simulator.h"

#include <csignal>
#include <cstdlib>
#include <ostream>
#include <string>
#include <vector>

namespace kdx::cli {

namespace {

const OptionDecl kOptions[] = {
    {.name = "--pty",
     .help = "serve on a new pseudo-terminal in real time; the first line of\n"
             "output is the device path. Runs until interrupted (Ctrl+C)."},
    {.name = "--record",
     .takes = Takes::Value,
     .metavar = "FILE",
     .needs = "a file name",
     .help = "write S seconds of the module's output to FILE as a recording,\n"
             "as fast as the machine allows"},
    {.name = "--seconds",
     .takes = Takes::Value,
     .metavar = "S",
     .needs = "a number above 0 and up to 86400",
     .help = "simulated seconds to record (up to 86400)"},
    {.name = "--qvane", .help = "a Q-Vane instead of a directly connected KDX"},
    {.name = "--seed",
     .takes = Takes::Value,
     .metavar = "N",
     .needs = "a whole number 0 or more",
     .help = "seed of the simulated hand's motion (default 1); the same seed\n"
             "gives the same run"},
    {.name = "--noise",
     .takes = Takes::Value,
     .metavar = "RATE",
     .needs = "a fraction from 0 to 1",
     .help = "corrupt this fraction of output bytes (0 to 1, default 0)"},
};

} // namespace

const Syntax kSimSyntax{
    .synopsis = "usage: kdxctl sim [--qvane] [--seed N] [--noise RATE] --pty\n"
                "       kdxctl sim [--qvane] [--seed N] [--noise RATE] --record FILE --seconds S",
    .about = "Runs a simulated module: a KDX with two motors, or with --qvane a Q-Vane\n"
             "relaying three KDX axes. It streams telemetry at 100 messages per second,\n"
             "answers memory reads and writes, takes gain, test and tuning-drive messages\n"
             "and restarts into its bootloader, with each axis a small physical model of a\n"
             "hand-held camera.",
    .options = kOptions,
    .helpColumn = 18,
    .example = "kdxctl sim --pty                      then open the printed /dev/pts/N\n"
               "kdxctl sim --qvane --seed 7 --record walk.bin --seconds 60\n"
               "kdxctl sim --record noisy.rec --seconds 60 --noise 0.01",
};

namespace {

constexpr double kMaxSeconds = 86400;

volatile std::sig_atomic_t g_stop = 0;
extern "C" void onStopSignal(int) { g_stop = 1; }

int servePty(const sim::SimOptions& options, CommandIo& io)
{
    sim::PtyBridge bridge;
    std::string error;
    if (!bridge.open(error)) {
        io.err << "kdxctl sim: " << error << "\n";
        return 1;
    }
    // The handlers go in before the path is printed: whoever reads the path may stop
    // the simulation at once. No SA_RESTART: the signal must wake the bridge's wait.
    struct sigaction action {};
    action.sa_handler = onStopSignal;
    sigemptyset(&action.sa_mask);
    struct sigaction oldInt {
    }, oldTerm{};
    g_stop = 0;
    sigaction(SIGINT, &action, &oldInt);
    sigaction(SIGTERM, &action, &oldTerm);

    io.out << bridge.devicePath() << std::endl;
    io.err << "kdxctl sim: a simulated " << (options.qvane ? "Q-Vane" : "KDX") << " is on " << bridge.devicePath()
           << "; Ctrl+C stops it\n";

    sim::Simulator simulator(options);
    const bool ok = bridge.serve(
        simulator, [] { return g_stop != 0; }, error);

    sigaction(SIGINT, &oldInt, nullptr);
    sigaction(SIGTERM, &oldTerm, nullptr);
    if (!ok) {
        io.err << "kdxctl sim: " << error << "\n";
        return 1;
    }
    const auto& s = bridge.stats();
    io.err << "kdxctl sim: stopped after " << static_cast<long long>(simulator.now()) << " s; " << s.bytesOut
           << " bytes sent, " << s.bytesIn << " received, " << s.bytesDropped << " unread and dropped\n";
    return 0;
}

} // namespace

int runSim(const Arguments& args, CommandIo& io)
{
    sim::SimOptions options;
    const bool pty = args.has("--pty");
    const std::string& recordPath = args.value("--record");
    double seconds = -1;
    options.qvane = args.has("--qvane");
    if (args.has("--seed")) {
        const auto seed = parseWhole<uint64_t>(args.value("--seed"));
        if (!seed) return args.usageError(io, "--seed needs a whole number 0 or more");
        options.seed = *seed;
    }
    if (args.has("--noise")) {
        const auto noise = parseNumber(args.value("--noise"));
        if (!noise || !(*noise >= 0 && *noise <= 1)) return args.usageError(io, "--noise needs a fraction from 0 to 1");
        options.noise = *noise;
    }
    if (args.has("--record") && recordPath.empty()) return args.usageError(io, "--record needs a file name");
    if (args.has("--seconds")) {
        const auto value = parseNumber(args.value("--seconds"));
        if (!value || !(*value > 0 && *value <= kMaxSeconds))
            return args.usageError(io, "--seconds needs a number above 0 and up to 86400");
        seconds = *value;
    }
    if (pty == !recordPath.empty()) return args.usageError(io, "give either --pty or --record FILE");
    if (pty) {
        if (seconds > 0) return args.usageError(io, "--seconds goes with --record");
        return servePty(options, io);
    }
    if (seconds <= 0) return args.usageError(io, "--record needs --seconds S");

    std::string error;
    const long long bytes = sim::writeRecording(options, seconds, recordPath, error);
    if (bytes < 0) {
        io.err << "kdxctl sim: " << error << "\n";
        return 1;
    }
    io.err << "kdxctl sim: wrote " << bytes << " bytes, " << seconds << " s of a simulated "
           << (options.qvane ? "Q-Vane" : "KDX") << ", to " << recordPath << "\n";
    return 0;
}

} // namespace kdx::cli
