#include "cli/command.h"
#include "core/terminate_report.h"

#include <iostream>

int main(int argc, char** argv)
{
    kdx::installTerminateReport("kdxctl");
    std::vector<std::string> args(argv + 1, argv + argc);
    kdx::cli::CommandIo io{std::cout, std::cerr};
    return kdx::cli::runKdxctl(args, io);
}
