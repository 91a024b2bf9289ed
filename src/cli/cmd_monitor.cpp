// kdxctl monitor: the telemetry log lines of a live module (or of the simulated one) on
// standard output, as they arrive.
#include "cli/cli_args.h"
#include "cli/command.h"
#include "cli/commands.h"
#include "cli/posix_serial.h"
#include "link/frame.h"
#include "link/message_ids.h"
#include "link/receiver.h"
#include "sim/simulator.h"
#include "telemetry/telemetry_log_stream.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <memory>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

namespace kdx::cli {

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr int kPollMs = 100;           // longest wait for bytes before checking the clock
constexpr double kSimTick = 0.01;      // the simulated module is advanced 100 times a second
constexpr double kProbeInterval = 1.0; // asks a Q-Vane for its Tilt axis until telemetry comes

const OptionDecl kOptions[] = {
    {.name = "--port",
     .takes = Takes::Value,
     .metavar = "DEV",
     .help = "serial port, e.g. /dev/ttyUSB0 (or --port=DEV)"},
    {.name = "--simulate",
     .takes = Takes::OptionalValue,
     .help = "the built-in simulated KDX, run in real time, instead of\n"
             "a port; --simulate=qvane simulates a Q-Vane with three\n"
             "KDX axes"},
    {.name = "--seconds",
     .takes = Takes::Value,
     .metavar = "S",
     .help = "stop after S seconds (a positive number, e.g. 2.5, or\n"
             "--seconds=S); without it the monitor runs until Ctrl+C"},
};

} // namespace

const Syntax kMonitorSyntax{
    .synopsis = "usage: kdxctl monitor --port DEV [--seconds S]\n"
                "       kdxctl monitor --simulate[=qvane] [--seconds S]",
    .about = "Prints the telemetry log of a live module on standard output as it arrives:\n"
             "the header once the first cyclic message shows the mode, then one line per\n"
             "message, exactly as the Data Logging window writes them. Until telemetry\n"
             "arrives it asks a Q-Vane for its Tilt axis once a second, as the program does\n"
             "while it waits. Stops after S seconds or on Ctrl+C; the counts go to standard\n"
             "error. Fails when no telemetry arrived at all.",
    .options = kOptions,
    .helpColumn = 21,
    .example = "kdxctl monitor --port /dev/ttyUSB0 --seconds 10 > run.csv\n"
               "kdxctl monitor --simulate=qvane --seconds 2",
    .usageAfterError = true,
};

namespace {

volatile std::sig_atomic_t g_interrupted = 0;

extern "C" void onInterrupt(int) { g_interrupted = 1; }

// Where bytes come from: a serial line or the simulated module.
class Source {
public:
    virtual ~Source() = default;
    // Waits up to timeoutMs and appends what arrived; false with a reason on failure.
    virtual bool poll(std::vector<uint8_t>& bytes, int timeoutMs, std::string& error) = 0;
    virtual bool send(std::span<const uint8_t> bytes, std::string& error) = 0;
};

class PortSource : public Source {
public:
    bool open(const std::string& path, std::string& error) { return port_.open(path, error); }
    bool poll(std::vector<uint8_t>& bytes, int timeoutMs, std::string& error) override
    {
        return port_.read(bytes, timeoutMs, error);
    }
    bool send(std::span<const uint8_t> bytes, std::string& error) override { return port_.write(bytes, error); }

private:
    PosixSerial port_;
};

// The simulated module, advanced by wall-clock time in 10 ms steps.
class SimSource : public Source {
public:
    explicit SimSource(bool qvane) : sim_(makeOptions(qvane)), last_(Clock::now()) {}

