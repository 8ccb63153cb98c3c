#include "FlatButton.h"

#include <QFontMetrics>
#include <QMouseEvent>
#include <QPainter>

namespace corvalog {

FlatButton::FlatButton(QWidget *parent)
    : QWidget(parent)
{
    // Enter and Leave drive the hover; moves catch a button that appeared under the pointer.
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
    // A move inside that came without an Enter (the button appeared under the pointer).
    if (isEnabled() && !m_inside && rect().contains(event->position().toPoint()))
        enter();
}

void FlatButton::enterEvent(QEnterEvent *event)
{
    if (isEnabled())
        enter();
    QWidget::enterEvent(event);
}

void FlatButton::leaveEvent(QEvent *event)
{
    // Also sent when a modal window opens over the button, so it never stays lit behind it.
    leave();
    QWidget::leaveEvent(event);
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
        // A disabled button must not stay lit.
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

void FlatButton::enter()
{
    m_inside = true;
    SetColor(m_hover);
    setCursor(Qt::PointingHandCursor);
}

void FlatButton::leave()
{
    if (!m_inside) {
        return;
    }
    m_inside = false;
    SetColor(m_back);
    setCursor(Qt::ArrowCursor);
}

} // namespace corvalog
