#include "TrendChart.h"

#include <QPen>
#include <QtCharts/QAreaSeries>
#include <QtCharts/QLegend>
#include <QtCharts/QLegendMarker>
#include <QtCharts/QLineSeries>
#include <QtCharts/QValueAxis>
#include <algorithm>
#include <array>
#include <cmath>

namespace corvalog {

namespace {

const QColor kBeyondColour(220, 0, 0);
const QColor kErrorColour(220, 0, 0, 170);

// Runs past this many are drawn joined: a trace broken into more pieces than that is noise
// anyway, and every run costs a series.
constexpr std::size_t kMaxRuns = 64;

// Each channel's error strip takes this share of the plot's height.
constexpr double kStripShare = 0.02;

// Roughly six labelled ticks, on round values.
double niceStep(double span)
{
    const double raw = span / 6.0;
    if (!(raw > 0))
        return 1.0;
    const double unit = std::pow(10.0, std::floor(std::log10(raw)));
    const double f = raw / unit;
    return (f < 1.5 ? 1.0 : f < 3.0 ? 2.0 : f < 7.0 ? 5.0 : 10.0) * unit;
}

QPen runPen(const QColor &colour)
{
    QPen pen(colour, 1.5);
    pen.setCosmetic(true);
    return pen;
}

QPen limitPen(const QColor &colour)
{
    QPen pen(colour, 1.0, Qt::DashLine);
    pen.setCosmetic(true);
    return pen;
}

void hideMarkers(QLegend *legend, QAbstractSeries *series)
{
    for (QLegendMarker *marker : legend->markers(series))
        marker->setVisible(false);
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
{
    m_x->setTitleText(QStringLiteral("Seconds since activation"));
    m_x->setTickType(QValueAxis::TicksDynamic);
    m_x->setTickAnchor(0);
    addAxis(m_x, Qt::AlignBottom);
    addAxis(m_y, Qt::AlignLeft);
    legend()->setAlignment(Qt::AlignBottom);
    setRange(0, 60, 0, 1);
    QObject::connect(m_x, &QValueAxis::rangeChanged, this, [this](qreal min, qreal max) {
        if (!m_settingRange && onUserRange)
            onUserRange(min, max);
    });
}

void TrendChart::setChannels(const std::vector<QString> &captions)
{
    removeAllSeries();
    m_channels.clear();
    for (const QString &caption : captions) {
        const int n = channels() + 1;
        Channel c;
        c.colour = channelColour(n);
        QLineSeries *named = addLine(runPen(c.colour));
        named->setName(caption);
        for (QLegendMarker *marker : legend()->markers(named)) {
            marker->setVisible(true);
            QObject::connect(marker, &QLegendMarker::clicked, this, [this, n] {
                if (onLegendClicked)
                    onLegendClicked(n);
            });
        }
        c.runs.push_back(named);
        c.under = addLine(limitPen(c.colour));
        c.over = addLine(limitPen(c.colour));

        c.errors = new QAreaSeries;
        c.errors->setUpperSeries(new QLineSeries(c.errors));
        c.errors->setLowerSeries(new QLineSeries(c.errors));
        c.errors->setPen(Qt::NoPen);
        c.errors->setBrush(kErrorColour);
        addSeries(c.errors);
        c.errors->attachAxis(m_x);
        c.errors->attachAxis(m_y);
        hideMarkers(legend(), c.errors);
        m_channels.push_back(c);
        styleMarker(n);
    }
}

void TrendChart::setCaption(int n, const QString &caption)
{
    if (seriesFor(n)->name() != caption)
        seriesFor(n)->setName(caption);
}

void TrendChart::setRange(double fromS, double toS, double yMin, double yMax)
{
    m_settingRange = true;
    m_fromS = fromS;
    m_toS = toS;
    // Never a wide range at a narrow range's step: every tick costs an item.
    const double step = niceStep(toS - fromS);
    if (step > m_x->tickInterval()) {
        m_x->setTickInterval(step);
        m_x->setRange(fromS, toS);
    } else {
        m_x->setRange(fromS, toS);
        m_x->setTickInterval(step);
    }
    const int decimals = step >= 1.0 ? 0 : static_cast<int>(std::ceil(-std::log10(step)));
    m_x->setLabelFormat(QStringLiteral("%.%1f").arg(decimals));
    m_y->setRange(yMin, yMax);
    m_y->applyNiceNumbers();
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

void TrendChart::setTrace(int n, const ChannelTrace &trace)
{
    Channel &c = channel(n);
    if (!c.visible) {
        clearTrace(c);
        return;
    }
    fill(c.runs, trace.runs, runPen(c.colour));
    QPen beyond = runPen(kBeyondColour);
    beyond.setWidthF(2.5);
    fill(c.beyond, trace.beyond, beyond);
    const auto level = [this](const std::optional<double> &limit) {
        return limit ? Polyline { { m_fromS, *limit }, { m_toS, *limit } } : Polyline {};
    };
    c.under->replace(level(trace.under));
    c.over->replace(level(trace.over));

    // Each channel's strip sits above the one before, so overlapping errors stay apart.
    const double height = (yMax() - yMin()) * kStripShare;
    const double bottom = yMin() + (n - 1) * height;
    const double top = bottom + height * 0.8;
    Polyline upper;
    Polyline lower;
    for (const auto &[from, to] : trace.errors)
        upper << QPointF(from, bottom) << QPointF(from, top) << QPointF(to, top)
              << QPointF(to, bottom);
    if (!upper.isEmpty())
        lower << upper.front() << upper.back();
    c.errors->upperSeries()->replace(upper);
    c.errors->lowerSeries()->replace(lower);
}

void TrendChart::setChannelVisible(int n, bool visible)
{
    Channel &c = channel(n);
    c.visible = visible;
    c.runs.front()->setVisible(visible);
    if (!visible)
        clearTrace(c);
    styleMarker(n);
}

QLineSeries *TrendChart::addLine(const QPen &pen)
{
    auto *series = new QLineSeries;
    series->setPen(pen);
    addSeries(series);
    series->attachAxis(m_x);
    series->attachAxis(m_y);
    hideMarkers(legend(), series);
    return series;
}

void TrendChart::fill(std::vector<QLineSeries *> &pool, std::vector<Polyline> runs, const QPen &pen)
{
    if (runs.size() > kMaxRuns) {
        Polyline &last = runs[kMaxRuns - 1];
        for (std::size_t i = kMaxRuns; i < runs.size(); ++i)
            last += runs[i];
        runs.resize(kMaxRuns);
    }
    while (pool.size() < runs.size())
        pool.push_back(addLine(pen));
    for (std::size_t i = 0; i < pool.size(); ++i)
        pool[i]->replace(i < runs.size() ? runs[i] : Polyline {});
}

void TrendChart::clearTrace(Channel &c)
{
    for (QLineSeries *s : c.runs)
        s->clear();
    for (QLineSeries *s : c.beyond)
        s->clear();
    c.under->clear();
    c.over->clear();
    c.errors->upperSeries()->clear();
    c.errors->lowerSeries()->clear();
}

void TrendChart::styleMarker(int n)
{
    const Channel &c = channel(n);
    QColor colour = c.colour;
    QColor label = legend()->labelColor();
    // A hidden channel keeps its marker, faded, so a click brings it back.
    if (!c.visible) {
        colour.setAlphaF(0.25);
        label.setAlphaF(0.4);
    }
    for (QLegendMarker *marker : legend()->markers(c.runs.front())) {
        marker->setVisible(true);
        marker->setBrush(colour);
        marker->setPen(QPen(colour));
        marker->setLabelBrush(label);
    }
}

} // namespace corvalog
