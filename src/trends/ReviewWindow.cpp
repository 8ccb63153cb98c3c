#include "ReviewWindow.h"

#include "TrendChart.h"
#include "TrendChartView.h"
#include "TrendDrawing.h"
#include "TrendExport.h"
#include "TrendPanel.h"

#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSplitter>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include <limits>

namespace corvalog {

namespace {

QString q(const std::string &text)
{
    return QString::fromStdString(text);
}

bool leaving(const std::string &kind)
{
    return kind != "in range" && kind != "recovered";
}

QString summaryOf(const ReviewData &data)
{
    QString text = data.recording
        ? QStringLiteral("%1 packets from %2 Data Tags").arg(data.rows).arg(data.captions.size())
        : QStringLiteral("%1 rows of %2 channels, %3 events")
              .arg(data.rows)
              .arg(data.captions.size())
              .arg(data.events.size());
    if (!data.started.empty())
        text += QStringLiteral(", started %1").arg(q(data.started));
    if (!data.warnings.empty()) {
        text += QStringLiteral(". Lines skipped: ");
        QStringList lines;
        for (const std::string &warning : data.warnings)
            lines << q(warning);
        text += lines.join(QStringLiteral("; "));
    }
    return text;
}

} // namespace

ReviewWindow::ReviewWindow(ReviewData data, QWidget *parent)
    : QWidget(parent, Qt::Window)
    , m_data(std::move(data))
{
    setObjectName(QStringLiteral("ReviewWindow"));
    setAttribute(Qt::WA_QuitOnClose, false);
    setWindowTitle(
        QStringLiteral("Corvalog Review — %1").arg(QFileInfo(q(m_data.path)).fileName()));
    setWindowFilePath(q(m_data.path));

    for (std::size_t i = 0; i < m_data.captions.size(); ++i) {
        ChannelLook look;
        look.caption = q(m_data.captions[i]);
        if (i < m_data.underload.size() && m_data.underload[i])
            look.under = *m_data.underload[i];
        if (i < m_data.overload.size() && m_data.overload[i])
            look.over = *m_data.overload[i];
        m_looks.push_back(std::move(look));
    }
    m_panel = new TrendPanel(*this, QStringLiteral("review"),
        { [this] { redraw(); }, [this](double ms) { return cursorTextAt(ms); },
            [this] { resetZoom(); }, [this](const QString &path) { return exportCsv(path); } });
    std::vector<QString> captions;
    for (const ChannelLook &look : m_looks)
        captions.push_back(look.caption);
    chart().setChannels(captions);
    chart().setTimeTitle(m_data.recording ? QStringLiteral("Seconds of the recording")
                                          : QStringLiteral("Seconds since logging started"));
    std::vector<TimeMark> marks;
    for (const ReviewEvent &event : m_data.events)
        marks.push_back({ event.timeMs / 1000.0, leaving(event.kind) });
    chart().setMarks(std::move(marks));

    // The whole file: from the earliest sample of any channel to the latest.
    double first = std::numeric_limits<double>::infinity();
    double last = -first;
    for (int n = 1; n <= m_data.history.channels(); ++n) {
        const ChannelHistory &channel = m_data.history.channel(n);
        if (channel.size() == 0)
            continue;
        first = std::min(first, channel.at(0).timeMs);
        last = std::max(last, channel.at(channel.size() - 1).timeMs);
    }
    if (first <= last) {
        m_firstMs = first;
        // A last sample still inside the shown range, and never an empty range.
        m_lastMs = std::max(last + 1.0, first + 1000.0);
    }
    m_panel->show(m_firstMs, m_lastMs);

    auto *summary = new QLabel(summaryOf(m_data), this);
    summary->setObjectName(QStringLiteral("lblSummary"));
    summary->setWordWrap(true);
    summary->setTextInteractionFlags(Qt::TextSelectableByMouse);

    m_events = new QTreeWidget(this);
    m_events->setObjectName(QStringLiteral("twEvents"));
    m_events->setRootIsDecorated(false);
    m_events->setUniformRowHeights(true);
    m_events->setHeaderLabels({ QStringLiteral("Time s"), QStringLiteral("Channel"),
        QStringLiteral("Event"), QStringLiteral("Value"), QStringLiteral("Limit") });
    fillEvents();
    // A recording has no events: its list would only take room from the chart.
    m_events->setVisible(!m_data.recording);
    auto *split = new QSplitter(this);
    split->addWidget(m_panel->view());
    split->addWidget(m_events);
    split->setStretchFactor(0, 1);
    split->setStretchFactor(1, 0);
    split->setSizes({ 840, 320 });

    auto *controls = new QHBoxLayout;
    controls->addWidget(summary, 1);
    controls->addWidget(m_panel->resetZoomButton());
    controls->addWidget(m_panel->exportPngButton());
    controls->addWidget(m_panel->exportCsvButton());
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(controls);
    layout->addWidget(split, 1);
    layout->addWidget(m_panel->cursor());
    resize(1180, 660);

    QObject::connect(m_events, &QTreeWidget::itemActivated, this,
        [this](QTreeWidgetItem *item) { goToEvent(m_events->indexOfTopLevelItem(item)); });
    QObject::connect(m_events, &QTreeWidget::itemClicked, this,
        [this](QTreeWidgetItem *item) { goToEvent(m_events->indexOfTopLevelItem(item)); });
    redraw();
}

ReviewWindow::~ReviewWindow() = default;

TrendChart &ReviewWindow::chart() const
{
    return m_panel->chart();
}

void ReviewWindow::zoomTo(double fromMs, double toMs)
{
    m_panel->zoomTo(fromMs, toMs);
}

void ReviewWindow::resetZoom()
{
    m_panel->show(m_firstMs, m_lastMs);
    redraw();
}

bool ReviewWindow::zoomed() const
{
    return m_panel->zoomed();
}

double ReviewWindow::shownFromMs() const
{
    return m_panel->fromMs();
}

double ReviewWindow::shownToMs() const
{
    return m_panel->toMs();
}

void ReviewWindow::goToEvent(int i)
{
    if (i < 0 || i >= static_cast<int>(m_data.events.size()))
        return;
    const double at = m_data.events[static_cast<std::size_t>(i)].timeMs;
    const double half = std::max((m_lastMs - m_firstMs) / 20.0, kNarrowestZoomMs);
    zoomTo(at - half, at + half);
    redraw();
}

void ReviewWindow::redraw()
{
    m_panel->redrawn();
    drawSpan(chart(), m_data.history, m_looks, shownFromMs(), shownToMs(), plotPixels());
}

int ReviewWindow::plotPixels() const
{
    return m_panel->plotPixels();
}

QString ReviewWindow::cursorTextAt(double timeMs) const
{
    return readingsAt(chart(), m_data.history, m_looks, timeMs, m_data.clockAtStartMs);
}

bool ReviewWindow::exportPng(const QString &path)
{
    return m_panel->exportPng(path);
}

bool ReviewWindow::exportCsv(const QString &path) const
{
    return m_panel->exportCsv(path, m_data.history, m_data.captions);
}

void ReviewWindow::fillEvents()
{
    QList<QTreeWidgetItem *> items;
    for (const ReviewEvent &event : m_data.events) {
        auto *item = new QTreeWidgetItem({ QString::number(event.timeMs / 1000.0, 'f', 3),
            q(event.caption.empty() ? "Channel " + std::to_string(event.channel) : event.caption),
            q(event.kind), q(event.value), q(event.limit) });
        item->setTextAlignment(0, Qt::AlignRight | Qt::AlignVCenter);
        item->setForeground(2, leaving(event.kind) ? QColor(200, 0, 0) : QColor(0, 130, 0));
        items << item;
    }
    m_events->addTopLevelItems(items);
    for (int c = 0; c < m_events->columnCount(); ++c)
        m_events->resizeColumnToContents(c);
}

} // namespace corvalog
