#include "UserPrompts.h"

namespace corvalog {

PromptAnswer safeAnswer(PromptButtons buttons)
{
    switch (buttons) {
    case PromptButtons::Ok:
        return PromptAnswer::Ok;
    case PromptButtons::YesNo:
        return PromptAnswer::No;
    case PromptButtons::OkCancel:
    case PromptButtons::YesNoCancel:
        break;
    }
    return PromptAnswer::Cancel;
}

PromptAnswer SilentPrompts::message(
    const std::string &, const std::string &, PromptIcon, PromptButtons buttons)
{
    return safeAnswer(buttons);
}

std::optional<std::string> SilentPrompts::input(
    const std::string &, const std::string &, const std::string &)
{
    return std::nullopt;
}

std::string SilentPrompts::chooseFile(const FileDialogRequest &)
{
    return {};
}

bool SilentPrompts::openWithSystem(const std::string &)
{
    return false;
}

bool SilentPrompts::openAddress(const std::string &)
{
    return false;
}

} // namespace corvalog
