// The windows fit the screen they are on: run under several screens (a 1920 x 1080 one, a
// 1366 x 768 one, and the first at 200 %), each time judged against that screen.
#include "AppFixture.h"

#include <QToolButton>

namespace corvalog {
namespace {

using ScreenFit = AppFixture;

// Where a widget is on the screen.
QRect onScreen(const QWidget *widget)
{
    return QRect(widget->mapToGlobal(QPoint(0, 0)), widget->size());
}

TEST_F(ScreenFit, TheMainWindowIsNeverWiderThanTheScreenNorNarrowerThanItsMenus)
{
    // Many panels at the stored width, many in a window wider than any screen, and a window
    // stored narrower than the menus.
    for (const auto &[channels, storedWidth] :
        { std::pair(24, 16000), std::pair(24, 40000), std::pair(3, 3000) }) {
        SCOPED_TRACE(testing::Message() << channels << " channels at " << storedWidth);
        useWorkspace(workspaceText(channels));
        userStore()->setValue("Size/Width", storedWidth);
        ASSERT_TRUE(start());
        window->show();
        QCoreApplication::processEvents();
        EXPECT_TRUE(window->screen()->availableGeometry().contains(window->frameGeometry()));
        EXPECT_GE(window->width(), window->menuBar()->sizeHint().width());
        const auto *more
            = window->menuBar()->findChild<QToolButton *>(QStringLiteral("qt_menubar_ext_button"));
        EXPECT_TRUE(more == nullptr || !more->isVisible()) << "menus folded away";
        // Panels that do not fit can be scrolled to.
        auto *scroll = window->findChild<QScrollArea *>(QStringLiteral("GridScroll"));
        if (scroll->widget()->height() > scroll->viewport()->height()) {
            EXPECT_TRUE(scroll->verticalScrollBar()->isVisible());
        }
    }
}

TEST_F(ScreenFit, TheWorkspaceEditorKeepsItsButtonsAndBoxesInReach)
{
    useWorkspace(workspaceText(24));
    ASSERT_TRUE(start());
    window->show();
    bool checked = false;
    onEditor([&checked](QDialog &editor) {
        EXPECT_TRUE(editor.screen()->availableGeometry().contains(editor.frameGeometry()));
        for (const char *name : { "btnOK", "btnHelp" }) {
            const auto *button = editor.findChild<QPushButton *>(QString::fromLatin1(name));
            EXPECT_TRUE(
                button && button->isVisible() && onScreen(&editor).contains(onScreen(button)))
                << name;
        }
        auto *scroll = editor.findChild<QScrollArea *>(QStringLiteral("editorScroll"));
        ASSERT_NE(scroll, nullptr) << "the editor's fields do not scroll";
        for (const char *name : { "tbTitle", "LV", "tbTag", "tbOverload", "ddFunction" }) {
            QWidget *box = editor.findChild<QWidget *>(QString::fromLatin1(name));
            scroll->ensureWidgetVisible(box);
            QCoreApplication::processEvents();
            const QRect topLine = onScreen(box).adjusted(0, 0, 0, 8 - box->height());
            EXPECT_TRUE(onScreen(scroll->viewport()).intersects(topLine))
                << name << " cannot be brought into view";
        }
        checked = true;
    });
    window->mnuEditWorkspace_Click();
    EXPECT_TRUE(checked);
}

} // namespace
} // namespace corvalog
