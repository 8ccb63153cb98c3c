#include "TrendChartView.h"

#include <QGraphicsLineItem>
#include <QMouseEvent>
#include <QPen>
#include <QWheelEvent>

namespace corvalog {

namespace {

bool pans(Qt::MouseButton button)
{
    return button == Qt::RightButton || button == Qt::MiddleButton;
}

} // namespace

TrendChartView::TrendChartView(QChart *chart, QWidget *parent)
    : QChartView(chart, parent)
    , m_cursor(new QGraphicsLineItem(chart))
{
    setRubberBand(QChartView::HorizontalRubberBand);
    setRenderHint(QPainter::Antialiasing, false);
    setMouseTracking(true);
    viewport()->setMouseTracking(true);
    QPen pen(QColor(0, 0, 0, 110));
    pen.setCosmetic(true);
    m_cursor->setPen(pen);
    m_cursor->setZValue(1000);
    m_cursor->hide();
    setToolTip(QStringLiteral("Drag to zoom into a span, wheel to zoom, right-drag to pan"));
}

void TrendChartView::mousePressEvent(QMouseEvent *event)
{
    if (!pans(event->button())) {
        QChartView::mousePressEvent(event);
        return;
    }
    m_panFrom = event->position().x();
    event->accept();
}

void TrendChartView::mouseMoveEvent(QMouseEvent *event)
{
    if (m_panFrom) {
        const double x = event->position().x();
        chart()->scroll(*m_panFrom - x, 0);
        m_panFrom = x;
        event->accept();
    } else {
        QChartView::mouseMoveEvent(event);
    }
    hover(event->position());
}

void TrendChartView::mouseReleaseEvent(QMouseEvent *event)
{
    // The view's own right click would zoom out: here the right button only pans.
    if (pans(event->button())) {
        m_panFrom.reset();
        event->accept();
        return;
    }
    QChartView::mouseReleaseEvent(event);
}

void TrendChartView::wheelEvent(QWheelEvent *event)
{
    const QRectF plot = chart()->plotArea();
    const double x = chart()->mapFromScene(mapToScene(event->position().toPoint())).x();
    if (event->angleDelta().y() == 0 || x < plot.left() || x > plot.right()) {
        QChartView::wheelEvent(event);
        return;
    }
    // The time under the pointer stays where it is.
    const double factor = event->angleDelta().y() > 0 ? 0.8 : 1.25;
    QRectF shown = plot;
    shown.setLeft(x - (x - plot.left()) * factor);
    shown.setWidth(plot.width() * factor);
    chart()->zoomIn(shown);
    event->accept();
}

void TrendChartView::leaveEvent(QEvent *event)
{
    m_cursor->hide();
    if (onHover)
        onHover(std::nullopt);
    QChartView::leaveEvent(event);
}

void TrendChartView::hover(const QPointF &position)
{
    const QPointF at = chart()->mapFromScene(mapToScene(position.toPoint()));
    const QRectF plot = chart()->plotArea();
    if (!plot.contains(at)) {
        m_cursor->hide();
        if (onHover)
            onHover(std::nullopt);
        return;
    }
    m_cursor->setLine(at.x(), plot.top(), at.x(), plot.bottom());
    m_cursor->show();
    if (onHover)
        onHover(chart()->mapToValue(at).x());
}

} // namespace corvalog
