#include "TableContainer.h"

#include "Twips.h"

#include <QApplication>
#include <QPointer>
#include <QVariant>

namespace corvalog {

namespace {

// Element 0 of a panel array is the design template; a widget without an index is a panel.
bool isPlaced(const QWidget *widget)
{
    const QVariant index = widget->property("Index");
    return !index.isValid() || index.toInt() != 0;
}

} // namespace

TableContainer::TableContainer(QWidget *parent)
    : QWidget(parent)
{
    setMinimumHeight(0);
}

void TableContainer::Refresh()
{
    layOut();
}

void TableContainer::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    layOut();
}

void TableContainer::layOut()
{
    // Asking for a new minimum height can resize us from inside the layout; that resize keeps
    // the width and so would produce the same grid.
    if (m_layingOut) {
        return;
    }
    m_layingOut = true;

    // Hiding a panel takes the focus from the field in it; it goes back once all are shown.
    QWidget *focused = QApplication::focusWidget();
    const QPointer<QWidget> refocus = isAncestorOf(focused) ? focused : nullptr;

    const int innerWidth = width() * kTwipsPerPixel;
    int x = 0;
    int y = 0;
    int rowBottom = 0;
    int widest = 0;
    // A copy: a panel reacting to being hidden or shown may add or remove children.
    const QObjectList objects = children();
    for (QObject *object : objects) {
        auto *panel = qobject_cast<QWidget *>(object);
        if (!panel || panel->isWindow() || !isPlaced(panel)) {
            continue;
        }
        // Hidden while it moves, so a half-built grid is never drawn.
        panel->hide();
        const int w = panel->width() * kTwipsPerPixel;
        const int h = panel->height() * kTwipsPerPixel;
        if (x != 0 && innerWidth < x + w) {
            x = 0;
            y = rowBottom;
        } else if (x + w > widest) {
            // Only here: the first panel of a later row never widens the extent.
            widest = x + w;
        }
        panel->move(twipsToPixels(x), twipsToPixels(y));
        x += w;
        rowBottom = qMax(rowBottom, y + h);
        panel->show();
    }
    m_extent = QSize(widest == 0 ? kEmptyWidthTwips : widest, rowBottom + kBottomMarginTwips);

    // A scroll area around us reaches every panel; the margin below them is the window's to use.
    setMinimumHeight(twipsToPixels(rowBottom));
    if (refocus && refocus->isVisible()) {
        refocus->setFocus(Qt::OtherFocusReason);
    }
    m_layingOut = false;
}

} // namespace corvalog
