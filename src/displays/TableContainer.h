#pragma once

#include <QSize>
#include <QWidget>

namespace corvalog {

// The panel grid: places its child widgets in rows, left to right, wrapping when the next one
// would not fit (a widget wider than the container sits alone in its row). Children are taken
// in the order they were added; one whose "Index" property is 0 (a template) is never placed.
// Lays out on every resize and on Refresh, and asks for the bottom of its last row as its
// minimum height, so a scroll area around it scrolls to every panel.
class TableContainer : public QWidget
{
    Q_OBJECT

public:
    // The extra height, in twips, below the last row.
    static constexpr int kBottomMarginTwips = 920;
    // The extent's width when nothing widened it.
    static constexpr int kEmptyWidthTwips = 2000;

    explicit TableContainer(QWidget *parent = nullptr);

    void Refresh();

    // The laid-out extent in twips: the widest row (kEmptyWidthTwips when none) by the bottom
    // of the last row plus kBottomMarginTwips.
    QSize scaleExtentTwips() const { return m_extent; }

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void layOut();

    QSize m_extent { kEmptyWidthTwips, kBottomMarginTwips };
    bool m_layingOut = false;
};

} // namespace corvalog
