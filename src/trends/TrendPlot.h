#pragma once

#include "TrendTrace.h"

#include <QColor>
#include <QGraphicsItem>
#include <optional>
#include <utility>
#include <vector>

namespace corvalog {

// What one channel draws over the shown span (x in seconds since the history began).
struct ChannelTrace {
    std::vector<Polyline> runs;
    std::vector<Polyline> beyond; // the parts of the runs past a limit
    std::optional<double> under;
    std::optional<double> over;
    std::vector<std::pair<double, double>> errors;
};

// A moment marked on the time axis: red where a channel left its range or went into error,
// green where it came back.
struct TimeMark {
    double seconds = 0;
    bool leaving = true;
};

// The plot of the trends chart, painted in one pass: each channel's runs in its colour, the
// parts past a limit in red over them, its set limits as dashed lines, a strip along the bottom
// where it was in error (channel 1 lowest), and the marks on the time axis. One item instead of
// a chart series per run keeps a redraw to one repaint of the plot.
class TrendPlot final : public QGraphicsItem
{
public:
    explicit TrendPlot(QGraphicsItem *chart);

    void setChannels(const std::vector<QColor> &colours);
    // The plot's rectangle in the chart and the values at its edges.
    void setArea(const QRectF &area);
    void setRange(double fromS, double toS, double yMin, double yMax);
    void setTrace(std::size_t i, ChannelTrace trace);
    const ChannelTrace &trace(std::size_t i) const { return m_channels.at(i).trace; }
    void setVisible(std::size_t i, bool visible);
    void setMarks(std::vector<TimeMark> marks);
    const std::vector<TimeMark> &marks() const { return m_marks; }

    QRectF boundingRect() const override { return m_area; }
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *) override;

private:
    struct Channel {
        QColor colour;
        bool visible = true;
        ChannelTrace trace;
    };

    QPointF place(double seconds, double value) const;
    void paintChannel(QPainter &painter, std::size_t i) const;

    std::vector<Channel> m_channels;
    std::vector<TimeMark> m_marks;
    QRectF m_area;
    double m_fromS = 0;
    double m_toS = 1;
    double m_yMin = 0;
    double m_yMax = 1;
};

} // namespace corvalog
