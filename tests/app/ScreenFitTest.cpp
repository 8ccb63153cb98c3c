// The windows fit the screen they are on: run under several screens (a 1920 x 1080 one, a
// 1366 x 768 one, and the first at 200 %), each time judged against that screen.
#include "AppFixture.h"
#include "app/WorkSpaceFrm.h"
#include "displays/LCDModule.h"

#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTimer>
#include <QToolButton>

namespace corvalog {
namespace {

using ScreenFit = AppFixture;

// Wholly inside `outer`, in global coordinates.
bool insideOf(const QWidget *widget, const QRect &outer)
{
    const QRect r(widget->mapToGlobal(QPoint(0, 0)), widget->size());
    return outer.contains(r);
}

TEST_F(ScreenFit, TheMainWindowIsNeverWiderThanTheScreenNorNarrowerThanItsMenus)
{
    const std::string file = path("w.lws");
    rememberWorkspace(file);
    const struct {
        int channels;
        int storedWidth;
    } cases[] = { { 1, 16000 }, { 24, 16000 }, { 24, 40000 }, { 3, 3000 } };
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.channels << " channels at " << c.storedWidth);
        writeFile(file, workspaceText(c.channels));
        QSettings(settingsStore(), QSettings::IniFormat).setValue("Size/Width", c.storedWidth);
        ASSERT_TRUE(start());
        window->show();
        QCoreApplication::processEvents();
        const QRect room = window->screen()->availableGeometry();
        EXPECT_TRUE(room.contains(window->frameGeometry()))
            << room.width() << "x" << room.height() << " holds no " << window->width() << "x"
            << window->height();
        EXPECT_GE(window->width(), window->menuBar()->sizeHint().width());
        const auto *more
            = window->menuBar()->findChild<QToolButton *>(QStringLiteral("qt_menubar_ext_button"));
        EXPECT_TRUE(more == nullptr || !more->isVisible()) << "menus folded away";
        // Panels that do not fit can be scrolled to.
        auto *scroll = window->findChild<QScrollArea *>(QStringLiteral("GridScroll"));
        if (scroll->widget()->height() > scroll->viewport()->height()) {
            EXPECT_TRUE(scroll->verticalScrollBar()->isVisible());
        }
        window.reset();
    }
}

TEST_F(ScreenFit, TheWorkspaceEditorKeepsItsButtonsAndBoxesInReach)
{
    const std::string file = path("w.lws");
    writeFile(file, workspaceText(24));
    rememberWorkspace(file);
    ASSERT_TRUE(start());
    window->show();
    bool checked = false;
    const auto check = [&](QDialog *editor) {
        const QRect room = editor->screen()->availableGeometry();
        EXPECT_TRUE(room.contains(editor->frameGeometry()))
            << editor->width() << "x" << editor->height();
        const QRect dialog(editor->mapToGlobal(QPoint(0, 0)), editor->size());
        for (const char *name : { "btnOK", "btnHelp" }) {
            const auto *button = editor->findChild<QPushButton *>(QString::fromLatin1(name));
            EXPECT_TRUE(button && button->isVisible() && insideOf(button, dialog)) << name;
        }
        auto *scroll = editor->findChild<QScrollArea *>(QStringLiteral("editorScroll"));
        if (!scroll) {
            ADD_FAILURE() << "the editor's fields do not scroll";
            return;
        }
        for (const char *name : { "tbTitle", "LV", "tbTag", "tbOverload", "ddFunction" }) {
            QWidget *box = editor->findChild<QWidget *>(QString::fromLatin1(name));
            scroll->ensureWidgetVisible(box);
            QCoreApplication::processEvents();
            const QRect view(
                scroll->viewport()->mapToGlobal(QPoint(0, 0)), scroll->viewport()->size());
            EXPECT_TRUE(
                view.intersects(QRect(box->mapToGlobal(QPoint(0, 0)), QSize(box->width(), 8))))
                << name << " cannot be brought into view";
        }
        checked = true;
    };
    QObject::connect(window.get(), &MainFrm::editorOpened, [&](QDialog *editor) {
        QTimer::singleShot(0, editor, [&, editor] {
            check(editor);
            editor->accept(); // whatever was found, so the test never hangs
        });
    });
    window->mnuEditWorkspace_Click();
    EXPECT_TRUE(checked);
}

} // namespace
} // namespace corvalog
