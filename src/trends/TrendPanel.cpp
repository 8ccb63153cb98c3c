#include "TrendPanel.h"

#include "TrendChart.h"
#include "TrendChartView.h"
#include "TrendCsv.h"
#include "TrendExport.h"

#include <QLabel>
#include <QPushButton>
#include <cmath>

namespace corvalog {

namespace {

// The columns a redraw uses before the chart has been laid out.
constexpr int kUnlaidPixels = 600;

const char *const kCursorHint = "Move the pointer over the plot to read the values.";

QPushButton *button(QWidget &window, const QString &text, const char *name)
{
    auto *b = new QPushButton(text, &window);
    b->setObjectName(QString::fromLatin1(name));
    return b;
}

} // namespace

TrendPanel::TrendPanel(QWidget &window, const QString &exportName, Hooks hooks)
    : QObject(&window)
    , m_hooks(std::move(hooks))
    , m_chart(new TrendChart)
{
    m_view = new TrendChartView(m_chart, &window);
    m_view->setObjectName(QStringLiteral("chartView"));
    m_cursor = new QLabel(QString::fromLatin1(kCursorHint), &window);
    m_cursor->setObjectName(QStringLiteral("lblCursor"));
    m_cursor->setWordWrap(true);
    m_cursor->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_resetZoom = button(window, QStringLiteral("Reset &zoom"), "btnResetZoom");
    m_resetZoom->setEnabled(false);
    m_exportPng = button(window, QStringLiteral("Export PNG…"), "btnExportPng");
    m_exportCsv = button(window, QStringLiteral("Export CSV…"), "btnExportCsv");

    QObject::connect(m_resetZoom, &QPushButton::clicked, this, [this] { m_hooks.resetZoom(); });
    QObject::connect(m_exportPng, &QPushButton::clicked, this, [this, &window, exportName] {
        exportAsked(&window, QStringLiteral("Export PNG"), exportName + QStringLiteral(".png"),
            QStringLiteral("PNG images (*.png)"),
            [this](const QString &path) { return exportPng(path); });
    });
    QObject::connect(m_exportCsv, &QPushButton::clicked, this, [this, &window, exportName] {
        exportAsked(&window, QStringLiteral("Export CSV"), exportName + QStringLiteral(".csv"),
            QStringLiteral("CSV files (*.csv)"), m_hooks.writeCsv);
    });
    m_chart->onUserRange = [this](double fromS, double toS) { zoomTo(fromS * 1000, toS * 1000); };
    m_chart->onLegendClicked = [this](int n) {
        m_chart->setChannelVisible(n, !m_chart->channelVisible(n));
        m_hooks.redraw();
    };
    m_view->onHover = [this](std::optional<double> seconds) {
        m_cursor->setText(
            seconds ? m_hooks.readout(*seconds * 1000) : QString::fromLatin1(kCursorHint));
    };
    // A resize changes the plot's width, and so the columns.
    QObject::connect(m_chart, &QChart::plotAreaChanged, this, [this] { m_soon.start(); });
    m_soon.setSingleShot(true);
    m_soon.setInterval(0);
    QObject::connect(&m_soon, &QTimer::timeout, this, [this] { m_hooks.redraw(); });
}

TrendPanel::~TrendPanel()
{
    // The chart outlives this part of the window: nothing it signals may reach back here.
    QObject::disconnect(m_chart, nullptr, this, nullptr);
    m_chart->onUserRange = nullptr;
    m_chart->onLegendClicked = nullptr;
    m_view->onHover = nullptr;
}

int TrendPanel::plotPixels() const
{
    const auto width = static_cast<int>(std::lround(m_chart->plotArea().width()));
    return width > 1 ? width : kUnlaidPixels;
}

void TrendPanel::zoomTo(double fromMs, double toMs)
{
    widenZoom(fromMs, toMs);
    m_zoomed = true;
    m_fromMs = fromMs;
    m_toMs = toMs;
    m_resetZoom->setEnabled(true);
    // The chart may be in the middle of its own zoom: redraw once it is done.
    m_soon.start();
}

void TrendPanel::show(double fromMs, double toMs)
{
    m_zoomed = false;
    m_fromMs = fromMs;
    m_toMs = toMs;
    m_resetZoom->setEnabled(false);
}

bool TrendPanel::exportPng(const QString &path) const
{
    return m_view->grab().save(path, "PNG");
}

bool TrendPanel::exportCsv(const QString &path, const TrendHistory &history,
    const std::vector<std::string> &captions) const
{
    return saveText(path, trendCsv(history, captions, m_fromMs, m_toMs, plotPixels()));
}

} // namespace corvalog
