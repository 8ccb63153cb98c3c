#include "TrendsWindow.h"

#include "TrendChart.h"
#include "TrendChartView.h"
#include "TrendCsv.h"
#include "runtime/Format.h"
#include "runtime/TimerPeriods.h"

#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSaveFile>
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

// The columns a redraw uses before the chart has been laid out.
constexpr int kUnlaidPixels = 600;

// Zooming further shows single samples stretched, nothing more.
constexpr double kNarrowestZoomMs = 50.0;

const char *const kCursorHint = "Move the pointer over the plot to read the values.";

QString q(const std::string &text)
{
    return QString::fromStdString(text);
}

// The time of day of a script date, hh:mm:ss.
QString timeOfDay(double date)
{
    const auto seconds
        = static_cast<long long>(std::llround((date - std::floor(date)) * 86400.0)) % 86400;
    return QString::asprintf(
        "%02lld:%02lld:%02lld", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

} // namespace

TrendsWindow::TrendsWindow(const TrendHistory &history, const WorkspaceClass &workspace,
    const Clock &clock, QWidget *parent)
    : QWidget(parent, Qt::Window)
    , m_history(history)
    , m_workspace(workspace)
    , m_clock(clock)
    , m_chart(new TrendChart)
{
    setObjectName(QStringLiteral("TrendsWindow"));
    setWindowTitle(QStringLiteral("Corvalog Trends"));
    // An open trends window does not keep the program running once the main window closes.
    setAttribute(Qt::WA_QuitOnClose, false);

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
    m_resetZoom = new QPushButton(QStringLiteral("Reset &zoom"), this);
    m_resetZoom->setObjectName(QStringLiteral("btnResetZoom"));
    m_resetZoom->setEnabled(false);
    auto *exportPngButton = new QPushButton(QStringLiteral("Export PNG…"), this);
    exportPngButton->setObjectName(QStringLiteral("btnExportPng"));
    auto *exportCsvButton = new QPushButton(QStringLiteral("Export CSV…"), this);
    exportCsvButton->setObjectName(QStringLiteral("btnExportCsv"));

    m_view = new TrendChartView(m_chart, this);
    m_view->setObjectName(QStringLiteral("chartView"));
    m_cursor = new QLabel(QString::fromLatin1(kCursorHint), this);
    m_cursor->setObjectName(QStringLiteral("lblCursor"));
    m_cursor->setWordWrap(true);
    m_cursor->setTextInteractionFlags(Qt::TextSelectableByMouse);

    auto *controls = new QHBoxLayout;
    controls->addWidget(spanLabel);
    controls->addWidget(m_spanBox);
    controls->addWidget(m_pause);
    controls->addWidget(m_resetZoom);
    controls->addStretch();
    controls->addWidget(exportPngButton);
    controls->addWidget(exportCsvButton);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(controls);
    layout->addWidget(m_view, 1);
    layout->addWidget(m_cursor);
    resize(900, 560);

    QObject::connect(m_spanBox, &QComboBox::activated, this,
        [this](int index) { setSpan(static_cast<Span>(index)); });
    QObject::connect(m_pause, &QPushButton::clicked, this, [this] { setPaused(!m_paused); });
    QObject::connect(m_resetZoom, &QPushButton::clicked, this, [this] { resetZoom(); });
    QObject::connect(exportPngButton, &QPushButton::clicked, this, [this] {
        exportTo(QStringLiteral("Export PNG"), QStringLiteral("trends.png"),
            QStringLiteral("PNG images (*.png)"), true);
    });
    QObject::connect(exportCsvButton, &QPushButton::clicked, this, [this] {
        exportTo(QStringLiteral("Export CSV"), QStringLiteral("trends.csv"),
            QStringLiteral("CSV files (*.csv)"), false);
    });
    m_chart->onUserRange = [this](double fromS, double toS) { zoomTo(fromS * 1000, toS * 1000); };
    m_chart->onLegendClicked = [this](int n) { setChannelVisible(n, !channelVisible(n)); };
    m_view->onHover = [this](std::optional<double> seconds) {
        m_cursor->setText(
            seconds ? cursorTextAt(*seconds * 1000) : QString::fromLatin1(kCursorHint));
    };
    // A resize changes the plot's width, and so the columns.
    QObject::connect(m_chart, &QChart::plotAreaChanged, this, [this] { m_soon.start(); });

    m_tick.setInterval(kScreenIntervalMs);
    QObject::connect(&m_tick, &QTimer::timeout, this, [this] { redraw(); });
    m_soon.setSingleShot(true);
    m_soon.setInterval(0);
    QObject::connect(&m_soon, &QTimer::timeout, this, [this] { redraw(); });
    redraw();
}

TrendsWindow::~TrendsWindow()
{
    // The chart outlives this part of the window: nothing it signals may reach back here.
    QObject::disconnect(m_chart, nullptr, this, nullptr);
    m_chart->onUserRange = nullptr;
    m_chart->onLegendClicked = nullptr;
    m_view->onHover = nullptr;
}

void TrendsWindow::setSpan(Span span)
{
    m_span = span;
    const QSignalBlocker quiet(m_spanBox);
    m_spanBox->setCurrentIndex(static_cast<int>(span));
    m_zoomed = false;
    redraw();
}

void TrendsWindow::setPaused(bool paused)
{
    if (paused == m_paused)
        return;
    if (paused) {
        // Hold what is shown; a zoom's end is no present to return to.
        m_heldAtMs = m_zoomed ? nowMs() : m_toMs;
    } else {
        m_zoomed = false;
    }
    m_paused = paused;
    setPauseText();
    updateTimer();
    redraw();
}

void TrendsWindow::zoomTo(double fromMs, double toMs)
{
    if (!(toMs - fromMs >= kNarrowestZoomMs)) {
        const double middle = (fromMs + toMs) / 2.0;
        fromMs = middle - kNarrowestZoomMs / 2.0;
        toMs = middle + kNarrowestZoomMs / 2.0;
    }
    m_zoomed = true;
    m_fromMs = fromMs;
    m_toMs = toMs;
    m_resetZoom->setEnabled(true);
    // The chart may be in the middle of its own zoom: redraw once it is done.
    m_soon.start();
}

void TrendsWindow::resetZoom()
{
    m_zoomed = false;
    redraw();
}

void TrendsWindow::redraw()
{
    m_soon.stop();
    if (m_generation != m_history.generation() || m_chart->channels() != m_history.channels())
        rebuild();
    followPresent();
    m_resetZoom->setEnabled(m_zoomed);

    const int pixels = plotPixels();
    const int count = channels();
    std::vector<std::vector<PixelColumn>> columns(static_cast<std::size_t>(count));
    double low = std::numeric_limits<double>::infinity();
    double high = -low;
    for (int n = 1; n <= count; ++n) {
        m_chart->setCaption(n, caption(n));
        auto &channel = columns[static_cast<std::size_t>(n - 1)];
        if (!m_chart->channelVisible(n))
            continue;
        channel = decimate(m_history.channel(n), m_fromMs, m_toMs, pixels);
        for (const PixelColumn &c : channel) {
            if (!c.empty && std::isfinite(c.min) && std::isfinite(c.max)) {
                low = std::min<double>(low, c.min);
                high = std::max<double>(high, c.max);
            }
        }
    }
    if (!(low <= high)) {
        low = 0;
        high = 1;
    }
    double margin = (high - low) * 0.05;
    if (!(margin > 0))
        margin = std::max(std::fabs(high) * 0.05, 0.5);
    m_chart->setRange(m_fromMs / 1000.0, m_toMs / 1000.0, low - margin, high + margin);

    for (int n = 1; n <= count; ++n) {
        const auto &channel = columns[static_cast<std::size_t>(n - 1)];
        ChannelTrace trace;
        trace.runs = traceLines(channel, m_fromMs, m_toMs);
        if (const ItemClass *limits = item(n)) {
            trace.under = limitOf(limits->Underload);
            trace.over = limitOf(limits->Overload);
        }
        trace.beyond = partsBeyond(trace.runs, trace.under, trace.over);
        trace.errors = errorSpans(channel, m_fromMs, m_toMs);
        m_chart->setTrace(n, trace);
    }
}

int TrendsWindow::plotPixels() const
{
    const auto width = static_cast<int>(std::lround(m_chart->plotArea().width()));
    return width > 1 ? width : kUnlaidPixels;
}

int TrendsWindow::channels() const
{
    return m_chart->channels();
}

QLineSeries *TrendsWindow::seriesFor(int channel) const
{
    return m_chart->seriesFor(channel);
}

bool TrendsWindow::channelVisible(int channel) const
{
    return m_chart->channelVisible(channel);
}

void TrendsWindow::setChannelVisible(int channel, bool visible)
{
    m_chart->setChannelVisible(channel, visible);
    redraw();
}

QString TrendsWindow::cursorTextAt(double timeMs) const
{
    QString text = QStringLiteral("%1 s (%2)")
                       .arg(timeMs / 1000.0, 0, 'f', 1)
                       .arg(timeOfDay(m_history.beganAt() + timeMs / 86400000.0));
    for (int n = 1; n <= std::min(channels(), m_history.channels()); ++n) {
        if (!channelVisible(n))
            continue;
        QString value = QStringLiteral("no data");
        if (const auto sample = nearestSample(m_history.channel(n), timeMs)) {
            const std::string format = item(n) ? item(n)->Format : std::string();
            const auto formatted = [&](float v) { return q(Format(Variant::single(v), format)); };
            if (sample->error())
                value = QStringLiteral("error");
            else if (sample->min == sample->max)
                value = formatted(sample->min);
            else
                value = formatted(sample->min) + QStringLiteral(" to ") + formatted(sample->max);
        }
        text += QStringLiteral("   %1: %2").arg(caption(n), value);
    }
    return text;
}

bool TrendsWindow::exportPng(const QString &path)
{
    return m_view->grab().save(path, "PNG");
}

bool TrendsWindow::exportCsv(const QString &path) const
{
    const std::string text = trendCsv(m_history, captions(), m_fromMs, m_toMs, plotPixels());
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(text.data(), static_cast<qint64>(text.size()));
    return file.commit();
}

void TrendsWindow::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    updateTimer();
    m_soon.start();
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
    m_chart->setChannels(names);
    // The held or zoomed times belonged to the history that ended.
    m_zoomed = false;
    if (m_paused) {
        m_paused = false;
        setPauseText();
        updateTimer();
    }
}

void TrendsWindow::followPresent()
{
    if (m_zoomed)
        return;
    const double end = m_paused ? m_heldAtMs : nowMs();
    const double span = kSpanMs[static_cast<int>(m_span)];
    if (span == 0) {
        m_fromMs = 0;
        m_toMs = std::max(end, 1000.0);
        return;
    }
    // A history younger than the span fills it from the left, then scrolls.
    m_toMs = std::max(end, span);
    m_fromMs = m_toMs - span;
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

void TrendsWindow::exportTo(
    const QString &title, const QString &name, const QString &filter, bool png)
{
    const QString path = QFileDialog::getSaveFileName(this, title, name, filter);
    if (path.isEmpty())
        return;
    if (!(png ? exportPng(path) : exportCsv(path)))
        QMessageBox::warning(
            this, title, QStringLiteral("Could not write %1.").arg(QDir::toNativeSeparators(path)));
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

std::vector<std::string> TrendsWindow::captions() const
{
    std::vector<std::string> all;
    for (int n = 1; n <= channels(); ++n)
        all.push_back(caption(n).toStdString());
    return all;
}

} // namespace corvalog
