#include "HeardModulesDialog.h"

#include "HelpTopics.h"
#include "runtime/NumberText.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <cmath>

namespace corvalog {

namespace {

enum Column { ColTag, ColValue, ColQuality, ColHeard, ColumnCount };

QString tagText(std::int32_t tag)
{
    return QStringLiteral("%1").arg(tag, 4, 16, QLatin1Char('0')).toUpper();
}

// Seconds while they stay readable, then minutes, then hours.
QString agoText(double seconds)
{
    const long long whole = std::llround(seconds);
    if (whole < 120)
        return QStringLiteral("%1 s ago").arg(whole);
    if (whole < 2 * 3600)
        return QStringLiteral("%1 min ago").arg(whole / 60);
    return QStringLiteral("%1 h ago").arg(whole / 3600);
}

} // namespace

HeardModulesDialog::HeardModulesDialog(
    const std::vector<HeardTag> &heard, bool commaDecimal, QWidget *parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("HeardModulesDialog"));
    setWindowTitle(tr("Modules Heard"));
    setProperty(kHelpTopicProperty, QStringLiteral("modules-heard"));

    m_list = new QTreeWidget(this);
    m_list->setObjectName(QStringLiteral("lvModules"));
    m_list->setColumnCount(ColumnCount);
    m_list->setHeaderLabels(
        { tr("Data Tag"), tr("Last Value"), tr("Link Quality"), tr("Last Heard") });
    m_list->setRootIsDecorated(false);
    m_list->setItemsExpandable(false);
    m_list->setUniformRowHeights(true);
    m_list->setAllColumnsShowFocus(true);
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    m_list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    const char decimal = commaDecimal ? ',' : '.';
    for (const HeardTag &module : heard) {
        auto *row = new QTreeWidgetItem(m_list);
        row->setData(ColTag, Qt::UserRole, module.tag);
        row->setText(ColTag, tagText(module.tag));
        row->setText(ColValue, QString::fromStdString(singleText(module.value, decimal)));
        row->setText(ColQuality, QStringLiteral("%1 %").arg(module.quality));
        row->setText(ColHeard, agoText(module.secondsAgo));
        for (const int column : { ColValue, ColQuality, ColHeard })
            row->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
    }
    if (heard.empty()) {
        auto *row = new QTreeWidgetItem(m_list);
        row->setText(ColTag, tr("No module has been heard since start-up."));
        row->setFlags(Qt::NoItemFlags);
        row->setFirstColumnSpanned(true);
    } else {
        m_list->setCurrentItem(m_list->topLevelItem(0));
    }

    m_insert = new QPushButton(tr("Insert"), this);
    m_insert->setObjectName(QStringLiteral("btnInsert"));
    m_insert->setDefault(true);
    m_insert->setEnabled(isModule(m_list->currentItem()));
    auto *cancel = new QPushButton(tr("Cancel"), this);
    cancel->setObjectName(QStringLiteral("btnCancel"));
    connect(m_insert, &QPushButton::clicked, this, &HeardModulesDialog::insertChosen);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_list, &QTreeWidget::currentItemChanged, this,
        [this](QTreeWidgetItem *row) { m_insert->setEnabled(isModule(row)); });
    connect(m_list, &QTreeWidget::itemDoubleClicked, this, &HeardModulesDialog::insertChosen);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_insert);
    buttons->addWidget(cancel);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_list, 1);
    layout->addLayout(buttons);
    resize(460, 320);
}

QString HeardModulesDialog::reference() const
{
    const QTreeWidgetItem *row = m_list->currentItem();
    if (!isModule(row))
        return {};
    return QLatin1Char('<') + tagText(row->data(ColTag, Qt::UserRole).toInt()) + QLatin1Char('>');
}

bool HeardModulesDialog::isModule(const QTreeWidgetItem *row)
{
    return row != nullptr && row->data(ColTag, Qt::UserRole).isValid();
}

void HeardModulesDialog::insertChosen()
{
    if (isModule(m_list->currentItem()))
        accept();
}

} // namespace corvalog
