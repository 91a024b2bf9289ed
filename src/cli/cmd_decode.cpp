// kdxctl decode: a recorded byte stream in, the telemetry log out, exactly as the
// logging window writes it when the recording is played with a log running.
#include "cli/command.h"
#include "cli/commands.h"
#include "cli/json_writer.h"
#include "cli/option_parser.h"
#include "link/receiver.h"
#include "telemetry/telemetry_log_stream.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <memory>
#include <ostream>
#include <string>
#include <system_error>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

namespace kdx::cli {

namespace {

constexpr std::size_t kReadBlock = 1 << 20;  // bytes read from the recording at a time
constexpr std::size_t kWriteBlock = 1 << 20; // log text collected before it is written

const OptionDecl kOptions[] = {
    {.name = "-o",
     .alias = "--output",
     .takes = Takes::Value,
     .metavar = "OUT",
     .needs = "a file name",
     .help = "write the log to OUT instead of standard output; OUT is\n"
             "replaced only once the whole log is written, and an\n"
             "interrupted decode leaves no partial file behind"},
    {.name = "--json",
     .help = "give the counts as one line of JSON (fields in the\n"
             "README): on standard output with -o, else on standard\n"
             "error"},
};

} // namespace

const Syntax kDecodeSyntax{
    .synopsis = "usage: kdxctl decode RECORDING [-o OUT] [--json]",
    .about = "Turns a recorded byte stream (the raw bytes of the serial line, as the Comms\n"
             "Link window plays them) into the telemetry log the Data Logging window writes:\n"
             "the header in the mode of the first cyclic message, then one line per cyclic\n"
             "message in its own mode, without debug columns. The log goes to OUT or to\n"
             "standard output; the byte and message counts go to standard error. A\n"
             "recording without telemetry is an error, and then no log is written.",
    .options = kOptions,
    .positionals = {.min = 1,
                    .max = 1,
                    .missing = "no recording given",
                    .extra = "one recording at a time ('{}' is extra)",
                    .name = "RECORDING",
                    .help = "raw serial bytes: a saved Comms Link recording, or the\n"
                            "output of kdxctl sim --record"},
    .helpColumn = 21,
    .example = "kdxctl decode 'Run 0.Log' -o Run1.csv\n"
               "kdxctl decode hour.rec | head -3",
    .usageAfterError = true,
};

namespace {

std::string osReason(int err) { return std::generic_category().message(err); }

struct FileCloser {
    void operator()(std::FILE* f) const
    {
        if (f) std::fclose(f);
    }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

// The partial log's name while decode runs, for the signal handlers: they remove the
// file and then end the process as the signal would have. Empty while there is none.
char g_partialLog[4096];
struct sigaction g_previous[3];
constexpr int kCleanupSignals[3] = {SIGINT, SIGTERM, SIGHUP};

extern "C" void removePartialLog(int sig)
{
    if (g_partialLog[0] != '\0') ::unlink(g_partialLog);
    ::signal(sig, SIG_DFL);
    ::raise(sig);
}

// Holds the cleanup signals back while the partial log's name changes hands.
class SignalsHeld {
public:
    SignalsHeld()
    {
        sigset_t set;
        sigemptyset(&set);
        for (int sig : kCleanupSignals) sigaddset(&set, sig);
        ::sigprocmask(SIG_BLOCK, &set, &old_);
    }
    ~SignalsHeld() { ::sigprocmask(SIG_SETMASK, &old_, nullptr); }
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;

private:
    sigset_t old_;
};

// Where the log goes: standard output, or a private temporary file beside OUT that is
// renamed over OUT once the whole log is written. The temporary file is created afresh
// (never through a link planted under its name) and removed on every way out: a
// failure, a return, or an interrupting signal.
class LogOutput {
public:
    LogOutput(std::ostream& out) : out_(&out) {}

    bool openFile(const std::string& path, std::string& error)
    {
        target_ = path;
        std::string temp = path + ".kdxctl-XXXXXX";
        if (temp.size() >= sizeof g_partialLog) {
            error = "cannot write " + path + ": " + osReason(ENAMETOOLONG);
            return false;
        }
        int fd;
        {
            SignalsHeld held;
            fd = ::mkstemp(temp.data());
            if (fd >= 0) {
                std::memcpy(g_partialLog, temp.c_str(), temp.size() + 1);
                temp_ = temp;
                installHandlers();
            }
        }
        if (fd < 0) {
            error = "cannot write " + path + ": " + osReason(errno);
            return false;
        }
        // mkstemp makes the file private; the log gets what a new file would get.
        const mode_t mask = ::umask(0);
        ::umask(mask);
        ::fchmod(fd, 0666 & ~mask);
        file_.reset(::fdopen(fd, "wb"));
        if (!file_) {
            error = "cannot write " + path + ": " + osReason(errno);
            ::close(fd);
            return false;
        }
        return true;
    }

