#pragma once
// kdxctl's commands and the entry point main.cpp hands its arguments to. Exit codes:
// 0 success, 1 failure (one clear line on stderr), 2 usage.
#include <iosfwd>
#include <span>
#include <string>
#include <vector>

namespace kdx::cli {

struct CommandIo {
    std::ostream& out;
    std::ostream& err;
};

struct Syntax;
class Arguments;

struct Command {
    const char* name;
    const char* summary;  // one line for `kdxctl --help`
    const Syntax& syntax; // its options and arguments, and the text of `kdxctl NAME --help`
    int (*run)(const Arguments& args, CommandIo& io);
};

// Every command, in the order `kdxctl --help` lists them (command_table.cpp).
std::span<const Command> commands();

// Runs kdxctl with argv-style arguments (args[0] is the command name).
int runKdxctl(const std::vector<std::string>& args, CommandIo& io);

} // namespace kdx::cli
