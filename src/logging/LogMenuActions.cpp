#include "LogMenuActions.h"

#include "runtime/Convert.h"
#include "runtime/Val.h"
#include "runtime/VbError.h"
#include "workspace/Settings.h"
#include "workspace/WorkspaceModule.h"

namespace corvalog {

std::string programWorkspaceFile(const SettingsPaths &paths)
{
    return paths.programFolder + "/" + kProgramName + ".lws";
}

bool mnuIntervalConfig(WorkspaceClass &workspace, UserPrompts &prompts, const std::string &saveTo)
{
    const char *title = "Set Log Interval";
    const std::optional<std::string> answer = prompts.input(
        title, "Enter a new log interval in milliseconds.", std::to_string(workspace.LogInterval));
    const double value = answer ? Val(*answer) : 0.0;
    if (value == 0.0)
        return false;
    std::int32_t interval = 0;
    try {
        interval = CLng(Variant::dbl(value));
    } catch (const VbError &) {
        prompts.message(title,
            "A log interval of " + *answer + " milliseconds is too long; nothing was changed.",
            PromptIcon::Exclamation);
        return false;
    }
    workspace.LogInterval = interval;
    SaveWorkspace(workspace, saveTo, prompts);
    return true;
}

void mnuViewLog(const std::string &settingsFile, UserPrompts &prompts)
{
    const RecentFile last = readRecentFile(settingsFile, "LogFiles", "", "");
    const std::string path = last.folder + "/" + last.file;
    const char *title = "View Last Log File";
    // The joined path always holds the separator, so the first message is never seen; a log
    // never chosen names the root folder, which is opened like a file.
    if (path.empty())
        prompts.message(title, "No log file has been created yet!", PromptIcon::Information);
    else if (!FolderExists(path))
        prompts.message(title, "Cannot find file " + path + "!", PromptIcon::Information);
    else if (!prompts.openWithSystem(path))
        prompts.message(title, "No program could open " + path + ".", PromptIcon::Information);
}

} // namespace corvalog
