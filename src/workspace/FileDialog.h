#pragma once

#include "runtime/UserPrompts.h"
#include "workspace/SystemFolders.h"

#include <string>

namespace corvalog {

// The log file dialog: a save dialog starting at the last log file ("Log Data" in the log
// folder the first time). The chosen full path, or "" when cancelled. The last log file is
// written back to section "LogFiles" either way.
std::string chooseLogFile(const SettingsPaths &paths, UserPrompts &prompts);

// The workspace open dialog, the same way over section "WorkspaceFiles" ("Workspace" the
// first time). The chosen full path, or "" when cancelled.
std::string chooseWorkspaceToOpen(const SettingsPaths &paths, UserPrompts &prompts);

// The workspace save dialog: as the open dialog, but asking before overwriting a file.
std::string chooseWorkspaceToSave(const SettingsPaths &paths, UserPrompts &prompts);

} // namespace corvalog
