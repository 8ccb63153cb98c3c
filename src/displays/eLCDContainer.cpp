#include "eLCDContainer.h"

#include <QPainter>
#include <array>

namespace corvalog {

namespace {

struct SchemeColours {
    OleColor back;
    OleColor off;
    OleColor on;
};

// Built on first use and shared by every frame.
const std::array<SchemeColours, 5> &schemeTable()
{
    static const std::array<SchemeColours, 5> table { {
        { 0xA0B696, 0x91AB85, 0x000000 },
        { 0xE0CA87, 0xDAC072, 0x000000 },
        { 0xC0C0C0, 0xB3B3B3, 0x000000 },
        { 0x010015, 0x000080, 0x0000FF },
        { 0x0C250C, 0x004000, 0x00FF00 },
    } };
    return table;
}

} // namespace

eLCDContainer::eLCDContainer(QWidget *parent)
    : QWidget(parent)
    , LcdColours(0xA0B696, 0x000000, 0x91AB85)
{
}

void eLCDContainer::coloursChanged()
{
    update();
}

void eLCDContainer::setScheme(int scheme)
{
    const auto &table = schemeTable();
    if (scheme < 0 || scheme >= static_cast<int>(table.size())) {
        return;
    }
    m_scheme = scheme;
    const SchemeColours &colours = table[static_cast<std::size_t>(scheme)];
    setBackColor(colours.back);
    setOffColor(colours.off);
    setOnColor(colours.on);
}

void eLCDContainer::ColorChildren()
{
    for (QObject *child : children()) {
        if (auto *element = dynamic_cast<LcdColours *>(child)) {
            element->setBackColor(BackColor());
            element->setOnColor(OnColor());
            element->setOffColor(OffColor());
        }
    }
}

void eLCDContainer::setCornerDiameter(int pixels)
{
    m_corner = qMax(0, pixels);
    update();
}

void eLCDContainer::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QColor ground = toQColor(BackColor(), palette());
    if (m_corner == 0) {
        painter.fillRect(rect(), ground);
        return;
    }
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ground);
    const qreal radius = m_corner / 2.0;
    painter.drawRoundedRect(QRectF(rect()), radius, radius);
}

} // namespace corvalog
