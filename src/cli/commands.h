#pragma once
// kdxctl's commands, each defined in its cmd_NAME.cpp: the declarations of its options
// and arguments, and the function that runs it once its command line has been parsed.
// command_table.cpp lists them.
#include "cli/command.h"
#include "cli/option_parser.h"

namespace kdx::cli {

extern const Syntax kAnalyseSyntax;
extern const Syntax kDecodeSyntax;
extern const Syntax kDiffSyntax;
extern const Syntax kMonitorSyntax;
extern const Syntax kPortsSyntax;
extern const Syntax kReadSyntax;
extern const Syntax kShowSyntax;
extern const Syntax kSetSyntax;
extern const Syntax kSimSyntax;
extern const Syntax kTrimSyntax;
extern const Syntax kTuneSyntax;
extern const Syntax kWriteSyntax;

int runAnalyse(const Arguments& args, CommandIo& io);
int runDecode(const Arguments& args, CommandIo& io);
int runDiff(const Arguments& args, CommandIo& io);
int runMonitor(const Arguments& args, CommandIo& io);
int runPorts(const Arguments& args, CommandIo& io);
int runRead(const Arguments& args, CommandIo& io);
int runShow(const Arguments& args, CommandIo& io);
int runSet(const Arguments& args, CommandIo& io);
int runSim(const Arguments& args, CommandIo& io);
int runTrim(const Arguments& args, CommandIo& io);
int runTune(const Arguments& args, CommandIo& io);
int runWrite(const Arguments& args, CommandIo& io);

} // namespace kdx::cli
