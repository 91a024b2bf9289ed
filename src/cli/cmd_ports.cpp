// kdxctl ports: the serial ports this machine offers, one per line.
#include "cli/command.h"
#include "cli/commands.h"
#include "cli/option_parser.h"
#include "cli/posix_serial.h"

#include <ostream>

namespace kdx::cli {

const Syntax kPortsSyntax{
    .synopsis = "usage: kdxctl ports",
    .about = "Lists the serial ports this machine offers (at most 18, in name order), one path\n"
             "per line. A USB serial adapter usually shows as /dev/ttyUSB0 or /dev/ttyACM0.\n"
             "With no port at all it says so on standard error and still succeeds. Takes no\n"
             "options.",
    .example = "kdxctl ports",
};

int runPorts(const Arguments&, CommandIo& io)
{
    const auto ports = listSerialPorts();
    for (const auto& p : ports) io.out << p << "\n";
    if (ports.empty()) io.err << "kdxctl: no serial ports found\n";
    return 0;
}

} // namespace kdx::cli
