// kdxctl's command lines: argument vectors built from every command's words and options,
// values of the right and the wrong kinds, and free text, run through kdxctl's own entry
// point in a folder of the target's own, where a configuration file, a single-axis file
// and a recording wait.
//
// Nothing a command line names can leave that folder or wait on the outside world: free
// text holds no "/", so every path stays inside it and no port can be opened. The
// commands that run until stopped (sim, monitor) get two words no option takes at the
// end, so every argument before them is parsed and the line is then refused.
//
// Checked: the exit code is 0, 1 or 2; a failure says why on standard error, beginning
// "kdxctl" (or "usage: kdxctl"), and on one line unless it is a usage error; --help
// anywhere prints the command's usage and succeeds; a usage error writes nothing to
// standard output and changes no file.
#include "cli/command.h"
#include "cli/option_parser.h"
#include "config/config_file.h"
#include "fuzz_support.h"
#include "link/frame.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace kdx;
namespace fs = std::filesystem;

[[noreturn]] void fail(const char* what) { fuzz::fail("cli_args", what); }

constexpr std::array<const char*, 15> kCommands = {"ports",   "show", "read", "write",   "decode",
                                                   "trim",    "diff", "set",  "analyse", "--version",
                                                   "monitor", "sim",  "help", "--help",  "-h"};
constexpr std::array<const char*, 56> kWords = {
    "--tsv",
    "--port",
    "--axis",
    "-o",
    "--output",
    "--motor",
    "--start",
    "--end",
    "--seconds",
    "--simulate",
    "--simulate=qvane",
    "--simulate=pan",
    "--port=a.kdx",
    "--seconds=0.5",
    "--seconds=-1",
    "--pty",
    "--qvane",
    "--seed",
    "--noise",
    "--record",
    "--help",
    "-h",
    "a.kdx",
    "b.bls",
    "r.rec",
    "r.rec_t",
    "missing.kdx",
    ".",
    "0",
    "1",
    "2",
    "3",
    "tilt",
    "roll",
    "pan",
    "yaw",
    "-1",
    "2147483647",
    "2147483648",
    "0.5",
    "1e9",
    "nan",
    "inf",
    "",
    "--",
    "out.csv",
    "-",
    "=",
    "--json",
    "--backup-dir",
    "--no-backup",
    "P=400",
    "Poles=14",
    "a.csv",
    "a.btf",
    "bk",
};
// No option takes these as a value twice running, so a line ending in them is refused.
constexpr const char* kEnd = "--kdx-fuzz-end";

// The folder's files as they were before the command ran.
std::map<std::string, std::string> snapshot()
{
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::directory_iterator("."))
        files[entry.path().filename().string()] = fuzz::readScratchFile(entry.path().string());
    return files;
}

// Empties the folder, puts the three files in and makes it the current folder while a
// command line runs; the caller's folder comes back when it is destroyed.
class Folder {
public:
    Folder()
    {
        static const std::string dir = fuzz::scratchDir() + "/cli";
        fs::create_directories(dir);
        for (const auto& entry : fs::directory_iterator(dir)) fs::remove_all(entry.path());
        MemoryImage image{};
        for (int i = 0; i < 60; ++i) image[static_cast<std::size_t>(i)] = static_cast<int16_t>(i * 7);
        fuzz::writeScratchFile("cli/a.kdx", configFileBytes(image, true));
        fuzz::writeScratchFile("cli/b.bls", configFileBytes(image, false));
        std::vector<uint8_t> rec = buildFrame(121, std::vector<uint8_t>(45, 3));
        const auto more = buildFrame(122, std::vector<uint8_t>(22, 1));
        rec.insert(rec.end(), more.begin(), more.end());
        fuzz::writeScratchFile("cli/r.rec", rec);
        fs::current_path(dir);
    }
    ~Folder() { fs::current_path(caller_); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

private:
    fs::path caller_ = fs::current_path();
};

std::string word(FuzzedDataProvider& in)
{
    if (in.ConsumeIntegralInRange<int>(0, 3) > 0)
        return kWords[in.ConsumeIntegralInRange<std::size_t>(0, kWords.size() - 1)];
    std::string text = in.ConsumeRandomLengthString(24);
    // A real command line holds no NUL; no "/" keeps every path inside the folder; no
    // line break, since a message naming such a file could not be one line.
    text.erase(std::remove_if(text.begin(), text.end(), [](char c) { return c == '\0' || c == '/' || c == '\n'; }),
               text.end());
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    FuzzedDataProvider in(data, size);
    const Folder folder;
    std::vector<std::string> args;
    if (in.ConsumeIntegralInRange<int>(0, 7) > 0)
        args.push_back(kCommands[in.ConsumeIntegralInRange<std::size_t>(0, kCommands.size() - 1)]);
    const int count = in.ConsumeIntegralInRange<int>(0, 8);
    for (int i = 0; i < count && in.remaining_bytes() > 0; ++i) args.push_back(word(in));
    const bool runsUntilStopped = !args.empty() && (args[0] == "sim" || args[0] == "monitor");
    if (runsUntilStopped) args.insert(args.end(), {kEnd, kEnd});

    const auto before = snapshot();
    std::ostringstream out, err;
    cli::CommandIo io{out, err};
    const int code = cli::runKdxctl(args, io);
    const std::string said = err.str();

    // A finding names the command line and what it said.
    auto fail = [&](const char* what) {
        std::fprintf(stderr, "cli_args_fuzz: kdxctl");
        for (const auto& a : args) std::fprintf(stderr, " '%s'", a.c_str());
        std::fprintf(stderr, " -> %d, standard error:\n%s", code, said.c_str());
        ::fail(what);
    };
    if (code < 0 || code > 2) fail("an exit code other than 0, 1 or 2");
    if (runsUntilStopped && code == 0 && std::find(args.begin(), args.end(), "--help") == args.end() &&
        std::find(args.begin(), args.end(), "-h") == args.end())
        fail("a command line ending in words no option takes was run");
    // Commands that take many files or ports say one line per input that failed; with
    // many ports a table of every module comes first, and the last line sums it up.
    const auto ports = std::count_if(args.begin(), args.end(),
                                     [](const std::string& a) { return a == "--port" || a.rfind("--port=", 0) == 0; });
    const bool manyInputs = code == 1 && !args.empty() && (args[0] == "analyse" || ports > 1);
    const std::size_t lastLine = said.empty() ? 0 : said.rfind('\n', said.size() - 2) + 1;
    const std::string_view said0 = manyInputs ? std::string_view(said).substr(lastLine) : std::string_view(said);
    if (code != 0 && said0.rfind("kdxctl", 0) != 0 && said0.rfind("usage: kdxctl", 0) != 0)
        fail("a failure does not say why on standard error");
    if (code == 1 && !manyInputs && said.find('\n') != said.size() - 1) fail("a failure takes more than one line");
    if (code == 2) {
        if (!out.str().empty()) fail("a usage error wrote to standard output");
        if (snapshot() != before) fail("a usage error changed a file");
    }
    if (args.size() > 1 && code == 0) {
        const bool help = std::find(args.begin() + 1, args.end(), "--help") != args.end() ||
                          std::find(args.begin() + 1, args.end(), "-h") != args.end();
        for (const auto& c : cli::commands())
            if (help && c.name == args[0] && out.str() != cli::usageText(c.syntax))
                fail("--help does not print the command's usage");
    }
    return 0;
}
