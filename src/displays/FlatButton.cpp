#include "FlatButton.h"

#include <QFontMetrics>
#include <QMouseEvent>
#include <QPainter>

namespace corvalog {

FlatButton::FlatButton(QWidget *parent)
    : QWidget(parent)
{
    // Hover is driven by plain moves, so they must arrive without a button held.
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void FlatButton::setBackColor(OleColor colour)
{
    m_back = colour;
    if (!m_inside) {
        SetColor(colour);
    }
}

void FlatButton::setHoverColor(OleColor colour)
{
    m_hover = colour;
    if (m_inside) {
        SetColor(colour);
    }
}

void FlatButton::setForeColor(OleColor colour)
{
    m_fore = colour;
    DrawCaption();
}

void FlatButton::setDisabledColor(OleColor colour)
{
    m_disabled = colour;
    DrawCaption();
}

void FlatButton::setCaption(const QString &caption)
{
    m_caption = caption;
    updateGeometry();
    DrawCaption();
}

void FlatButton::SetColor(OleColor colour)
{
    m_ground = colour;
    DrawCaption();
}

void FlatButton::DrawCaption()
{
    update();
}

QSize FlatButton::sizeHint() const
{
    const QFontMetrics metrics(font());
    return { metrics.horizontalAdvance(m_caption) + 2 * metrics.averageCharWidth(),
        metrics.height() * 3 / 2 };
}

void FlatButton::mouseMoveEvent(QMouseEvent *event)
{
    if (!isEnabled()) {
        return;
    }
    if (!m_inside) {
        // Captured so the move that leaves the button still reaches it.
        grabMouse();
        m_inside = true;
        SetColor(m_hover);
        setCursor(Qt::PointingHandCursor);
    } else if (!rect().contains(event->position().toPoint())) {
        leave();
    }
}

void FlatButton::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton) {
        m_pressed = true;
    }
}

void FlatButton::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !m_pressed) {
        return;
    }
    m_pressed = false;
    if (isEnabled() && rect().contains(event->position().toPoint())) {
        emit clicked();
    }
}

void FlatButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QPalette &own = palette();
    painter.fillRect(rect(), toQColor(m_ground, own));
    painter.setPen(toQColor(isEnabled() ? m_fore : m_disabled, own));
    painter.setFont(font());
    const QFontMetrics metrics(font());
    const int x = (width() - metrics.horizontalAdvance(m_caption)) / 2;
    const int y = (height() - metrics.height()) / 2;
    painter.drawText(QPoint(x, y + metrics.ascent()), m_caption);
}

void FlatButton::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::EnabledChange) {
        // A disabled button sees no more moves, so it must not stay captured and lit.
        if (!isEnabled()) {
            leave();
            m_pressed = false;
        }
        DrawCaption();
    } else if (event->type() == QEvent::FontChange) {
        updateGeometry();
        DrawCaption();
    }
    QWidget::changeEvent(event);
}

void FlatButton::hideEvent(QHideEvent *event)
{
    // Hidden while hovered, it would never see the pointer leave.
    leave();
    m_pressed = false;
    QWidget::hideEvent(event);
}

void FlatButton::leave()
{
    if (!m_inside) {
        return;
    }
    releaseMouse();
    m_inside = false;
    SetColor(m_back);
    setCursor(Qt::ArrowCursor);
}

} // namespace corvalog
