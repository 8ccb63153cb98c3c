#include "DisplayRefresh.h"

#include "runtime/Convert.h"
#include "runtime/Format.h"

#include <QCoreApplication>

namespace corvalog {

namespace {

// An indicator script's value; a failing script reads as 0 (no bar, no low-battery mark)
// rather than stopping the refresh of every other panel.
template <typename T, typename Convert>
T indicator(ScriptEngine &engine, const std::string &script, Convert convert)
{
    EvalResult r = engine.Eval(script);
    if (!r.ok())
        return T {};
    try {
        return convert(r.value);
    } catch (const VbError &) {
        return T {};
    }
}

} // namespace

QString displayText(const std::string &formatted, bool commaDecimal)
{
    QString text = QString::fromStdString(formatted);
    if (!commaDecimal)
        return text;
    for (QChar &c : text) {
        if (c == QLatin1Char(','))
            c = QLatin1Char('.');
        else if (c == QLatin1Char('.'))
            c = QLatin1Char(',');
    }
    return text;
}

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
    const ItemClass &item = m_ctx.workspace.item(n);
    if (m_ctx.values.error(n)) {
        panel.setFlashMode(false);
        panel.setValue(QString::fromLatin1(kNoValue));
        panel.setBackColor(kPureRed);
        panel.setLQI(0);
        panel.setLoBatt(false);
    } else {
        const float v = m_ctx.values.output(n);
        panel.setFlashMode(v > item.Overload || v < item.Underload);
        panel.setValue(displayText(Format(Variant::single(v), item.Format), m_commaDecimal));
        panel.setBackColor(kSystem3DLight);
        panel.setLQI(indicator<float>(
            m_ctx.engine, item.DataTagLQIScript, [](const Variant &x) { return CSng(x); }));
        panel.setLoBatt(indicator<bool>(
            m_ctx.engine, item.DataTagBattScript, [](const Variant &x) { return CBool(x); }));
    }
    panel.setNetInd(item.TareValue != 0);
}

} // namespace corvalog
