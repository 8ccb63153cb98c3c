#include "eLCD.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <array>
#include <cmath>

namespace corvalog {

namespace {

struct Stroke {
    QPointF from, to;
};

// The designer's templates of one cell, in twips from its top left corner; index = segment bit.
// The lower left segment stands further left and the gaps are uneven: that is the face's look.
const Stroke kSegments[7] = {
    { { 120, 240 }, { 120, 60 } }, // upper left
    { { 120, 0 }, { 330, 0 } }, // top
    { { 360, 225 }, { 360, 45 } }, // upper right
    { { 120, 255 }, { 330, 255 } }, // middle
    { { 90, 435 }, { 90, 255 } }, // lower left
    { { 120, 465 }, { 330, 465 } }, // bottom
    { { 360, 435 }, { 360, 255 } }, // lower right
};
const Stroke kPoint { { 480, 480 }, { 600, 480 } };

// The cells' extent in template twips, with room for half a stroke all round.
constexpr double kMargin = 45;
constexpr double kTop = -kMargin;
constexpr double kHeight = 480 + 2 * kMargin;
// The first cell's strokes begin 90 twips in; the last cell's point ends at 600.
constexpr double kLeft = 90 - kMargin;
constexpr double kRightOverhang = 600 - eLCD::kCellTwips + kMargin;

// A stroke with bevelled ends: pointed where it meets the next segment, as on a glass display.
QPainterPath strokeShape(const Stroke &s, double width)
{
    const QPointF along = s.to - s.from;
    const double length = std::hypot(along.x(), along.y());
    const QPointF unit = along / length;
    const QPointF normal(-unit.y(), unit.x());
    const double half = width / 2;
    const double bevel = std::min(half, length / 2);
    QPainterPath path;
    path.moveTo(s.from);
    path.lineTo(s.from + unit * bevel + normal * half);
    path.lineTo(s.to - unit * bevel + normal * half);
    path.lineTo(s.to);
    path.lineTo(s.to - unit * bevel - normal * half);
    path.lineTo(s.from + unit * bevel - normal * half);
    path.closeSubpath();
    return path;
}

// The eight strokes of a cell (seven segments, then the point), built once.
const std::array<QPainterPath, 8> &cellShapes()
{
    static const std::array<QPainterPath, 8> shapes = [] {
        std::array<QPainterPath, 8> built;
        const double width = eLCD::strokeWidth(eLCD::kReferenceTwips);
        for (int i = 0; i < 7; ++i)
            built[static_cast<std::size_t>(i)] = strokeShape(kSegments[i], width);
        built[7] = strokeShape(kPoint, width);
        return built;
    }();
    return shapes;
}

} // namespace

eLCD::eLCD(QWidget *parent)
    : QWidget(parent)
    , LcdColours(kBlack, kWhite, kBlack)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void eLCD::coloursChanged()
{
    update();
}

void eLCD::setCaption(const QString &caption)
{
    if (caption != m_caption) {
        m_caption = caption;
        update();
    }
}

void eLCD::setDigits(int digits)
{
    digits = std::max(digits, 0);
    if (digits != m_digits) {
        m_digits = digits;
        update();
    }
}

int eLCD::strokeWidth(double referenceTwips)
{
    const double quotient = referenceTwips / 32.0;
    if (quotient < 1.0)
        return 1;
    return static_cast<int>(std::nearbyint(quotient)); // the default rounding is ties to even
}

QSize eLCD::sizeHint() const
{
    const int cells = std::max(m_digits, 1);
    return { twipsToPixels(static_cast<int>(cells * kCellTwips - kLeft + kRightOverhang)),
        twipsToPixels(static_cast<int>(kHeight)) };
}

void eLCD::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QPalette &pal = palette();
    painter.fillRect(rect(), toQColor(BackColor(), pal));

    const std::vector<LcdCell> cells = lcdCells(m_caption, m_digits);
    if (cells.empty())
        return;
    const double boxWidth = static_cast<double>(cells.size()) * kCellTwips - kLeft + kRightOverhang;
    const double scale = std::min(width() / boxWidth, height() / kHeight);
    if (scale <= 0)
        return;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate((width() - boxWidth * scale) / 2, (height() - kHeight * scale) / 2);
    painter.scale(scale, scale);
    painter.translate(-kLeft, -kTop);

    const std::array<QPainterPath, 8> &shapes = cellShapes();
    const QColor on = toQColor(OnColor(), pal);
    const QColor off = toQColor(OffColor(), pal);
    // Unlit strokes in the ground's own colour would change no pixel: skip them.
    const bool paintUnlit = off != toQColor(BackColor(), pal);
    for (const LcdCell &cell : cells) {
        for (int i = 0; i < 8; ++i) {
            const bool lit = i < 7 ? ((cell.segments >> i) & 1u) != 0 : cell.point;
            if (lit || paintUnlit)
                painter.fillPath(shapes[static_cast<std::size_t>(i)], lit ? on : off);
        }
        painter.translate(kCellTwips, 0);
    }
}

void eLCD::mousePressEvent(QMouseEvent *event)
{
    m_pressed = event->button() == Qt::LeftButton;
}

void eLCD::mouseReleaseEvent(QMouseEvent *event)
{
    if (m_pressed && event->button() == Qt::LeftButton && rect().contains(event->pos()))
        emit Click();
    m_pressed = false;
}

} // namespace corvalog
