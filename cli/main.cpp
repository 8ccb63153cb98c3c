#include "CliArgs.h"
#include "Commands.h"
#include "runtime/NumberLocale.h"

#include <csignal>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

using namespace corvalog;
using namespace corvalog::cli;

namespace {

const char *const kUsage = R"(usage: corvalog-cli [--comma-decimal] COMMAND ARGS...

Commands:
  eval EXPR [--tag FF12=12.5]... [--chan 3=7]...
        rewrite and evaluate a channel expression; prints "<Type> <value>"
  rewrite EXPR
        the rewritten expression and its error, lqi, batt and timeout scripts
  format EXPR PATTERN [--tag ...] [--chan ...]
        the value of EXPR formatted with PATTERN
  decode HEX
        decode a typed value given as hexadecimal bytes; prints "<Type> <value>"
  packet --tag FF12 (--value TEXT | --value-hex HEX) --rssi N --cv N [--batt N] [--err N]
        handle one packet on fresh tables; prints "T=<value> TL=<n> TB=<n> TE=<n>"
  ini get FILE SECTION KEY DEFAULT
        a settings value as the program reads it (the default when missing or empty)
  ini set FILE SECTION KEY VALUE
        change one settings value in place (exit 1 when the file could not be written)
  workspace show FILE
        the workspace as JSON; messages of the load on stderr
  workspace upgrade IN OUT
        load IN (converting a version 1 file) and save it as OUT
  check FILE
        one line per channel: "<n> ok" or "<n> error <number>: <description>"
  record [--source SRC] --out FILE [--duration S] [--workspace FILE]
        write a packet recording from SRC: sim[:SEED] (default), replay:FILE,
        udp:[HOST:]PORT, serial, serial:DEVICE[:BAUD] or mqtt://HOST[:PORT]/PREFIX;
        until S seconds have passed,
        a replay ends, or Ctrl+C (the workspace names the serial line, address and
        radio channel)
  log --workspace FILE --source SRC [--out CSV] [--duration S]
      [--virtual-time [--start ISO-8601]]
        log the workspace's channels as the program does (to stdout without --out);
        --virtual-time replays a recording (or S seconds of sim) at full speed, the
        same log every run, its clock starting at --start (default 2000-01-01T00:00:00)
  basestation --link PATH [--seed N]
        a simulated base station on a pseudo-terminal linked at PATH, speaking the
        line protocol with the simulator's modules, until Ctrl+C
  command --source SRC [--workspace FILE] (wake | sleep | keepawake | pause TAG | resume TAG)
        the Sleep & Wake menu's commands; pause and resume print one line an attempt
        and exit 1 when the module never acknowledged
  relay --source SRC --to mqtt://HOST[:PORT]/PREFIX/STATION [--spool DIR]
        [--spool-limit SIZE] [--duration S] [--workspace FILE] [--ca-file FILE]
        [--credentials FILE]
        publish SRC's packets to a broker (QoS 1), keeping every message not yet
        acknowledged in the spool (default 256M; when full the oldest go), until S
        seconds, the end of a replay, or Ctrl+C; "mqtts://" for TLS

Sources: sim[:SEED], replay:FILE, udp:[HOST:]PORT, serial[:DEVICE[:BAUD]] and
mqtt://HOST[:PORT]/PREFIX[?client=ID] (what relays publish under PREFIX; mqtts:// for
TLS, with --ca-file FILE and --credentials FILE holding username= and password= lines).

Numbers are written and read with "." unless --comma-decimal is given.
Exit status: 0 done, 1 the system reported an error, 2 wrong usage.
)";

struct Command {
    const char *name;
    int (*run)(CliArgs &, std::ostream &);
};

const Command kCommands[] = {
    { "eval", runEval },
    { "rewrite", runRewrite },
    { "format", runFormat },
    { "decode", runDecode },
    { "packet", runPacket },
    { "ini", runIni },
    { "workspace", runWorkspace },
    { "check", runCheck },
    { "record", runRecord },
    { "log", runLog },
    { "basestation", runBaseStation },
    { "command", runCommand },
    { "relay", runRelay },
};

} // namespace

int main(int argc, char **argv)
{
    // A reader that leaves a pipe is seen as a failed write (EPIPE) and reported, not a silent
    // end of the tool.
    std::signal(SIGPIPE, SIG_IGN);
    std::vector<std::string> words;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--comma-decimal") == 0)
            setNumberLocale(NumberLocale::comma());
        else
            words.emplace_back(argv[i]);
    }
    if (words.empty() || words[0] == "--help" || words[0] == "-h" || words[0] == "help") {
        (words.empty() ? std::cerr : std::cout) << kUsage;
        return words.empty() ? 2 : 0;
    }
    for (const Command &command : kCommands) {
        if (words[0] != command.name)
            continue;
        CliArgs args(std::vector<std::string>(words.begin() + 1, words.end()));
        try {
            return command.run(args, std::cout);
        } catch (const UsageError &e) {
            std::cerr << "corvalog-cli " << command.name << ": " << e.what()
                      << "\n(run 'corvalog-cli --help' for usage)\n";
            return 2;
        }
    }
    std::cerr << "corvalog-cli: unknown command '" << words[0]
              << "'\n(run 'corvalog-cli --help' for usage)\n";
    return 2;
}
