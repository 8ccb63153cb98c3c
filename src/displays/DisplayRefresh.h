#pragma once

#include "FlashPhase.h"
#include "LCDModule.h"
#include "logging/DataLogger.h"

#include <functional>
#include <vector>

namespace corvalog {

// The display refresh of the main window: every screen tick evaluates the channels (unless a
// fast log already does) and writes each panel's number, colours, limits flash and indicators,
// and paints what changed at once, so a tick shows as one repaint with no state in between.
class DisplayRefresh
{
public:
    static constexpr int kIntervalMs = 333;
    // What a channel in error shows.
    static constexpr const char *kNoValue = "-------";

    struct Context {
        WorkspaceClass &workspace;
        ChannelValues &values;
        ScriptEngine &engine;
        ReadValuesHost &host;
        const DataLogger &logger;
        QWidget &window;
        // Panels by channel number; entry 0 is never used.
        const std::vector<LCDModule *> &panels;
        // The logging line: caption and tooltip.
        std::function<void(const std::string &)> setLogLine;
        // Numbers are written with decimal commas (the start-up probe).
        bool commaDecimal = false;
    };

    explicit DisplayRefresh(Context context);

    // Set while the window closes: ticks still evaluate but show nothing more.
    void setClosing(bool closing) { m_closing = closing; }

    void ScreenTimer_Timer();
    static void FlashTimer_Timer(FlashPhase &phase) { phase.toggle(); }

private:
    void showChannel(int n, LCDModule &panel);

    Context m_ctx;
    const bool m_commaDecimal;
    bool m_closing = false;
};

// A formatted value as the seven-segment display shows it. The display's only decimal mark is
// its point, so where the locale writes decimal commas the comma and the point change places
// ("1.234,50" shows as "1,234.50"): a comma would be a blank cell and turn 12,5 into 12 5.
QString displayText(const std::string &formatted, bool commaDecimal);

} // namespace corvalog
