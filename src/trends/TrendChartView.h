#pragma once

#include <QtCharts/QChartView>
#include <functional>
#include <optional>

QT_BEGIN_NAMESPACE
class QGraphicsLineItem;
QT_END_NAMESPACE

namespace corvalog {

// The view of the trends chart and its mouse: a drag with the left button zooms the time axis to
// the dragged band, the wheel zooms it about the pointer, a drag with the right or middle button
// pans it; over the plot a vertical line follows the pointer.
class TrendChartView final : public QChartView
{
public:
    explicit TrendChartView(QChart *chart, QWidget *parent = nullptr);

    // The time under the pointer (seconds on the chart's x axis), or none once it leaves the plot.
    std::function<void(std::optional<double> seconds)> onHover;

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void leaveEvent(QEvent *event) override;

private:
    void hover(const QPointF &position);

    QGraphicsLineItem *m_cursor = nullptr;
    std::optional<double> m_panFrom; // the x where a pan's last step ended
};

} // namespace corvalog
