#pragma once

#include "logging/LogReview.h"

#include <QWidget>
#include <vector>

class QTreeWidget;

namespace corvalog {

struct ChannelLook;
class TrendChart;
class TrendPanel;

// "Corvalog Review — NAME.csv": a log (or a packet recording) read back into the trends chart.
// It opens on the whole file; a drag or the wheel zooms, Reset zoom shows everything again. Its
// limit events are marked on the time axis and listed beside the chart (a click on one centres
// the view on it); the pointer over the plot reads every shown channel at that time.
class ReviewWindow final : public QWidget
{
public:
    explicit ReviewWindow(ReviewData data, QWidget *parent = nullptr);
    ~ReviewWindow() override;

    const ReviewData &data() const { return m_data; }
    TrendChart &chart() const;
    QTreeWidget &eventList() const { return *m_events; }

    void zoomTo(double fromMs, double toMs);
    void resetZoom();
    bool zoomed() const;
    // Centres the view on event i of the list, at a tenth of the whole log's time.
    void goToEvent(int i);
    double shownFromMs() const;
    double shownToMs() const;
    // The whole file's time range.
    double firstMs() const { return m_firstMs; }
    double lastMs() const { return m_lastMs; }

    // Draws the shown span now.
    void redraw();
    int plotPixels() const;
    QString cursorTextAt(double timeMs) const;

    bool exportPng(const QString &path);
    bool exportCsv(const QString &path) const;

private:
    void fillEvents();

    ReviewData m_data;
    std::vector<ChannelLook> m_looks;
    TrendPanel *m_panel = nullptr;
    QTreeWidget *m_events = nullptr;
    double m_firstMs = 0;
    double m_lastMs = 1000;
};

} // namespace corvalog
