#include "cli/command.h"
#include "cli/option_parser.h"

#include <ostream>

namespace kdx::cli {

int runKdxctl(const std::vector<std::string>& args, CommandIo& io)
{
    auto printHelp = [&](std::ostream& os) {
        os << "usage: kdxctl COMMAND [OPTIONS]\n"
              "       kdxctl COMMAND --help\n"
              "       kdxctl --version\n\n"
              "The command-line companion of KDX Tool, for scripts and production lines.\n\n"
              "Commands:\n";
        for (const auto& c : commands()) {
            const std::string name = c.name;
            os << "  " << name << std::string(name.size() < 10 ? 10 - name.size() : 1, ' ') << c.summary << "\n";
        }
        os << "\nRun 'kdxctl COMMAND --help' (or -h) for a command's options and an example.\n"
              "Exit status: 0 success, 1 failure (one line on standard error says why),\n"
              "2 usage error; diff exits 1 when the configurations differ and 2 when it\n"
              "cannot compare them.\n\n"
              "example:\n"
              "  kdxctl ports\n"
              "  kdxctl read --port /dev/ttyUSB0 -o before.kdx\n"
              "  kdxctl sim --record hour.rec --seconds 3600\n"
              "  kdxctl decode hour.rec -o hour.csv\n";
    };
    if (args.empty()) {
        printHelp(io.err);
        return 2;
    }
    if (args[0] == "--help" || args[0] == "-h" || args[0] == "help") {
        printHelp(io.out);
        return 0;
    }
    if (args[0] == "--version") {
        io.out << "kdxctl " << KDX_VERSION_MAJOR << "." << KDX_VERSION_MINOR << "." << KDX_VERSION_PATCH << "\n";
        return 0;
    }
    for (const auto& c : commands()) {
        if (c.name != args[0]) continue;
        const std::span<const std::string> rest(args.begin() + 1, args.end());
        for (const auto& a : rest) {
            if (a == "--help" || a == "-h") {
                io.out << usageText(c.syntax);
                return 0;
            }
        }
        const auto parsed = parseArguments(c, rest);
        if (const auto* error = std::get_if<std::string>(&parsed)) return usageError(io, c, *error);
        return c.run(std::get<Arguments>(parsed), io);
    }
    io.err << "kdxctl: unknown command '" << args[0] << "' (try kdxctl --help)\n";
    return 2;
}

} // namespace kdx::cli
