#pragma once

#include "logging/LoggingView.h"
#include "values/ReadValues.h"

#include <string>

namespace corvalog {

// A main window that shows nothing: no "Reading from:" label, no events, no menus, a log timer
// that never ticks by itself. Panels are titled "Ch<n>".
class NullWindow final : public ReadValuesHost, public LoggingView, public TickTimer
{
public:
    bool suppressReadingLabel() const override { return true; }
    void setReadingLabel(const std::string &) override { }
    void processEvents() override { }
    std::string panelTitle(int n) const override { return "Ch" + std::to_string(n); }
    void enableMenu(LogMenu, bool) override { }
    void setLogLabel(const std::string &) override { }
    void setLogLabelToolTip(const std::string &) override { }
    void start(std::int32_t) override { }
    void stop() override { }
};

} // namespace corvalog
