#pragma once

#include "runtime/UserPrompts.h"

#include <string>

namespace corvalog {

// The program's base name: settings, logs and the fixed workspace are named after it.
inline constexpr const char *kProgramName = "Corvalog";

// The places the system gives the program. Tests pass temporary folders instead.
struct SystemFolders {
    std::string programFolder; // the folder of the executable
    std::string localAppData; // the user's application-data folder, or "" when unknown
    std::string documents; // the user's documents folder, or "" when unknown

    // The real ones: the executable's folder, QStandardPaths' generic data and documents.
    static SystemFolders current();
};

// The settled places: settings folder (holding config.ini), log folder and program folder.
struct SettingsPaths {
    std::string programFolder;
    std::string settingsFolder;
    std::string logFolder;
    std::string settingsFile; // settingsFolder + "/config.ini" (or the existing file of that name
                              // in any letter case)
};

// True when the path (file or folder) can be looked at.
bool FolderExists(const std::string &path);

// Creates one folder level when the path does not exist yet. A failure other than "the path
// is there already" shows "Error <n> while attempting to create folder: <path>" (title
// "Error", critical icon).
void MakeDir(const std::string &path, UserPrompts &prompts);

// The path set-up: settings folder "<app data>/Corvalog" (created), log folder
// "<documents>/Corvalog Logs" (created), each the program folder when the system does not know
// the special folder; then a "Config.INI" (any letter case) in the program folder makes the
// program folder the settings folder.
SettingsPaths setUpPaths(const SystemFolders &folders, UserPrompts &prompts);

// An existing entry of `folder` named `name` in any letter case, else folder + "/" + name.
std::string pathIgnoringCase(const std::string &folder, const std::string &name);

} // namespace corvalog
