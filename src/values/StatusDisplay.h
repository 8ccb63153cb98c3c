#pragma once

#include <string>

namespace corvalog {

// The status window as the core uses it. ShowMessage shows a message under a title; a message
// beginning with "!" is a progress message of a cancellable procedure: the window shows it
// without the "!" and turns its button into a Cancel button. StatusClosed tells whether that
// button was pressed since the window was loaded, which ends any retrying procedure.
class StatusDisplay
{
public:
    virtual ~StatusDisplay() = default;
    virtual void ShowMessage(const std::string &message, const std::string &title) = 0;
    virtual bool StatusClosed() const = 0;
};

} // namespace corvalog
