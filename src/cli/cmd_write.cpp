// kdxctl write: writes a configuration file into a module and checks it by reading back.
#include "cli/cli_args.h"
#include "cli/command.h"
#include "cli/commands.h"
#include "cli/option_parser.h"
#include "cli/posix_serial.h"
#include "config/config_file.h"
#include "config/memory_session.h"
#include "core/host_numeric.h"

#include <optional>
#include <ostream>

namespace kdx::cli {

namespace {

constexpr int kListenMs = 1000;
constexpr int kReplyMs = 1000;
constexpr int kReadAttempts = 2;
// A module may answer the write itself before it has stored everything; one more
// read-back is taken before a difference counts.
constexpr int kVerifyReads = 2;

const OptionSpec kOptions[] = {
    kPortOption,
    kAxisOption,
    {.name = "--motor", .takes = Takes::Value, .metavar = "M",
     .help = "through a Q-Vane with a two-axis file: the motor block to write,\n"
             "0 or 1 (default 0)"},
};

} // namespace

const Syntax kWriteSyntax{
    .synopsis = "usage: kdxctl write --port DEV [--axis tilt|roll|pan] [--motor 0|1] FILE",
    .about = "Writes the memory image of a configuration file into the module on DEV byte for\n"
             "byte, reads it back, and succeeds only if the module then holds exactly that.\n"
             "A KDX wired directly takes a two-axis .kdx file (both motor blocks); the KDX of\n"
             "a Q-Vane axis takes one motor block, from a .bls file or, with --motor, from\n"
             "either motor of a .kdx file (default motor 0). A file whose data records hold\n"
             "anything but hexadecimal digits is refused before anything is sent.",
    .options = kOptions,
    .positionals = {.min = 1, .max = 1, .missing = "expected a configuration file", .extra = "one file only"},
    .helpColumn = 15,
    .example = "kdxctl write --port /dev/ttyUSB0 before.kdx\n"
               "kdxctl write --port /dev/ttyUSB0 --axis pan pan-axis.bls",
};

int runWrite(const Arguments& args, CommandIo& io)
{
    const std::string& port = args.value("--port");
    const std::string& file = args.positionals()[0];
    std::optional<int> axis;
    if (args.has("--axis") && !(axis = parseAxis(args.value("--axis"))))
        return args.usageError(io, "unknown axis '" + args.value("--axis") + "' (tilt, roll or pan)");
    const std::string motorText = args.has("--motor") ? args.value("--motor") : "0";
    if (motorText != "0" && motorText != "1") return args.usageError(io, "--motor is 0 or 1");
    const int motor = motorText == "1";

    auto fail = [&](const std::string& why) {
        io.err << "kdxctl: " << why << "\n";
        return 1;
    };
    const ConfigLoad load = loadConfigFile(file, false);
    if (load.status == ConfigLoadStatus::Failed) return fail(file + ": " + load.box.prompt);
    // Stricter than loading into the program, which reads such a record as best it can
    // (blanks as zeros): bytes that are not in the file never go into a module.
    if (load.firstNonHexLine > 0)
        return fail(file + ": line " + std::to_string(load.firstNonHexLine) +
                    " holds characters that are not hexadecimal digits; nothing was written");

    PosixSerial serial;
    std::string error;
    if (!serial.open(port, error)) return fail(error);
    MemorySession session(
        ByteLinkIo{[&](std::span<const uint8_t> b, std::string& e) { return serial.write(b, e); },
                   [&](std::vector<uint8_t>& o, int t, std::string& e) { return serial.read(o, t, e); }},
        port);
    if (!session.detectTarget(kListenMs, error)) return fail(error);
    const bool qvane = session.targetIsQVane();
    if (!qvane && !load.twoAxis())
        return fail(file + " holds one motor block; a KDX wired directly needs a two-axis .kdx file");
    if (axis) {
        if (!qvane) return fail("--axis needs a Q-Vane, but " + port + " is a KDX wired directly");
        session.setAxis(*axis);
        if (!session.sendAxisSelect(error)) return fail(error);
    }

    MemoryImage image{};
    applyConfigLoad(load, image, qvane && motor == 1);
    if (!session.writeMemory(image, error)) return fail(error);

    const int count = session.transferredElements();
    int firstDifference = -1;
    MemoryImage back{};
    for (int attempt = 0; attempt < kVerifyReads; ++attempt) {
        if (!session.readMemory(back, kReplyMs, kReadAttempts, error)) return fail(error + " after the write");
        firstDifference = -1;
        for (int i = 0; i < count && firstDifference < 0; ++i)
            if (lowByte(back[static_cast<std::size_t>(i)]) != lowByte(image[static_cast<std::size_t>(i)]))
                firstDifference = i;
        if (firstDifference < 0) break;
    }
    if (firstDifference >= 0) {
        const auto i = static_cast<std::size_t>(firstDifference);
        return fail(port + " holds different data after the write: byte " + std::to_string(firstDifference) +
                    " is " + std::to_string(lowByte(back[i])) + ", expected " + std::to_string(lowByte(image[i])));
    }
    io.out << "wrote " << count << " bytes to " << port
           << (qvane ? " (Q-Vane axis " + AxisName(session.axis()) + ")" : std::string(" (KDX)"))
           << " and read them back\n";
    return 0;
}

} // namespace kdx::cli