    bool poll(std::vector<uint8_t>& bytes, int timeoutMs, std::string&) override
    {
        const auto wake = std::min(last_ + std::chrono::duration_cast<Clock::duration>(Seconds(kSimTick)),
                                   Clock::now() + std::chrono::milliseconds(timeoutMs));
        std::this_thread::sleep_until(wake);
        const auto now = Clock::now();
        sim_.advance(Seconds(now - last_).count(), bytes);
        last_ = now;
        return true;
    }
    bool send(std::span<const uint8_t> bytes, std::string&) override
    {
        sim_.consume(bytes);
        return true;
    }

private:
    static sim::SimOptions makeOptions(bool qvane)
    {
        sim::SimOptions o;
        o.qvane = qvane;
        return o;
    }
    sim::Simulator sim_;
    Clock::time_point last_;
};

struct Options {
    std::string port;
    bool simulate = false;
    bool qvane = false;
    double seconds = 0; // 0: until interrupted
};

// Reads the options' values into o: 0, or 2 after printing the usage error.
int readOptions(const Arguments& args, Options& o, CommandIo& io)
{
    o.port = args.value("--port");
    o.simulate = args.has("--simulate");
    o.qvane = !args.values("--simulate").empty();
    if (o.qvane && args.value("--simulate") != "qvane") return args.usageError(io, "--simulate takes only '=qvane'");
    if (args.has("--seconds")) {
        const auto seconds = parseNumber(args.value("--seconds"));
        if (!seconds || !(*seconds > 0)) return args.usageError(io, "--seconds needs a positive number");
        o.seconds = *seconds;
    }
    if (o.simulate == !o.port.empty()) return args.usageError(io, "give either --port DEV or --simulate");
    return 0;
}

} // namespace

int runMonitor(const Arguments& args, CommandIo& io)
{
    Options o;
    if (const int usage = readOptions(args, o, io)) return usage;

    std::unique_ptr<Source> source;
    std::string error;
    if (o.simulate) {
        source = std::make_unique<SimSource>(o.qvane);
    } else {
        auto port = std::make_unique<PortSource>();
        if (!port->open(o.port, error)) {
            io.err << "kdxctl: monitor: " << error << "\n";
            return 1;
        }
        source = std::move(port);
    }

    TelemetryLogStream log;
    Receiver rx(&log);
    const std::vector<uint8_t> selectTilt = buildFrame(msg::SelectAxisBase + 0, {});
    std::vector<uint8_t> bytes;
    uint64_t total = 0;
    int rc = 0;

    g_interrupted = 0;
    const auto previous = std::signal(SIGINT, onInterrupt);
    const auto start = Clock::now();
    double nextProbe = kProbeInterval;
    for (;;) {
        if (g_interrupted) break;
        const double elapsed = Seconds(Clock::now() - start).count();
        if (o.seconds > 0 && elapsed >= o.seconds) break;
        if (!log.headerWritten() && elapsed >= nextProbe) {
            if (!source->send(selectTilt, error)) {
                io.err << "kdxctl: monitor: " << error << "\n";
                rc = 1;
                break;
            }
            nextProbe += kProbeInterval;
        }
        int timeoutMs = kPollMs;
        if (o.seconds > 0)
            timeoutMs = static_cast<int>(std::clamp((o.seconds - elapsed) * 1000.0 + 1.0, 1.0, double(kPollMs)));
        bytes.clear();
        if (!source->poll(bytes, timeoutMs, error)) {
            if (g_interrupted) break;
            io.err << "kdxctl: monitor: " << error << "\n";
            rc = 1;
            break;
        }
        total += bytes.size();
        rx.receiveBytes(bytes);
        if (!log.text().empty()) {
            io.out.write(log.text().data(), static_cast<std::streamsize>(log.text().size()));
            io.out.flush();
            log.text().clear();
            if (!io.out) {
                io.err << "kdxctl: monitor: cannot write to standard output\n";
                rc = 1;
                break;
            }
        }
    }
    std::signal(SIGINT, previous == SIG_ERR ? SIG_DFL : previous);

    io.err << "monitor: bytes " << total << ", good messages " << rx.goodMessages << ", bad messages " << rx.badMessages
           << ", log lines " << log.lines() << "\n";
    if (rc == 0 && !log.headerWritten()) {
        io.err << "kdxctl: monitor: no cyclic telemetry received\n";
        rc = 1;
    }
    return rc;
}

} // namespace kdx::cli
