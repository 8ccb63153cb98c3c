#include "LabelledGrid.h"

#include "HelpTopics.h"

#include <QGridLayout>
#include <QLabel>
#include <QPlainTextEdit>

namespace corvalog {

QGridLayout *labelledGrid(QWidget &owner, std::initializer_list<Placed> controls)
{
    auto *grid = new QGridLayout;
    for (const Placed &p : controls) {
        p.control->setObjectName(QString::fromLatin1(p.name));
        if (p.toolTip)
            p.control->setToolTip(QString::fromUtf8(p.toolTip));
        if (p.helpTopic)
            p.control->setProperty(kHelpTopicProperty, p.helpTopic);
        if (p.labelName) {
            auto *caption = new QLabel(QString::fromUtf8(p.label), &owner);
            caption->setObjectName(QString::fromLatin1(p.labelName));
            caption->setBuddy(p.control);
            // A many-line box's label reads against its first line.
            grid->addWidget(caption, p.row, p.column,
                qobject_cast<QPlainTextEdit *>(p.control) ? Qt::AlignTop : Qt::Alignment());
        }
        grid->addWidget(p.control, p.row, p.column + 1, 1, p.span);
    }
    return grid;
}

} // namespace corvalog
