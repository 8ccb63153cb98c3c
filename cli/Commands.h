#pragma once

#include "CliArgs.h"

#include <ostream>

namespace corvalog::cli {

// Each command reads its arguments, prints its stable output and returns the exit code
// (0 done, 1 the input was wrong in a way the system reports, e.g. an expression error).
int runEval(CliArgs &args, std::ostream &out);
int runRewrite(CliArgs &args, std::ostream &out);
int runFormat(CliArgs &args, std::ostream &out);
int runDecode(CliArgs &args, std::ostream &out);
int runPacket(CliArgs &args, std::ostream &out);
int runIni(CliArgs &args, std::ostream &out);
int runWorkspace(CliArgs &args, std::ostream &out);
int runCheck(CliArgs &args, std::ostream &out);
int runRecord(CliArgs &args, std::ostream &out);
int runLog(CliArgs &args, std::ostream &out);
int runBaseStation(CliArgs &args, std::ostream &out);
int runCommand(CliArgs &args, std::ostream &out);
int runRelay(CliArgs &args, std::ostream &out);

} // namespace corvalog::cli
