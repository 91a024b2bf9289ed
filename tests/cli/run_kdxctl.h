#pragma once
// Runs kdxctl in process, as its main() would, and keeps what it printed; or runs the
// built program itself where the real standard streams and signals matter.
#include "cli/command.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

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

// Starts the built kdxctl with standard output and standard error sent to the given
// files; returns its process id (-1 when it could not start).
inline pid_t spawnKdxctl(const std::vector<std::string>& args, const std::string& outPath, const std::string& errPath)
{
    std::vector<std::string> argv{KDXCTL_PATH};
    argv.insert(argv.end(), args.begin(), args.end());
    std::vector<char*> ptrs;
    for (auto& a : argv) ptrs.push_back(a.data());
    ptrs.push_back(nullptr);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, 1, outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    posix_spawn_file_actions_addopen(&files, 2, errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    pid_t pid = -1;
    if (posix_spawn(&pid, KDXCTL_PATH, &files, nullptr, ptrs.data(), environ) != 0) pid = -1;
    posix_spawn_file_actions_destroy(&files);
    return pid;
}

} // namespace kdx::test