    bool write(const std::string& text, std::string& error)
    {
        if (text.empty()) return true;
        if (!file_) {
            out_->write(text.data(), static_cast<std::streamsize>(text.size()));
            if (!*out_) {
                error = "cannot write the log to standard output";
                return false;
            }
            return true;
        }
        errno = 0;
        if (std::fwrite(text.data(), 1, text.size(), file_.get()) != text.size()) {
            error = "cannot write " + target_ + ": " + osReason(errno ? errno : EIO);
            return false;
        }
        return true;
    }

    bool finish(std::string& error)
    {
        if (!file_) {
            out_->flush();
            return static_cast<bool>(*out_);
        }
        errno = 0;
        const bool closed = std::fclose(file_.release()) == 0;
        if (!closed) {
            error = "cannot write " + target_ + ": " + osReason(errno ? errno : EIO);
            return false;
        }
        SignalsHeld held;
        if (::rename(temp_.c_str(), target_.c_str()) != 0) {
            error = "cannot replace " + target_ + ": " + osReason(errno);
            return false;
        }
        forgetTemp();
        return true;
    }

    ~LogOutput()
    {
        file_.reset();
        if (temp_.empty()) return;
        SignalsHeld held;
        ::unlink(temp_.c_str());
        forgetTemp();
    }

private:
    void installHandlers()
    {
        struct sigaction action {};
        action.sa_handler = removePartialLog;
        sigemptyset(&action.sa_mask);
        // A signal the caller ignores (nohup) stays ignored.
        for (std::size_t i = 0; i < std::size(kCleanupSignals); ++i)
            if (::sigaction(kCleanupSignals[i], nullptr, &g_previous[i]) == 0 && g_previous[i].sa_handler != SIG_IGN)
                ::sigaction(kCleanupSignals[i], &action, nullptr);
        handlers_ = true;
    }

    // Called with the signals held.
    void forgetTemp()
    {
        g_partialLog[0] = '\0';
        temp_.clear();
        if (!handlers_) return;
        for (std::size_t i = 0; i < std::size(kCleanupSignals); ++i)
            ::sigaction(kCleanupSignals[i], &g_previous[i], nullptr);
        handlers_ = false;
    }

    std::ostream* out_;
    File file_;
    std::string target_;
    std::string temp_;
    bool handlers_ = false;
};

} // namespace

int runDecode(const Arguments& args, CommandIo& io)
{
    const std::string& recording = args.positionals()[0];
    const std::string& outPath = args.value("-o");

    errno = 0;
    File in(std::fopen(recording.c_str(), "rb"));
    if (!in) {
        io.err << "kdxctl: decode: cannot open " << recording << ": " << osReason(errno ? errno : ENOENT) << "\n";
        return 1;
    }
    LogOutput output(io.out);
    std::string error;
    if (!outPath.empty() && !output.openFile(outPath, error)) {
        io.err << "kdxctl: decode: " << error << "\n";
        return 1;
    }

    TelemetryLogStream log;
    log.text().reserve(kWriteBlock + 4096);
    Receiver rx(&log);
    std::vector<uint8_t> block(kReadBlock);
    uint64_t bytes = 0;
    for (;;) {
        const std::size_t n = std::fread(block.data(), 1, block.size(), in.get());
        if (n == 0) break;
        bytes += n;
        rx.receiveBytes(std::span<const uint8_t>(block.data(), n));
        if (log.text().size() >= kWriteBlock) {
            if (!output.write(log.text(), error)) {
                io.err << "kdxctl: decode: " << error << "\n";
                return 1;
            }
            log.text().clear();
        }
    }
    if (std::ferror(in.get())) {
        io.err << "kdxctl: decode: cannot read " << recording << "\n";
        return 1;
    }
    if (log.lines() == 0) {
        io.err << "kdxctl: decode: no telemetry in " << recording << " (" << bytes << " bytes, " << rx.goodMessages
               << " good messages, " << log.undecodable() << " undecodable cyclic messages); no log was written\n";
        return 1;
    }
    log.ensureHeader();
    if (!output.write(log.text(), error) || !output.finish(error)) {
        io.err << "kdxctl: decode: " << error << "\n";
        return 1;
    }

    const uint64_t noise = static_cast<uint64_t>(rx.CommsErrorCount) - rx.badMessages;
    if (args.has("--json")) {
        JsonWriter w;
        w.beginObject().key("recording").value(recording).key("output").valueOrNull(outPath);
        w.key("bytes").value(bytes).key("goodMessages").value(uint64_t{rx.goodMessages});
        w.key("badMessages").value(uint64_t{rx.badMessages}).key("noiseBytes").value(noise);
        w.key("logLines").value(log.lines()).key("undecodable").value(log.undecodable()).endObject();
        (outPath.empty() ? io.err : io.out) << w.line();
        return 0;
    }
    io.err << "decode: bytes " << bytes << ", good messages " << rx.goodMessages << ", bad messages " << rx.badMessages
           << ", noise bytes " << noise << ", log lines " << log.lines();
    if (log.undecodable() > 0) io.err << ", undecodable cyclic messages " << log.undecodable();
    io.err << "\n";
    return 0;
}

} // namespace kdx::cli
