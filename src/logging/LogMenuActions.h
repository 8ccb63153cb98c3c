#pragma once

#include "runtime/UserPrompts.h"
#include "workspace/SystemFolders.h"
#include "workspace/WorkspaceClass.h"

#include <string>

namespace corvalog {

// The workspace file named after the program in the program's folder, where a changed log
// interval is saved (not to the workspace that was opened).
std::string programWorkspaceFile(const SettingsPaths &paths);

// The log interval dialog: the leading number of the answer, rounded to a whole number of
// milliseconds (ties to even), becomes the interval and the workspace is saved at once to
// `saveTo`. No number, 0 and Cancel change nothing; a number beyond the 32-bit range is refused
// with a message. True when the interval changed. A running log keeps its period until it is
// started again.
bool mnuIntervalConfig(WorkspaceClass &workspace, UserPrompts &prompts, const std::string &saveTo);

// Opens the last log file with the program the system associates with it, or tells why not.
void mnuViewLog(const std::string &settingsFile, UserPrompts &prompts);

} // namespace corvalog
