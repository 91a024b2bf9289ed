#pragma once
// Runs kdxctl in process, as its main() would, and keeps what it printed.
#include "cli/command.h"

#include <sstream>
#include <string>
#include <vector>

namespace kdx::test {

struct KdxctlResult {
    int code;
    std::string out, err;
};

inline KdxctlResult kdxctl(const std::vector<std::string>& args)
{
    std::ostringstream out, err;
    cli::CommandIo io{out, err};
    const int code = cli::runKdxctl(args, io);
    return {code, out.str(), err.str()};
}

} // namespace kdx::test
