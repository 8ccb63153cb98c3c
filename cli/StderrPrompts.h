#pragma once

#include "runtime/UserPrompts.h"

#include <ostream>

namespace corvalog::cli {

// Prompts for a tool without a window: messages go to stderr as "<Title>: <text>" ("Warning:
// …", "Error: …"), questions take the safe answer (Cancel, else No), the input box and file
// dialogs are cancelled and nothing is opened.
class StderrPrompts final : public SilentPrompts
{
public:
    explicit StderrPrompts(std::ostream &err);

    PromptAnswer message(const std::string &title, const std::string &text, PromptIcon icon,
        PromptButtons buttons) override;

private:
    std::ostream &m_err;
};

} // namespace corvalog::cli
