#include "DisplayRefresh.h"

#include "values/PanelState.h"

#include <QCoreApplication>

namespace corvalog {

DisplayRefresh::DisplayRefresh(Context context)
    : m_ctx(std::move(context))
    , m_commaDecimal(m_ctx.commaDecimal)
{
}

void DisplayRefresh::ScreenTimer_Timer()
{
    Session &session = m_ctx.session;
    session.screenTick();
    const WorkspaceClass &ws = session.workspace();
    const DataLogger &logger = session.logger();
    if (m_closing)
        return;
    // Nothing paints while the panels are written (no events run in between); the changed
    // parts are then painted at once, as one repaint. A minimised window is not painted.
    QWidget &window = m_ctx.window;
    const int channels = std::min<int>(ws.Channels, static_cast<int>(m_ctx.panels.size()) - 1);
    for (int n = 1; n <= channels; ++n) {
        if (LCDModule *panel = m_ctx.panels[static_cast<std::size_t>(n)])
            showChannel(n, *panel);
    }
    if (logger.isLogging())
        m_ctx.setLogLine(loggingProgressLabel(ws.LogInterval, ws.Channels,
            static_cast<float>(logger.lastIntervalMs()), logger.logFileName()));
    if (!window.isMinimized()) {
        QEvent paintNow(QEvent::UpdateRequest);
        QCoreApplication::sendEvent(window.window(), &paintNow);
    }
}

void DisplayRefresh::showChannel(int n, LCDModule &panel)
{
    Session &session = m_ctx.session;
    panel.show(panelState(
        session.workspace().item(n), n, session.values(), session.engine(), m_commaDecimal));
}

} // namespace corvalog
