#pragma once

#include "runtime/Clock.h"
#include "values/TrendHistory.h"
#include "workspace/WorkspaceClass.h"

#include <QTimer>
#include <QWidget>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

class QComboBox;
class QPushButton;
QT_BEGIN_NAMESPACE
class QLineSeries;
QT_END_NAMESPACE

namespace corvalog {

struct ChannelLook;
class TrendChart;
class TrendPanel;

// "Corvalog Trends": every channel of the workspace over time, from the history the session
// keeps. While shown it redraws at the display refresh rate, following the present over the
// chosen span, unless paused or zoomed; a new activation brings the new workspace's channels.
// A click on a channel's legend entry hides or shows it; the pointer over the plot reads every
// shown channel at that time; the shown span exports as a picture or as CSV.
class TrendsWindow final : public QWidget
{
public:
    // The spans cbSpan offers, in its order.
    enum class Span { OneMinute, TenMinutes, OneHour, All };

    TrendsWindow(const TrendHistory &history, const WorkspaceClass &workspace, const Clock &clock,
        QWidget *parent = nullptr);
    ~TrendsWindow() override;

    // As the span box does: also ends a zoom.
    void setSpan(Span span);
    Span span() const { return m_span; }
    // Paused, the view holds still (the history still grows); resuming follows the present
    // again, ending a zoom too.
    void setPaused(bool paused);
    bool paused() const { return m_paused; }
    // Shows [fromMs, toMs) as a zoom or a pan does; the view stops following until the zoom is
    // reset, a span is chosen or a pause is resumed.
    void zoomTo(double fromMs, double toMs);
    void resetZoom();
    bool zoomed() const;

    // Draws the shown span now (the timer does this while the window is shown).
    void redraw();
    double shownFromMs() const;
    double shownToMs() const;
    double shownSpanMs() const { return shownToMs() - shownFromMs(); }
    // The width of the plot in pixels: the columns a redraw folds each channel into.
    int plotPixels() const;

    int channels() const;
    // The series named by channel n's caption (1-based).
    QLineSeries *seriesFor(int channel) const;
    TrendChart &chart() const;
    bool channelVisible(int channel) const;
    // As a click on the channel's legend entry does.
    void setChannelVisible(int channel, bool visible);

    // What the cursor label says with the pointer at a time: the time since activation and of
    // day, then each shown channel's value in its format (its nearest sample).
    QString cursorTextAt(double timeMs) const;

    bool exportPng(const QString &path);
    bool exportCsv(const QString &path) const;

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void rebuild();
    void followPresent();
    void updateTimer();
    void setPauseText();
    double nowMs() const;
    const ItemClass *item(int n) const;
    QString caption(int n) const;
    std::vector<std::string> captions() const;
    std::vector<ChannelLook> looks() const;

    const TrendHistory &m_history;
    const WorkspaceClass &m_workspace;
    const Clock &m_clock;

    TrendPanel *m_panel = nullptr;
    QComboBox *m_spanBox = nullptr;
    QPushButton *m_pause = nullptr;
    QTimer m_tick; // the redraw while following

    std::optional<std::uint64_t> m_generation; // of the history the series were built for
    Span m_span = Span::TenMinutes;
    bool m_paused = false;
    double m_heldAtMs = 0; // the present when paused
};

} // namespace corvalog
