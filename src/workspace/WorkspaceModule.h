#pragma once

#include "WorkspaceClass.h"
#include "runtime/UserPrompts.h"

#include <string>

namespace corvalog {

// Reads a .lws file into the workspace. An empty file name gives every value its default.
// A file that cannot be opened is reported ("An error occurred while trying to load workspace
// from ...") and clears the remembered workspace file in the settings file (when one is
// given); a file whose Type is not "CORVALOG" is reported as not valid. In both cases the
// workspace is unchanged and the result is false. Values that do not convert keep their
// previous value; version 1 definitions are converted. Numbers are read with either decimal
// separator.
bool LoadWorkspace(WorkspaceClass &workspace, const std::string &FileName, UserPrompts &prompts,
    const std::string &settingsFile = {});

// Writes the workspace to a .lws file, replacing it atomically: no key of an earlier file
// survives, and a failed write ("An error occurred while trying to save workspace to ...")
// leaves the old file as it was. Numbers use the locale's decimal separator.
bool SaveWorkspace(
    const WorkspaceClass &workspace, const std::string &FileName, UserPrompts &prompts);

} // namespace corvalog
