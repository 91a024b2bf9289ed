// kdxctl ports: the serial ports this machine offers, one per line.
#include "cli/command.h"
#include "cli/posix_serial.h"

#include <ostream>

namespace {

int runPorts(const std::vector<std::string>& args, kdx::cli::CommandIo& io)
{
    if (!args.empty()) {
        io.err << "usage: kdxctl ports\n";
        return 2;
    }
    const auto ports = kdx::cli::listSerialPorts();
    for (const auto& p : ports) io.out << p << "\n";
    if (ports.empty()) io.err << "kdxctl: no serial ports found\n";
    return 0;
}

} // namespace

KDX_COMMAND("ports", "lists the serial ports",
            "usage: kdxctl ports\n\n"
            "Lists the serial ports this machine offers (at most 18, in name order), one path\n"
            "per line. A USB serial adapter usually shows as /dev/ttyUSB0 or /dev/ttyACM0.\n"
            "With no port at all it says so on standard error and still succeeds. Takes no\n"
            "options.\n\n"
            "example:\n  kdxctl ports\n",
            runPorts);
