#include "cli/cli_args.h"

#include <ostream>

namespace kdx::cli {

int usageError(CommandIo& io, const std::string& command, const std::string& what)
{
    io.err << "kdxctl " << command << ": " << what << " (try kdxctl " << command << " --help)\n";
    return 2;
}

std::optional<int> parseAxis(const std::string& s)
{
    if (s == "tilt" || s == "0") return 0;
    if (s == "roll" || s == "1") return 1;
    if (s == "pan" || s == "2") return 2;
    return std::nullopt;
}

} // namespace kdx::cli
