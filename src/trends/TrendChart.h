#pragma once

#include "TrendTrace.h"

#include <QColor>
#include <QString>
#include <QtCharts/QChart>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

QT_BEGIN_NAMESPACE
class QAreaSeries;
class QLineSeries;
class QValueAxis;
QT_END_NAMESPACE

namespace corvalog {

// What one channel draws over the shown span (x in seconds since the history began).
struct ChannelTrace {
    std::vector<Polyline> runs;
    std::vector<Polyline> beyond; // the parts of the runs past a limit
    std::optional<double> under;
    std::optional<double> over;
    std::vector<std::pair<double, double>> errors;
};

// The trends chart: for each channel its trace in the channel's colour (one line series per
// connected run, the first named by the caption and shown in the legend), the parts past a limit
// drawn over it in red, its set limits as dashed lines in its colour, and a red strip along the
// bottom of the plot where it was in error (channel 1 lowest). Time runs along x in seconds.
class TrendChart final : public QChart
{
public:
    TrendChart();

    // Fresh series for channels with these captions.
    void setChannels(const std::vector<QString> &captions);
    int channels() const { return static_cast<int>(m_channels.size()); }
    void setCaption(int n, const QString &caption);

    // The shown range; a y range is widened to round numbers. Not reported as the user's.
    void setRange(double fromS, double toS, double yMin, double yMax);
    double yMin() const;
    double yMax() const;
    // Draws channel n (1-based) over the range last set; nothing while it is hidden.
    void setTrace(int n, const ChannelTrace &trace);

    bool channelVisible(int n) const { return channel(n).visible; }
    void setChannelVisible(int n, bool visible);

    // The series named by channel n's caption: its first run.
    QLineSeries *seriesFor(int n) const { return channel(n).runs.front(); }
    QLineSeries *underLine(int n) const { return channel(n).under; }
    QLineSeries *overLine(int n) const { return channel(n).over; }
    // The red strip marking where channel n was in error.
    QAreaSeries *errorStrip(int n) const { return channel(n).errors; }
    QValueAxis *timeAxis() const { return m_x; }

    // The user zoomed or panned the time axis (seconds).
    std::function<void(double fromS, double toS)> onUserRange;
    // A click on channel n's legend marker.
    std::function<void(int n)> onLegendClicked;

private:
    struct Channel {
        QColor colour;
        bool visible = true;
        std::vector<QLineSeries *> runs; // grows as a trace needs more; never empty
        std::vector<QLineSeries *> beyond;
        QLineSeries *under = nullptr;
        QLineSeries *over = nullptr;
        QAreaSeries *errors = nullptr;
    };

    const Channel &channel(int n) const { return m_channels.at(static_cast<std::size_t>(n - 1)); }
    Channel &channel(int n) { return m_channels.at(static_cast<std::size_t>(n - 1)); }
    QLineSeries *addLine(const QPen &pen);
    void fill(std::vector<QLineSeries *> &pool, std::vector<Polyline> runs, const QPen &pen);
    void clearTrace(Channel &c);
    void styleMarker(int n);

    QValueAxis *m_x = nullptr;
    QValueAxis *m_y = nullptr;
    std::vector<Channel> m_channels;
    double m_fromS = 0;
    double m_toS = 1;
    bool m_settingRange = false;
};

// The colour of channel n's trace (never red, which marks limits and errors).
QColor channelColour(int n);

} // namespace corvalog
