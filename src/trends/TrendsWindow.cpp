#include "TrendsWindow.h"

#include "TrendChart.h"
#include "TrendChartView.h"
#include "TrendDrawing.h"
#include "TrendPanel.h"
#include "TrendTrace.h"
#include "runtime/TimerPeriods.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <QtCharts/QLineSeries>
#include <algorithm>
#include <cmath>
#include <limits>

namespace corvalog {

namespace {

// The spans in the order of Span; 0 is everything since activation.
constexpr double kSpanMs[] = { 60000.0, 600000.0, 3600000.0, 0.0 };

QString q(const std::string &text)
{
    return QString::fromStdString(text);
}

} // namespace

TrendsWindow::TrendsWindow(const TrendHistory &history, const WorkspaceClass &workspace,
    const Clock &clock, QWidget *parent)
    : QWidget(parent, Qt::Window)
    , m_history(history)
    , m_workspace(workspace)
    , m_clock(clock)
{
    setObjectName(QStringLiteral("TrendsWindow"));
    setWindowTitle(QStringLiteral("Corvalog Trends"));
    // An open trends window does not keep the program running once the main window closes.
    setAttribute(Qt::WA_QuitOnClose, false);
    m_panel = new TrendPanel(*this, QStringLiteral("trends"),
        { [this] { redraw(); }, [this](double ms) { return cursorTextAt(ms); },
            [this] { resetZoom(); }, [this](const QString &path) { return exportCsv(path); } });
    m_panel->show(0, kSpanMs[static_cast<int>(m_span)]);

    auto *spanLabel = new QLabel(QStringLiteral("&Span"), this);
    m_spanBox = new QComboBox(this);
    m_spanBox->setObjectName(QStringLiteral("cbSpan"));
    m_spanBox->addItems({ QStringLiteral("1 min"), QStringLiteral("10 min"), QStringLiteral("1 h"),
        QStringLiteral("All since activation") });
    m_spanBox->setCurrentIndex(static_cast<int>(m_span));
    spanLabel->setBuddy(m_spanBox);
    m_pause = new QPushButton(this);
    m_pause->setObjectName(QStringLiteral("btnPause"));
    setPauseText();

    auto *controls = new QHBoxLayout;
    controls->addWidget(spanLabel);
    controls->addWidget(m_spanBox);
    controls->addWidget(m_pause);
    controls->addWidget(m_panel->resetZoomButton());
    controls->addStretch();
    controls->addWidget(m_panel->exportPngButton());
    controls->addWidget(m_panel->exportCsvButton());
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(controls);
    layout->addWidget(m_panel->view(), 1);
    layout->addWidget(m_panel->cursor());
    resize(980, 640);

    QObject::connect(m_spanBox, &QComboBox::activated, this,
        [this](int index) { setSpan(static_cast<Span>(index)); });
    QObject::connect(m_pause, &QPushButton::clicked, this, [this] { setPaused(!m_paused); });
    m_tick.setInterval(kScreenIntervalMs);
    QObject::connect(&m_tick, &QTimer::timeout, this, [this] { redraw(); });
    redraw();
}

TrendsWindow::~TrendsWindow() = default;

void TrendsWindow::setSpan(Span span)
{
    m_span = span;
    const QSignalBlocker quiet(m_spanBox);
    m_spanBox->setCurrentIndex(static_cast<int>(span));
    m_panel->show(shownFromMs(), shownToMs());
    redraw();
}

void TrendsWindow::setPaused(bool paused)
{
    if (paused == m_paused)
        return;
    if (paused) {
        // Hold what is shown; a zoom's end is no present to return to.
        m_heldAtMs = zoomed() ? nowMs() : shownToMs();
    } else {
        m_panel->show(shownFromMs(), shownToMs());
    }
    m_paused = paused;
    setPauseText();
    updateTimer();
    redraw();
}

void TrendsWindow::zoomTo(double fromMs, double toMs)
{
    m_panel->zoomTo(fromMs, toMs);
}

void TrendsWindow::resetZoom()
{
    m_panel->show(shownFromMs(), shownToMs());
    redraw();
}

bool TrendsWindow::zoomed() const
{
    return m_panel->zoomed();
}

double TrendsWindow::shownFromMs() const
{
    return m_panel->fromMs();
}

double TrendsWindow::shownToMs() const
{
    return m_panel->toMs();
}

TrendChart &TrendsWindow::chart() const
{
    return m_panel->chart();
}

void TrendsWindow::redraw()
{
    m_panel->redrawn();
    if (m_generation != m_history.generation() || chart().channels() != m_history.channels())
        rebuild();
    followPresent();

    const std::vector<ChannelLook> all = looks();
    for (int n = 1; n <= channels(); ++n)
        chart().setCaption(n, all[static_cast<std::size_t>(n - 1)].caption);
    drawSpan(chart(), m_history, all, shownFromMs(), shownToMs(), plotPixels());
}

int TrendsWindow::plotPixels() const
{
    return m_panel->plotPixels();
}

int TrendsWindow::channels() const
{
    return chart().channels();
}

QLineSeries *TrendsWindow::seriesFor(int channel) const
{
    return chart().seriesFor(channel);
}

bool TrendsWindow::channelVisible(int channel) const
{
    return chart().channelVisible(channel);
}

void TrendsWindow::setChannelVisible(int channel, bool visible)
{
    chart().setChannelVisible(channel, visible);
    redraw();
}

QString TrendsWindow::cursorTextAt(double timeMs) const
{
    const double began = m_history.beganAt();
    return readingsAt(
        chart(), m_history, looks(), timeMs, (began - std::floor(began)) * 86400000.0);
}

bool TrendsWindow::exportPng(const QString &path)
{
    return m_panel->exportPng(path);
}

bool TrendsWindow::exportCsv(const QString &path) const
{
    return m_panel->exportCsv(path, m_history, captions());
}

void TrendsWindow::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    updateTimer();
    m_panel->redrawSoon();
}

