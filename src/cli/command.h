#pragma once
// kdxctl's commands. Each command file registers itself with KDX_COMMAND; main.cpp
// dispatches by name. Exit codes: 0 success, 1 failure (one clear line on stderr),
// 2 usage.
#include <iosfwd>
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

std::vector<Command>& registry();

struct Registrar {
    explicit Registrar(Command c) { registry().push_back(std::move(c)); }
};

// Runs kdxctl with argv-style arguments (args[0] is the command name).
int runKdxctl(const std::vector<std::string>& args, CommandIo& io);

} // namespace kdx::cli

#define KDX_CMD_CAT2(a, b) a##b
#define KDX_CMD_CAT(a, b) KDX_CMD_CAT2(a, b)
#define KDX_COMMAND(...) \
    static ::kdx::cli::Registrar KDX_CMD_CAT(kdxCommandRegistrar_, __LINE__)(::kdx::cli::Command{__VA_ARGS__})
