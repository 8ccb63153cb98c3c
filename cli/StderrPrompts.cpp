#include "StderrPrompts.h"

namespace corvalog::cli {

StderrPrompts::StderrPrompts(std::ostream &err)
    : m_err(err)
{
}

PromptAnswer StderrPrompts::message(
    const std::string &title, const std::string &text, PromptIcon, PromptButtons buttons)
{
    // Messages keep their own line breaks; CR LF pairs read as one break on a terminal.
    std::string oneText;
    for (char c : text) {
        if (c != '\r')
            oneText += c;
    }
    m_err << (title.empty() ? "Message" : title) << ": " << oneText << "\n";
    return safeAnswer(buttons);
}

} // namespace corvalog::cli
