#pragma once

#include "TrendPlot.h"

#include <QColor>
#include <QString>
#include <QtCharts/QChart>
#include <functional>
#include <vector>

QT_BEGIN_NAMESPACE
class QLineSeries;
class QValueAxis;
QT_END_NAMESPACE

namespace corvalog {

// The trends chart: time along x in seconds, values along y, a legend entry per channel in its
// colour; the channels themselves are drawn by one TrendPlot over the plot area.
class TrendChart final : public QChart
{
public:
    TrendChart();

    // Fresh channels with these captions (and no marks).
    void setChannels(const std::vector<QString> &captions);
    int channels() const { return static_cast<int>(m_channels.size()); }
    void setCaption(int n, const QString &caption);
    void setTimeTitle(const QString &title);

    // The shown range; a y range is widened to round numbers. Not reported as the user's.
    void setRange(double fromS, double toS, double yMin, double yMax);
    double yMin() const;
    double yMax() const;
    // Draws channel n (1-based) over the range last set; nothing while it is hidden.
    void setTrace(int n, ChannelTrace trace);
    const ChannelTrace &trace(int n) const { return m_plot->trace(index(n)); }
    void setMarks(std::vector<TimeMark> marks) { m_plot->setMarks(std::move(marks)); }
    const std::vector<TimeMark> &marks() const { return m_plot->marks(); }

    bool channelVisible(int n) const { return m_channels.at(index(n)).visible; }
    void setChannelVisible(int n, bool visible);

    // The series that holds channel n's legend entry and caption.
    QLineSeries *seriesFor(int n) const { return m_channels.at(index(n)).named; }
    QValueAxis *timeAxis() const { return m_x; }

    // The user zoomed or panned the time axis (seconds).
    std::function<void(double fromS, double toS)> onUserRange;
    // A click on channel n's legend marker.
    std::function<void(int n)> onLegendClicked;

private:
    struct Channel {
        QColor colour;
        bool visible = true;
        QLineSeries *named = nullptr;
    };

    static std::size_t index(int n) { return static_cast<std::size_t>(n - 1); }
    void styleMarker(int n);

    QValueAxis *m_x = nullptr;
    QValueAxis *m_y = nullptr;
    TrendPlot *m_plot = nullptr;
    std::vector<Channel> m_channels;
    bool m_settingRange = false;
};

// The colour of channel n's trace (never red, which marks limits and errors).
QColor channelColour(int n);

} // namespace corvalog
