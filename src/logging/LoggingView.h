#pragma once

#include <cstdint>
#include <string>

namespace corvalog {

// The menu entries that logging switches on and off.
enum class LogMenu { StartLog, StopLog, ViewLog, EditWorkspace, Open };

// What logging shows in the main window: its menu entries and the logging status label.
class LoggingView
{
public:
    virtual ~LoggingView() = default;
    virtual void enableMenu(LogMenu menu, bool enabled) = 0;
    virtual void setLogLabel(const std::string &caption) = 0;
    virtual void setLogLabelToolTip(const std::string &text) = 0;
};

// A periodic timer on the GUI thread. Each tick reports the milliseconds since the previous one
// (since start for the first), as measured by the timer, not as planned.
class TickTimer
{
public:
    virtual ~TickTimer() = default;
    virtual void start(std::int32_t intervalMs) = 0;
    virtual void stop() = 0;
};

} // namespace corvalog
