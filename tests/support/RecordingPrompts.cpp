#include "RecordingPrompts.h"

namespace corvalog {

namespace {

template <typename T> bool pop(std::deque<T> &queue, T &out)
{
    if (queue.empty())
        return false;
    out = std::move(queue.front());
    queue.pop_front();
    return true;
}

} // namespace

PromptAnswer RecordingPrompts::message(
    const std::string &title, const std::string &text, PromptIcon icon, PromptButtons buttons)
{
    messages.push_back({ title, text, icon, buttons });
    PromptAnswer answer = PromptAnswer::Ok;
    return pop(answers, answer) ? answer : safeAnswer(buttons);
}

std::optional<std::string> RecordingPrompts::input(
    const std::string &title, const std::string &prompt, const std::string &initialText)
{
    inputPrompts.push_back(title + ": " + prompt + " [" + initialText + "]");
    std::optional<std::string> answer;
    pop(inputs, answer);
    return answer;
}

std::string RecordingPrompts::chooseFile(const FileDialogRequest &request)
{
    fileDialogs.push_back(request);
    std::string answer;
    pop(files, answer);
    return answer;
}

bool RecordingPrompts::openWithSystem(const std::string &path)
{
    opened.push_back(path);
    return opens;
}

bool RecordingPrompts::openAddress(const std::string &address)
{
    addresses.push_back(address);
    return opens;
}

} // namespace corvalog
