#pragma once

#include "FlashPhase.h"
#include "LCDModule.h"
#include "session/Session.h"

#include <functional>
#include <vector>

namespace corvalog {

// The display refresh of the main window: every screen tick evaluates the channels (unless a
// fast log already does) and writes each panel's number, colours, limits flash and indicators,
// and paints what changed at once, so a tick shows as one repaint with no state in between.
class DisplayRefresh
{
public:
    struct Context {
        Session &session;
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

private:
    void showChannel(int n, LCDModule &panel);

    Context m_ctx;
    const bool m_commaDecimal;
    bool m_closing = false;
};

} // namespace corvalog
