#include "app/HeardModulesDialog.h"

#include "runtime/Clock.h"
#include "values/HeardTags.h"
#include "values/ScriptClass.h"

#include <QPushButton>
#include <QTest>
#include <QTreeWidget>
#include <gtest/gtest.h>

using namespace corvalog;

namespace {

QStringList rowTexts(const QTreeWidgetItem &row)
{
    QStringList texts;
    for (int column = 0; column < row.columnCount(); ++column)
        texts << row.text(column);
    return texts;
}

// Rows come in Data Tag order whatever order the modules were heard in, with values written
// as the panels write a plain number.
TEST(HeardModulesDialog, ListsTheModulesHeardAndInsertsTheOneChosen)
{
    ManualClock clock { 46000.5 };
    ScriptClass tables { clock };
    tables.setT(0x1F00, -3.25f);
    tables.setTL(0x1F00, 41);
    clock.advanceSeconds(1);
    tables.setT(0x00AB, 12.5f);
    tables.setTL(0x00AB, 73);
    clock.advanceSeconds(2);
    // Whether values have a decimal comma, and the rows.
    const std::pair<bool, std::vector<QStringList>> cases[] = {
        { false,
            { { "00AB", "12.5", "73 %", "2 s ago" }, { "1F00", "-3.25", "41 %", "3 s ago" } } },
        { true, { { "00AB", "12,5", "73 %", "2 s ago" }, { "1F00", "-3,25", "41 %", "3 s ago" } } },
    };
    for (const auto &[commaDecimal, rows] : cases) {
        HeardModulesDialog dialog(heardTags(tables), commaDecimal);
        auto &list = *dialog.findChild<QTreeWidget *>(QStringLiteral("lvModules"));
        ASSERT_EQ(list.topLevelItemCount(), 2);
        for (int row = 0; row < 2; ++row)
            EXPECT_EQ(rowTexts(*list.topLevelItem(row)), rows[static_cast<std::size_t>(row)]);
        EXPECT_EQ(dialog.reference(), QStringLiteral("<00AB>")); // the first is chosen at once
    }

    HeardModulesDialog dialog(heardTags(tables), false);
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    auto &list = *dialog.findChild<QTreeWidget *>(QStringLiteral("lvModules"));
    const QPoint second = list.visualItemRect(list.topLevelItem(1)).center();
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, second);
    QTest::mouseDClick(list.viewport(), Qt::LeftButton, {}, second);
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    EXPECT_TRUE(dialog.isHidden());
    EXPECT_EQ(dialog.reference(), QStringLiteral("<1F00>"));
}

TEST(HeardModulesDialog, WithNoModuleHeardThereIsNothingToInsert)
{
    ManualClock clock { 46000.5 };
    const ScriptClass tables { clock };
    HeardModulesDialog dialog(heardTags(tables), false);
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    auto &list = *dialog.findChild<QTreeWidget *>(QStringLiteral("lvModules"));
    ASSERT_EQ(list.topLevelItemCount(), 1);
    const QTreeWidgetItem &line = *list.topLevelItem(0);
    EXPECT_EQ(line.text(0), QStringLiteral("No module has been heard since start-up."));
    EXPECT_FALSE(line.flags() & Qt::ItemIsEnabled);
    auto *insert = dialog.findChild<QPushButton *>(QStringLiteral("btnInsert"));
    EXPECT_FALSE(insert->isEnabled());
    QTest::mouseDClick(list.viewport(), Qt::LeftButton, {}, list.visualItemRect(&line).center());
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(dialog.reference(), QString());
}

} // namespace
