#pragma once

#include "runtime/UserPrompts.h"

#include <deque>
#include <ostream>
#include <string>
#include <vector>

namespace corvalog {

// A UserPrompts that records every request and gives scripted answers (then safe defaults:
// Cancel, No or Ok; no input; no file), so tests can assert exact titles, icons and texts.
class RecordingPrompts final : public UserPrompts
{
public:
    struct Message {
        std::string title;
        std::string text;
        PromptIcon icon;
        PromptButtons buttons;

        bool operator==(const Message &o) const
        {
            return title == o.title && text == o.text && icon == o.icon && buttons == o.buttons;
        }
        // For test failure output.
        friend std::ostream &operator<<(std::ostream &out, const Message &m)
        {
            return out << '{' << m.title << ": " << m.text << " icon " << static_cast<int>(m.icon)
                       << " buttons " << static_cast<int>(m.buttons) << '}';
        }
    };

    PromptAnswer message(const std::string &title, const std::string &text, PromptIcon icon,
        PromptButtons buttons) override;
    std::optional<std::string> input(const std::string &title, const std::string &prompt,
        const std::string &initialText) override;
    std::string chooseFile(const FileDialogRequest &request) override;
    bool openWithSystem(const std::string &path) override;
    bool openAddress(const std::string &address) override;

    std::vector<Message> messages;
    std::vector<FileDialogRequest> fileDialogs;
    std::vector<std::string> opened; // local files
    std::vector<std::string> addresses; // web addresses
    bool opens = true; // whether a program could open them
    std::vector<std::string> inputPrompts;

    std::deque<PromptAnswer> answers;
    std::deque<std::optional<std::string>> inputs;
    std::deque<std::string> files;
};

} // namespace corvalog