void TrendsWindow::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    updateTimer();
}

void TrendsWindow::rebuild()
{
    m_generation = m_history.generation();
    std::vector<QString> names;
    for (int n = 1; n <= m_history.channels(); ++n)
        names.push_back(caption(n));
    chart().setChannels(names);
    // The held or zoomed times belonged to the history that ended.
    m_panel->show(shownFromMs(), shownToMs());
    if (m_paused) {
        m_paused = false;
        setPauseText();
        updateTimer();
    }
}

void TrendsWindow::followPresent()
{
    if (zoomed())
        return;
    const double end = m_paused ? m_heldAtMs : nowMs();
    const double span = kSpanMs[static_cast<int>(m_span)];
    if (span == 0) {
        m_panel->show(0, std::max(end, 1000.0));
        return;
    }
    // A history younger than the span fills it from the left, then scrolls.
    const double to = std::max(end, span);
    m_panel->show(to - span, to);
}

void TrendsWindow::updateTimer()
{
    if (isVisible() && !m_paused)
        m_tick.start();
    else
        m_tick.stop();
}

void TrendsWindow::setPauseText()
{
    m_pause->setText(m_paused ? QStringLiteral("Resume") : QStringLiteral("Pause"));
}

double TrendsWindow::nowMs() const
{
    return m_history.msSinceBegan(m_clock.now());
}

const ItemClass *TrendsWindow::item(int n) const
{
    if (n < 1 || n > static_cast<int>(m_workspace.Items.size()))
        return nullptr;
    return &m_workspace.Items[static_cast<std::size_t>(n - 1)];
}

QString TrendsWindow::caption(int n) const
{
    const ItemClass *channel = item(n);
    if (!channel || channel->Caption.empty())
        return QStringLiteral("Channel %1").arg(n);
    return q(channel->Caption);
}

std::vector<ChannelLook> TrendsWindow::looks() const
{
    std::vector<ChannelLook> all;
    for (int n = 1; n <= channels(); ++n) {
        ChannelLook look;
        look.caption = caption(n);
        if (const ItemClass *channel = item(n)) {
            look.under = limitOf(channel->Underload);
            look.over = limitOf(channel->Overload);
            look.format = channel->Format;
        }
        all.push_back(std::move(look));
    }
    return all;
}

std::vector<std::string> TrendsWindow::captions() const
{
    std::vector<std::string> all;
    for (int n = 1; n <= channels(); ++n)
        all.push_back(caption(n).toStdString());
    return all;
}

} // namespace corvalog
