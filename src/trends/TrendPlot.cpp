#include "TrendPlot.h"

#include <QPainter>
#include <QPolygonF>
#include <algorithm>

namespace corvalog {

namespace {

const QColor kBeyondColour(220, 0, 0);
const QColor kErrorColour(220, 0, 0, 170);
const QColor kBackColour(0, 150, 0);

// Pixels of each channel's error strip, and of the gap above it.
constexpr double kStripHeight = 4.0;
constexpr double kStripGap = 1.0;
// The height and half width of a mark's triangle.
constexpr double kMarkHeight = 8.0;
constexpr double kMarkHalfWidth = 4.0;

// Thin cosmetic lines take the rasteriser's fastest path: a scrolling chart of 24 channels
// repaints three times a second.
QPen linePen(const QColor &colour, double width, Qt::PenStyle style = Qt::SolidLine)
{
    QPen pen(colour, width, style);
    pen.setCosmetic(true);
    return pen;
}

} // namespace

TrendPlot::TrendPlot(QGraphicsItem *chart)
    : QGraphicsItem(chart)
{
    setAcceptedMouseButtons(Qt::NoButton);
}

void TrendPlot::setChannels(const std::vector<QColor> &colours)
{
    m_channels.clear();
    for (const QColor &colour : colours)
        m_channels.push_back({ colour, true, {} });
    m_marks.clear();
    update();
}

void TrendPlot::setArea(const QRectF &area)
{
    if (area == m_area)
        return;
    prepareGeometryChange();
    m_area = area;
}

void TrendPlot::setRange(double fromS, double toS, double yMin, double yMax)
{
    m_fromS = fromS;
    m_toS = toS;
    m_yMin = yMin;
    m_yMax = yMax;
    update();
}

void TrendPlot::setTrace(std::size_t i, ChannelTrace trace)
{
    m_channels.at(i).trace = std::move(trace);
    update();
}

void TrendPlot::setVisible(std::size_t i, bool visible)
{
    Channel &c = m_channels.at(i);
    c.visible = visible;
    if (!visible)
        c.trace = {};
    update();
}

void TrendPlot::setMarks(std::vector<TimeMark> marks)
{
    m_marks = std::move(marks);
    update();
}

QPointF TrendPlot::place(double seconds, double value) const
{
    const double xSpan = m_toS - m_fromS;
    const double ySpan = m_yMax - m_yMin;
    const double x = xSpan > 0 ? (seconds - m_fromS) / xSpan : 0.0;
    const double y = ySpan > 0 ? (value - m_yMin) / ySpan : 0.5;
    // Far outside the plot a coordinate only has to stay outside it, not overflow the painter.
    return { m_area.left() + std::clamp(x, -4.0, 5.0) * m_area.width(),
        m_area.bottom() - std::clamp(y, -4.0, 5.0) * m_area.height() };
}

void TrendPlot::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    if (m_area.isEmpty())
        return;
    painter->save();
    painter->setClipRect(m_area);
    painter->setRenderHint(QPainter::Antialiasing, false);
    for (std::size_t i = 0; i < m_channels.size(); ++i)
        paintChannel(*painter, i);
    painter->setPen(Qt::NoPen);
    for (const TimeMark &mark : m_marks) {
        const double x = place(mark.seconds, m_yMin).x();
        const double bottom = m_area.bottom();
        painter->setBrush(mark.leaving ? kBeyondColour : kBackColour);
        painter->drawPolygon(QPolygonF { QPointF(x - kMarkHalfWidth, bottom - kMarkHeight),
            QPointF(x + kMarkHalfWidth, bottom - kMarkHeight), QPointF(x, bottom) });
    }
    painter->restore();
}

void TrendPlot::paintChannel(QPainter &painter, std::size_t i) const
{
    const Channel &c = m_channels[i];
    if (!c.visible)
        return;
    const ChannelTrace &t = c.trace;
    // Each channel's strip sits above the one before, so overlapping errors stay apart.
    const double stripBottom
        = m_area.bottom() - static_cast<double>(i) * (kStripHeight + kStripGap);
    for (const auto &[from, to] : t.errors) {
        const double left = place(from, m_yMin).x();
        const double right = std::max(place(to, m_yMin).x(), left + 1.0);
        painter.fillRect(
            QRectF(left, stripBottom - kStripHeight, right - left, kStripHeight), kErrorColour);
    }
    painter.setPen(linePen(c.colour, 1.0, Qt::DashLine));
    for (const std::optional<double> &limit : { t.under, t.over }) {
        if (limit) {
            const double y = place(m_fromS, *limit).y();
            painter.drawLine(QPointF(m_area.left(), y), QPointF(m_area.right(), y));
        }
    }
    QPolygonF points;
    const auto draw = [&](const std::vector<Polyline> &runs) {
        for (const Polyline &run : runs) {
            points.clear();
            points.reserve(run.size());
            for (const QPointF &p : run)
                points.append(place(p.x(), p.y()));
            painter.drawPolyline(points);
        }
    };
    painter.setPen(linePen(c.colour, 1.0));
    draw(t.runs);
    // Twice, a pixel apart: a bold red that still takes the fast path of thin lines.
    painter.setPen(linePen(kBeyondColour, 1.0));
    draw(t.beyond);
    painter.translate(0, 1);
    draw(t.beyond);
    painter.translate(0, -1);
}

} // namespace corvalog
