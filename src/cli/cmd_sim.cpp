// kdxctl sim: the simulated module on a pseudo-terminal, or into a recording.
#include "cli/command.h"
#include "sim/pty_bridge.h"
#include "sim/recording.h"
#include "sim/simulator.h"

#include <charconv>
#include <csignal>
#include <cstdlib>
#include <ostream>
#include <string>
#include <vector>

namespace kdx::cli {

namespace {

const char* const kUsage =
    "usage: kdxctl sim [--qvane] [--seed N] [--noise RATE] --pty\n"
    "       kdxctl sim [--qvane] [--seed N] [--noise RATE] --record FILE --seconds S\n"
    "\n"
    "Runs a simulated module: a KDX with two motors, or with --qvane a Q-Vane\n"
    "relaying three KDX axes. It streams telemetry at 100 messages per second,\n"
    "answers memory reads and writes, takes gain, test and tuning-drive messages\n"
    "and restarts into its bootloader, with each axis a small physical model of a\n"
    "hand-held camera.\n"
    "\n"
    "  --pty           serve on a new pseudo-terminal in real time; the first line of\n"
    "                  output is the device path. Runs until interrupted (Ctrl+C).\n"
    "  --record FILE   write S seconds of the module's output to FILE as a recording,\n"
    "                  as fast as the machine allows\n"
    "  --seconds S     simulated seconds to record (up to 86400)\n"
    "  --qvane         a Q-Vane instead of a directly connected KDX\n"
    "  --seed N        seed of the simulated hand's motion (default 1); the same seed\n"
    "                  gives the same run\n"
    "  --noise RATE    corrupt this fraction of output bytes (0 to 1, default 0)\n"
    "\n"
    "example:\n"
    "  kdxctl sim --pty                      then open the printed /dev/pts/N\n"
    "  kdxctl sim --qvane --seed 7 --record walk.bin --seconds 60\n"
    "  kdxctl sim --record noisy.rec --seconds 60 --noise 0.01\n";

constexpr double kMaxSeconds = 86400;

volatile std::sig_atomic_t g_stop = 0;
extern "C" void onStopSignal(int) { g_stop = 1; }

bool parseNumber(const std::string& text, double& value)
{
    const char* begin = text.c_str();
    char* end = nullptr;
    value = std::strtod(begin, &end);
    return !text.empty() && end == begin + text.size();
}

bool parseSeed(const std::string& text, uint64_t& value)
{
    const auto [ptr, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    return !text.empty() && ec == std::errc() && ptr == text.data() + text.size();
}

int usageError(CommandIo& io, const std::string& what)
{
    io.err << "kdxctl sim: " << what << " (see kdxctl sim --help)\n";
    return 2;
}

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
    struct sigaction oldInt {}, oldTerm {};
    g_stop = 0;
    sigaction(SIGINT, &action, &oldInt);
    sigaction(SIGTERM, &action, &oldTerm);

    io.out << bridge.devicePath() << std::endl;
    io.err << "kdxctl sim: a simulated " << (options.qvane ? "Q-Vane" : "KDX") << " is on "
           << bridge.devicePath() << "; Ctrl+C stops it\n";

    sim::Simulator simulator(options);
    const bool ok = bridge.serve(simulator, [] { return g_stop != 0; }, error);

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

int runSim(const std::vector<std::string>& args, CommandIo& io)
{
    sim::SimOptions options;
    bool pty = false;
    std::string recordPath;
    double seconds = -1;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        auto value = [&](std::string& out) {
            if (i + 1 >= args.size()) return false;
            out = args[++i];
            return true;
        };
        std::string v;
        if (a == "--pty") {
            pty = true;
        } else if (a == "--qvane") {
            options.qvane = true;
        } else if (a == "--seed") {
            if (!value(v) || !parseSeed(v, options.seed)) return usageError(io, "--seed needs a whole number 0 or more");
        } else if (a == "--noise") {
            if (!value(v) || !parseNumber(v, options.noise) || !(options.noise >= 0 && options.noise <= 1))
                return usageError(io, "--noise needs a fraction from 0 to 1");
        } else if (a == "--record") {
            if (!value(recordPath) || recordPath.empty()) return usageError(io, "--record needs a file name");
        } else if (a == "--seconds") {
            if (!value(v) || !parseNumber(v, seconds) || !(seconds > 0 && seconds <= kMaxSeconds))
                return usageError(io, "--seconds needs a number above 0 and up to 86400");
        } else {
            return usageError(io, "unknown option '" + a + "'");
        }
    }
    if (pty == !recordPath.empty()) return usageError(io, "give either --pty or --record FILE");
    if (pty) {
        if (seconds > 0) return usageError(io, "--seconds goes with --record");
        return servePty(options, io);
    }
    if (seconds <= 0) return usageError(io, "--record needs --seconds S");

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

} // namespace

KDX_COMMAND("sim", "runs a simulated module on a pseudo-terminal or into a recording", kUsage, runSim);

} // namespace kdx::cli
