#include "TrendChart.h"

#include <QPen>
#include <QtCharts/QLegend>
#include <QtCharts/QLegendMarker>
#include <QtCharts/QLineSeries>
#include <QtCharts/QValueAxis>
#include <algorithm>
#include <array>
#include <cmath>

namespace corvalog {

namespace {

// Above the axes and grid, below the legend.
constexpr double kPlotZ = 4.5;

// A round step giving about `ticks` steps over the span.
double niceStep(double span, double ticks)
{
    const double raw = span / ticks;
    if (!(raw > 0) || !std::isfinite(raw))
        return 1.0;
    const double unit = std::pow(10.0, std::floor(std::log10(raw)));
    const double f = raw / unit;
    return (f < 1.5 ? 1.0 : f < 3.0 ? 2.0 : f < 7.0 ? 5.0 : 10.0) * unit;
}

} // namespace

QColor channelColour(int n)
{
    static const std::array<QColor, 12> palette { QColor(31, 119, 180), QColor(44, 160, 44),
        QColor(255, 127, 14), QColor(148, 103, 189), QColor(23, 190, 207), QColor(140, 86, 75),
        QColor(227, 119, 194), QColor(128, 128, 0), QColor(26, 35, 126), QColor(0, 131, 143),
        QColor(201, 160, 0), QColor(90, 90, 90) };
    const int i = std::max(n - 1, 0);
    const QColor colour = palette[static_cast<std::size_t>(i) % palette.size()];
    return i < static_cast<int>(palette.size()) ? colour : colour.darker(150);
}

TrendChart::TrendChart()
    : m_x(new QValueAxis(this))
    , m_y(new QValueAxis(this))
    , m_plot(new TrendPlot(this))
{
    m_x->setTitleText(QStringLiteral("Seconds since activation"));
    m_x->setTickType(QValueAxis::TicksDynamic);
    m_x->setTickAnchor(0);
    addAxis(m_x, Qt::AlignBottom);
    addAxis(m_y, Qt::AlignLeft);
    // Beside the plot the entries stack, so two dozen captions still read.
    legend()->setAlignment(Qt::AlignRight);
    m_plot->setZValue(kPlotZ);
    setRange(0, 60, 0, 1);
    QObject::connect(m_x, &QValueAxis::rangeChanged, this, [this](qreal min, qreal max) {
        if (!m_settingRange && onUserRange)
            onUserRange(min, max);
    });
    QObject::connect(this, &QChart::plotAreaChanged, this,
        [this](const QRectF &area) { m_plot->setArea(area); });
}

void TrendChart::setChannels(const std::vector<QString> &captions)
{
    removeAllSeries();
    m_channels.clear();
    std::vector<QColor> colours;
    for (const QString &caption : captions) {
        const int n = channels() + 1;
        Channel c;
        c.colour = channelColour(n);
        c.named = new QLineSeries;
        c.named->setName(caption);
        c.named->setPen(QPen(c.colour, 2.0));
        addSeries(c.named);
        c.named->attachAxis(m_x);
        c.named->attachAxis(m_y);
        for (QLegendMarker *marker : legend()->markers(c.named)) {
            QObject::connect(marker, &QLegendMarker::clicked, this, [this, n] {
                if (onLegendClicked)
                    onLegendClicked(n);
            });
        }
        m_channels.push_back(c);
        colours.push_back(c.colour);
        styleMarker(n);
    }
    m_plot->setChannels(colours);
}

void TrendChart::setCaption(int n, const QString &caption)
{
    if (seriesFor(n)->name() != caption)
        seriesFor(n)->setName(caption);
}

void TrendChart::setTimeTitle(const QString &title)
{
    m_x->setTitleText(title);
}

void TrendChart::setRange(double fromS, double toS, double yMin, double yMax)
{
    m_settingRange = true;
    // Never a wide range at a narrow range's step: every tick costs an item.
    const double step = niceStep(toS - fromS, 6.0);
    if (step > m_x->tickInterval()) {
        m_x->setTickInterval(step);
        m_x->setRange(fromS, toS);
    } else {
        m_x->setRange(fromS, toS);
        m_x->setTickInterval(step);
    }
    const int decimals = step >= 1.0 ? 0 : static_cast<int>(std::ceil(-std::log10(step) - 1e-9));
    const QString format = QStringLiteral("%.%1f").arg(decimals);
    if (m_x->labelFormat() != format)
        m_x->setLabelFormat(format);

    // Round values on the y axis; the axis is only touched when they change, as laying it out
    // again costs more than drawing every channel.
    const double yStep = niceStep(yMax - yMin, 5.0);
    const double low = std::floor(yMin / yStep) * yStep;
    const double high = std::max(std::ceil(yMax / yStep) * yStep, low + yStep);
    const int ticks = static_cast<int>(std::lround((high - low) / yStep)) + 1;
    if (m_y->min() != low || m_y->max() != high)
        m_y->setRange(low, high);
    if (m_y->tickCount() != ticks)
        m_y->setTickCount(ticks);
    const int yDecimals = yStep >= 1.0 ? 0 : static_cast<int>(std::ceil(-std::log10(yStep) - 1e-9));
    const QString yFormat = QStringLiteral("%.%1f").arg(yDecimals);
    if (m_y->labelFormat() != yFormat)
        m_y->setLabelFormat(yFormat);
    m_plot->setRange(fromS, toS, low, high);
    m_settingRange = false;
}

double TrendChart::yMin() const
{
    return m_y->min();
}

double TrendChart::yMax() const
{
    return m_y->max();
}

void TrendChart::setTrace(int n, ChannelTrace trace)
{
    if (!channelVisible(n))
        return;
    m_plot->setTrace(index(n), std::move(trace));
}

void TrendChart::setChannelVisible(int n, bool visible)
{
    m_channels.at(index(n)).visible = visible;
    m_plot->setVisible(index(n), visible);
    styleMarker(n);
}

void TrendChart::styleMarker(int n)
{
    const Channel &c = m_channels.at(index(n));
    QColor colour = c.colour;
    QColor label = legend()->labelColor();
    // A hidden channel keeps its marker, faded, so a click brings it back.
    if (!c.visible) {
        colour.setAlphaF(0.25);
        label.setAlphaF(0.4);
    }
    for (QLegendMarker *marker : legend()->markers(c.named)) {
        marker->setVisible(true);
        marker->setBrush(colour);
        marker->setPen(QPen(colour));
        marker->setLabelBrush(label);
    }
}

} // namespace corvalog
