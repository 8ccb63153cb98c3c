#include "eLCDText.h"

#include <QEvent>
#include <QPainter>

namespace corvalog {

namespace {

QLabel *makeLabel(QWidget *parent)
{
    auto *label = new QLabel(parent);
    // A caption is shown as typed, never as markup.
    label->setTextFormat(Qt::PlainText);
    label->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    return label;
}

void paintLabel(QLabel *label, const QColor &text, const QColor &ground, bool opaque)
{
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Window, ground);
    label->setPalette(palette);
    label->setAutoFillBackground(opaque);
}

} // namespace

eLCDText::eLCDText(QWidget *parent)
    : QWidget(parent)
    , LcdColours(kBlack, kWhite, 0x404040)
    , m_labelBack(makeLabel(this))
    , m_labelFore(makeLabel(this)) // created second, so it lies over the ghost
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    applyColours();
    layOut();
}

void eLCDText::coloursChanged()
{
    applyColours();
    update();
}

QString eLCDText::Caption() const
{
    return m_labelFore->text();
}

void eLCDText::setCaption(const QString &caption)
{
    m_labelBack->setText(caption);
    m_labelFore->setText(caption);
    layOut();
}

void eLCDText::setCaptionFont(const QFont &font)
{
    // changeEvent hands it on to the labels.
    setFont(font);
}

void eLCDText::setState(bool lit)
{
    m_state = lit;
    m_labelFore->setVisible(lit);
}

void eLCDText::setInverse(bool inverse)
{
    m_inverse = inverse;
    applyColours();
}

void eLCDText::changeEvent(QEvent *event)
{
    switch (event->type()) {
    case QEvent::FontChange:
        // Set explicitly, so a font the labels were given earlier cannot mask the new one.
        m_labelBack->setFont(font());
        m_labelFore->setFont(font());
        layOut();
        break;
    case QEvent::PaletteChange:
        // System colours resolve through the palette.
        applyColours();
        break;
    default:
        break;
    }
    QWidget::changeEvent(event);
}

void eLCDText::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    layOut();
}

void eLCDText::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), toQColor(BackColor(), palette()));
}

void eLCDText::applyColours()
{
    const QPalette &own = palette();
    const QColor back = toQColor(BackColor(), own);
    const QColor on = toQColor(OnColor(), own);
    const QColor off = toQColor(OffColor(), own);
    if (m_inverse) {
        paintLabel(m_labelBack, back, off, true);
        paintLabel(m_labelFore, back, on, true);
    } else {
        paintLabel(m_labelBack, off, back, false);
        paintLabel(m_labelFore, on, back, false);
    }
}

void eLCDText::layOut()
{
    // Both labels cover the whole control, so the lit text lands exactly on its ghost.
    m_labelBack->setGeometry(rect());
    m_labelFore->setGeometry(rect());
}

} // namespace corvalog
