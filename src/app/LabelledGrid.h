#pragma once

#include <initializer_list>

class QGridLayout;
class QWidget;

namespace corvalog {

// A control in a labelled grid: the control (named and with its tooltip, the designer's
// texts), its label (none for a check box), and where the two go. The control sits beside its
// label.
struct Placed {
    QWidget *control;
    const char *name;
    const char *labelName; // nullptr: no label
    const char *label;
    const char *toolTip; // nullptr: none
    const char *helpTopic; // nullptr: the dialog's
    int row;
    int column; // of the label
    int span = 1;
};

// Names, labels and lays out `controls` in a new grid; the labels are children of `owner`.
QGridLayout *labelledGrid(QWidget &owner, std::initializer_list<Placed> controls);

} // namespace corvalog
