#include "FileDialog.h"

#include "INIFileModule.h"
#include "Settings.h"

#include <string_view>

namespace corvalog {

namespace {

// The dialog's file name buffer holds 255 characters with its terminating NUL.
constexpr std::size_t kInitialFileLimit = 254;

struct DialogKind {
    std::string_view section;
    std::string_view defaultFile;
    const char *title;
    const char *extension;
    const char *filterDescription;
    const char *filterPattern;
};

// Keeps a cut name valid UTF-8 for the dialog: never ends inside a multi-byte character.
std::string cutInitialFile(std::string file)
{
    if (file.size() <= kInitialFileLimit)
        return file;
    std::size_t end = kInitialFileLimit;
    while (end > 0 && (static_cast<unsigned char>(file[end]) & 0xC0) == 0x80)
        --end;
    file.resize(end);
    return file;
}

std::string runDialog(const DialogKind &kind, bool save, bool confirmOverwrite,
    const SettingsPaths &paths, UserPrompts &prompts)
{
    RecentFile recent
        = readRecentFile(paths.settingsFile, kind.section, paths.logFolder, kind.defaultFile);

    FileDialogRequest request;
    request.save = save;
    request.title = kind.title;
    request.defaultExtension = kind.extension;
    request.filters
        = { { kind.filterDescription, kind.filterPattern }, { "All Files (*.*)", "*.*" } };
    request.initialFolder = recent.folder;
    request.initialFile = cutInitialFile(recent.file);
    request.confirmOverwrite = confirmOverwrite;

    const std::string chosen = prompts.chooseFile(request);
    if (!chosen.empty()) {
        const std::size_t slash = chosen.rfind('/');
        if (slash == std::string::npos) {
            recent.file = chosen;
        } else {
            recent.folder = chosen.substr(0, slash);
            recent.file = chosen.substr(slash + 1);
        }
    }
    // A cancelled dialog writes the values it started with, so the defaults land in the file.
    // A name with a line break cannot be kept in the settings; the user is told rather than
    // surprised by the next dialog.
    if (hasLineBreak(recent.folder) || hasLineBreak(recent.file)) {
        prompts.message("Warning",
            "The name " + chosen + " holds a line break, which the settings file "
                + paths.settingsFile + " cannot keep: it will not be offered next time.",
            PromptIcon::Exclamation);
    } else {
        writeRecentFile(paths.settingsFile, kind.section, recent);
    }
    return chosen;
}

constexpr DialogKind kLogFile
    = { settings::kLogFiles, "Log Data", "Log File", "csv", "Log Files (*.csv)", "*.csv" };
// The workspace filter is described as "Log Files" too; users have always seen it so.
constexpr DialogKind kWorkspaceFile = { settings::kWorkspaceFiles, "Workspace",
    "Logger Workspace File", "lws", "Log Files (*.lws)", "*.lws" };

} // namespace

std::string chooseLogFile(const SettingsPaths &paths, UserPrompts &prompts)
{
    return runDialog(kLogFile, true, true, paths, prompts);
}

std::string chooseWorkspaceToOpen(const SettingsPaths &paths, UserPrompts &prompts)
{
    return runDialog(kWorkspaceFile, false, false, paths, prompts);
}

std::string chooseWorkspaceToSave(const SettingsPaths &paths, UserPrompts &prompts)
{
    return runDialog(kWorkspaceFile, true, true, paths, prompts);
}

} // namespace corvalog
