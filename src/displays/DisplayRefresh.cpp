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
    const WorkspaceClass &ws = m_ctx.workspace;
    if (screenTickReadsValues(m_ctx.logger.isLogging(), ws.LogInterval))
        ReadValues(m_ctx.workspace, m_ctx.values, m_ctx.engine, m_ctx.host);
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
    if (m_ctx.logger.isLogging())
        m_ctx.setLogLine(loggingProgressLabel(ws.LogInterval, ws.Channels,
            static_cast<float>(m_ctx.logger.lastIntervalMs()), m_ctx.logger.logFileName()));
    if (!window.isMinimized()) {
        QEvent paintNow(QEvent::UpdateRequest);
        QCoreApplication::sendEvent(window.window(), &paintNow);
    }
}

void DisplayRefresh::showChannel(int n, LCDModule &panel)
{
    panel.show(panelState(m_ctx.workspace.item(n), n, m_ctx.values, m_ctx.engine, m_commaDecimal));
}

} // namespace corvalog
