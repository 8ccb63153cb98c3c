#pragma once

#include <QObject>
#include <QString>
#include <QTimer>
#include <functional>
#include <string>
#include <vector>

class QLabel;
class QPushButton;
class QWidget;

namespace corvalog {

class TrendChart;
class TrendChartView;
class TrendHistory;

// What the trends and the review windows share: the chart and its view, the line that reads
// the values under the pointer, the Reset zoom and export buttons, and the shown span, which a
// drag or the wheel zooms. The window lays the widgets out and says how to redraw, what the
// cursor reads, and what Reset zoom returns to.
class TrendPanel final : public QObject
{
public:
    struct Hooks {
        std::function<void()> redraw;
        std::function<QString(double timeMs)> readout;
        std::function<void()> resetZoom;
        std::function<bool(const QString &path)> writeCsv; // the shown span
    };

    // The widgets are the window's children; exports suggest `exportName`.png and .csv.
    TrendPanel(QWidget &window, const QString &exportName, Hooks hooks);
    ~TrendPanel() override;

    TrendChart &chart() const { return *m_chart; }
    TrendChartView *view() const { return m_view; }
    QLabel *cursor() const { return m_cursor; }
    QPushButton *resetZoomButton() const { return m_resetZoom; }
    QPushButton *exportPngButton() const { return m_exportPng; }
    QPushButton *exportCsvButton() const { return m_exportCsv; }

    // The width of the plot in pixels: the columns a redraw folds each channel into.
    int plotPixels() const;
    // Shows [fromMs, toMs) as a zoom or a pan does, redrawn once the chart has settled.
    void zoomTo(double fromMs, double toMs);
    // Shows a span that is not a zoom (Reset zoom is off).
    void show(double fromMs, double toMs);
    bool zoomed() const { return m_zoomed; }
    double fromMs() const { return m_fromMs; }
    double toMs() const { return m_toMs; }
    // One redraw once the events now waiting have run (resizes, zooms); a redraw cancels it.
    void redrawSoon() { m_soon.start(); }
    void redrawn() { m_soon.stop(); }

    bool exportPng(const QString &path) const;
    bool exportCsv(const QString &path, const TrendHistory &history,
        const std::vector<std::string> &captions) const;

private:
    Hooks m_hooks;
    TrendChart *m_chart = nullptr;
    TrendChartView *m_view = nullptr;
    QLabel *m_cursor = nullptr;
    QPushButton *m_resetZoom = nullptr;
    QPushButton *m_exportPng = nullptr;
    QPushButton *m_exportCsv = nullptr;
    QTimer m_soon;
    bool m_zoomed = false;
    double m_fromMs = 0;
    double m_toMs = 1000;
};

} // namespace corvalog
