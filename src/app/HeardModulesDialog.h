#pragma once

#include "values/HeardTags.h"

#include <QDialog>
#include <vector>

class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace corvalog {

// "Modules Heard": every module heard since start-up, one row each with its Data Tag, last
// value, link quality and how long ago it was last heard. Insert, or a double-click on a row,
// closes it accepted with that row's module chosen.
class HeardModulesDialog : public QDialog
{
public:
    // `commaDecimal` says whether values are written with a decimal comma.
    HeardModulesDialog(
        const std::vector<HeardTag> &heard, bool commaDecimal, QWidget *parent = nullptr);

    // The chosen module as an expression refers to it, "<00AB>"; "" when none is chosen.
    QString reference() const;

private:
    static bool isModule(const QTreeWidgetItem *row);
    void insertChosen();

    QTreeWidget *m_list = nullptr;
    QPushButton *m_insert = nullptr;
};

} // namespace corvalog
