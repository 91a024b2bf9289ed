// kdxctl decode: a recorded byte stream in, the telemetry log out, exactly as the
// logging window writes it when the recording is played with a log running.
#include "cli/command.h"
#include "cli/commands.h"
#include "cli/option_parser.h"
#include "link/receiver.h"
#include "telemetry/telemetry_log_stream.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <ostream>
#include <string>
#include <system_error>
#include <vector>

namespace kdx::cli {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kReadBlock = 1 << 20;  // bytes read from the recording at a time
constexpr std::size_t kWriteBlock = 1 << 20; // log text collected before it is written

const OptionSpec kOptions[] = {
    {.name = "-o", .alias = "--output", .takes = Takes::Value, .metavar = "OUT", .needs = "a file name",
     .help = "write the log to OUT instead of standard output; OUT is\n"
             "replaced only once the whole log is written"},
};

} // namespace

const Syntax kDecodeSyntax{
    .synopsis = "usage: kdxctl decode RECORDING [-o OUT]",
    .about = "Turns a recorded byte stream (the raw bytes of the serial line, as the Comms\n"
             "Link window plays them) into the telemetry log the Data Logging window writes:\n"
             "the header in the mode of the first cyclic message, then one line per cyclic\n"
             "message in its own mode, without debug columns. The log goes to OUT or to\n"
             "standard output; the byte and message counts go to standard error.",
    .options = kOptions,
    .positionals = {.min = 1, .max = 1, .missing = "no recording given",
                    .extra = "one recording at a time ('{}' is extra)", .name = "RECORDING",
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

// Where the log goes: standard output, or a temporary file beside OUT that is renamed
// over OUT once the whole log is written, so a failed decode never leaves half a log.
class LogOutput {
public:
    LogOutput(std::ostream& out) : out_(&out) {}

    bool openFile(const std::string& path, std::string& error)
    {
        target_ = path;
        temp_ = path + ".kdxctl-part";
        errno = 0;
        file_.reset(std::fopen(temp_.c_str(), "wb"));
        if (!file_) {
            error = "cannot write " + path + ": " + osReason(errno ? errno : ENOENT);
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
        std::error_code ec;
        fs::rename(temp_, target_, ec);
        if (ec) {
            error = "cannot replace " + target_ + ": " + ec.message();
            return false;
        }
        temp_.clear();
        return true;
    }

    ~LogOutput()
    {
        file_.reset();
        if (!temp_.empty()) {
            std::error_code ec;
            fs::remove(temp_, ec);
        }
    }

private:
    std::ostream* out_;
    File file_;
    std::string target_;
    std::string temp_;
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
    log.ensureHeader();
    if (!output.write(log.text(), error) || !output.finish(error)) {
        io.err << "kdxctl: decode: " << error << "\n";
        return 1;
    }

    const uint64_t noise = static_cast<uint64_t>(rx.CommsErrorCount) - rx.badMessages;
    io.err << "decode: bytes " << bytes << ", good messages " << rx.goodMessages << ", bad messages "
           << rx.badMessages << ", noise bytes " << noise << ", log lines " << log.lines();
    if (log.undecodable() > 0) io.err << ", undecodable cyclic messages " << log.undecodable();
    io.err << "\n";
    return 0;
}

} // namespace kdx::cli
