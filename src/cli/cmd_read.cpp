// kdxctl read: reads a module's configuration, prints it and keeps a backup file.
#include "cli/cli_args.h"
#include "cli/command.h"
#include "cli/commands.h"
#include "cli/option_parser.h"
#include "cli/posix_serial.h"
#include "cli/stdout_check.h"
#include "config/config_file.h"
#include "config/driver_config.h"
#include "config/memory_session.h"
#include "config/param_table.h"
#include "core/host_error.h"

#include <ctime>
#include <optional>
#include <ostream>

namespace kdx::cli {

namespace {

constexpr int kListenMs = 1000; // telemetry arrives 100 times a second
constexpr int kReplyMs = 1000;
constexpr int kReadAttempts = 2;

const OptionSpec kOptions[] = {
    kPortOption,
    kAxisOption,
    {.name = "-o", .takes = Takes::Value, .metavar = "FILE",
     .help = "backup file (default kdx-backup-YYYYMMDD-HHMMSS.kdx or .bls in\n"
             "the current folder); an existing file is replaced"},
    {.name = "--tsv",
     .help = "print name<TAB>motor 0<TAB>motor 1 lines instead of the table\n"
             "(the backup note then goes to standard error)"},
};

} // namespace

const Syntax kReadSyntax{
    .synopsis = "usage: kdxctl read --port DEV [--axis tilt|roll|pan] [-o FILE] [--tsv]",
    .about = "Reads the configuration memory of the module on DEV, prints its parameters and\n"
             "saves a backup: a two-axis .kdx file for a KDX wired directly, a single-axis\n"
             ".bls file for the KDX of one axis behind a Q-Vane. Which of the two is on the\n"
             "line is learned from its telemetry.",
    .options = kOptions,
    .helpColumn = 15,
    .example = "kdxctl read --port /dev/ttyUSB0 -o before.kdx\n"
               "kdxctl read --port /dev/ttyUSB0 --axis roll -o roll-before-tuning.bls",
};

namespace {

std::string defaultBackupName(bool twoAxis)
{
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char stamp[32];
    std::strftime(stamp, sizeof stamp, "%Y%m%d-%H%M%S", &local);
    return std::string("kdx-backup-") + stamp + (twoAxis ? ".kdx" : ".bls");
}

} // namespace

int runRead(const Arguments& args, CommandIo& io)
{
    const std::string& port = args.value("--port");
    const std::string& output = args.value("-o");
    const bool tsv = args.has("--tsv");
    std::optional<int> axis;
    if (args.has("--axis") && !(axis = parseAxis(args.value("--axis"))))
        return args.usageError(io, "unknown axis '" + args.value("--axis") + "' (tilt, roll or pan)");

    PosixSerial serial;
    std::string error;
    if (!serial.open(port, error)) {
        io.err << "kdxctl: " << error << "\n";
        return 1;
    }
    MemorySession session(
        ByteLinkIo{[&](std::span<const uint8_t> b, std::string& e) { return serial.write(b, e); },
                   [&](std::vector<uint8_t>& o, int t, std::string& e) { return serial.read(o, t, e); }},
        port);
    auto fail = [&](const std::string& why) {
        io.err << "kdxctl: " << why << "\n";
        return 1;
    };
    if (!session.detectTarget(kListenMs, error)) return fail(error);
    const bool qvane = session.targetIsQVane();
    if (axis) {
        if (!qvane) return fail("--axis needs a Q-Vane, but " + port + " is a KDX wired directly");
        session.setAxis(*axis);
        if (!session.sendAxisSelect(error)) return fail(error);
    }
    MemoryImage image{};
    if (!session.readMemory(image, kReplyMs, kReadAttempts, error)) return fail(error);
    // The backup holds the module's bytes as read, with the image checksum a saved
    // configuration carries.
    image[layout::ImageChecksum] = imageChecksum(image);

    DriverConfig config;
    config.image() = image;
    try {
        config.ImageToParams();
    } catch (const HostError& e) {
        return fail(port + ": the configuration read cannot be shown: " + e.what());
    }
    const auto rows = paramTable(config, !qvane);
    io.out << (tsv ? paramTableTsv(rows) : paramTableText(rows, !qvane));
    // The backup is saved even when the table could not be shown: the read succeeded.
    const bool shown = outputReached(io.out);

    const std::string file = output.empty() ? defaultBackupName(!qvane) : output;
    if (const auto box = saveConfigFile(file, image, !qvane)) return fail(file + ": " + box->prompt);
    const std::string lost = std::string(kOutputLost) + "; the backup was saved to " + file;
    if (!shown) return fail(lost);
    (tsv ? io.err : io.out) << "backup saved to " << file << "\n";
    if (!outputReached(io.out)) return fail(lost);
    return 0;
}

} // namespace kdx::cli
