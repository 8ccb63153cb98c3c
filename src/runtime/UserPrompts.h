#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace corvalog {

enum class PromptIcon { None, Critical, Question, Exclamation, Information };
enum class PromptButtons { Ok, OkCancel, YesNo, YesNoCancel };
enum class PromptAnswer { Ok, Cancel, Yes, No };

// What a file dialog is asked to show.
struct FileDialogRequest {
    bool save = false; // a save dialog, else an open dialog
    std::string title; // "Log File"
    std::string defaultExtension; // "csv", added when the name has none
    std::vector<std::pair<std::string, std::string>> filters; // ("Log Files (*.csv)", "*.csv")
    std::string initialFolder;
    std::string initialFile;
    bool confirmOverwrite = false;
};

// Everything the core asks or tells a person goes through here: message boxes, questions, the
// input box, file dialogs and "open with the system". The application shows real dialogs, the
// command-line tool writes to stderr and answers safely, tests record and script the answers.
// Used on the GUI thread (or the tool's one thread) only.
class UserPrompts
{
public:
    virtual ~UserPrompts() = default;

    // A message box; the answer is the button pressed (Ok for a plain message).
    virtual PromptAnswer message(const std::string &title, const std::string &text, PromptIcon icon,
        PromptButtons buttons = PromptButtons::Ok)
        = 0;
    // The input box: the text entered, or nothing when cancelled.
    virtual std::optional<std::string> input(
        const std::string &title, const std::string &prompt, const std::string &initialText)
        = 0;
    // A file dialog: the chosen full path, or "" when cancelled.
    virtual std::string chooseFile(const FileDialogRequest &request) = 0;
    // Opens a local file with the program the system associates with it (a name holding "://"
    // is a file all the same); false when no program could open it.
    virtual bool openWithSystem(const std::string &path) = 0;
    // Opens a web address in the user's browser; false when nothing could open it.
    virtual bool openAddress(const std::string &address) = 0;
};

// The answer that changes nothing: Cancel where offered, else No, else Ok.
PromptAnswer safeAnswer(PromptButtons buttons);

// Prompts that show nothing and answer safely: no input, no file, nothing opened. For work
// done where nobody is asked (loading the defaults, benchmarks, fuzzing).
class SilentPrompts : public UserPrompts
{
public:
    PromptAnswer message(const std::string &title, const std::string &text, PromptIcon icon,
        PromptButtons buttons) override;
    std::optional<std::string> input(const std::string &title, const std::string &prompt,
        const std::string &initialText) override;
    std::string chooseFile(const FileDialogRequest &request) override;
    bool openWithSystem(const std::string &path) override;
    bool openAddress(const std::string &address) override;
};

} // namespace corvalog
