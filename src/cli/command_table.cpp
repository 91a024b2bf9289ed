// Every kdxctl command, in the order `kdxctl --help` lists them.
#include "cli/commands.h"

namespace kdx::cli {

namespace {

const Command kCommands[] = {
    {"analyse", "measures error, ringing and step response of tuning files and logs", kAnalyseSyntax, runAnalyse},
    {"decode", "turns a recorded byte stream into the telemetry log", kDecodeSyntax, runDecode},
    {"diff", "compares two configurations, from files or modules", kDiffSyntax, runDiff},
    {"monitor", "prints live telemetry lines from a module or the simulated one", kMonitorSyntax, runMonitor},
    {"ports", "lists the serial ports", kPortsSyntax, runPorts},
    {"read", "reads modules' configurations, prints them and saves backup files", kReadSyntax, runRead},
    {"set", "changes parameters of a configuration file as the entry prompts do", kSetSyntax, runSet},
    {"show", "prints the parameters of a .kdx or .bls configuration file", kShowSyntax, runShow},
    {"sim", "runs a simulated module on a pseudo-terminal or into a recording", kSimSyntax, runSim},
    {"trim", "writes the stretch of a recording between two marks to RECORDING_t", kTrimSyntax, runTrim},
    {"tune", "searches for the gains that hold a motor best; writes no memory", kTuneSyntax, runTune},
    {"write", "writes a configuration file into modules and verifies each", kWriteSyntax, runWrite},
};

} // namespace

std::span<const Command> commands() { return kCommands; }

} // namespace kdx::cli
