#pragma once

#include "runtime/UserPrompts.h"

#include <QString>

class QWidget;

namespace corvalog {

// The prompts of the desktop program: message boxes, the input box and file dialogs owned by
// the main window, and the desktop's associated programs.
class QtPrompts final : public UserPrompts
{
public:
    explicit QtPrompts(QWidget *owner = nullptr)
        : m_owner(owner)
    {
    }
    void setOwner(QWidget *owner) { m_owner = owner; }

    PromptAnswer message(const std::string &title, const std::string &text, PromptIcon icon,
        PromptButtons buttons) override;
    std::optional<std::string> input(const std::string &title, const std::string &prompt,
        const std::string &initialText) override;
    std::string chooseFile(const FileDialogRequest &request) override;
    bool openWithSystem(const std::string &path) override;
    bool openAddress(const std::string &address) override;

private:
    QWidget *m_owner;
};

// The filter text of a file dialog: "Log Files (*.csv);;All Files (*)". A pattern's "*.*" is
// every file, as users of the filter lists mean it.
QString dialogFilter(const FileDialogRequest &request);

} // namespace corvalog
