// A session as a user has it, driven through the window: live values, zero and Shift+Zero, the
// status report of a silent module, channels added in the editor, and a log started and stopped
// with Ctrl+L, then opened. With CORVALOG_SCREENSHOTS set to a folder it saves the pictures the
// README shows.
#include "AppFixture.h"
#include "app/AppStyle.h"
#include "displays/FlatButton.h"
#include "displays/eLCD.h"
#include "logging/DataLogger.h"

#include <QComboBox>
#include <QTreeWidget>

namespace corvalog {

namespace {

class Walk : public AppFixture
{
protected:
    const QString pictures = qEnvironmentVariable("CORVALOG_SCREENSHOTS");

    void screenshot(QWidget *widget, const char *name)
    {
        QCoreApplication::processEvents();
        if (!pictures.isEmpty()) {
            EXPECT_TRUE(widget->grab().save(pictures + QLatin1Char('/') + name));
        }
    }

    // A third of a second: fresh packets, then a screen tick.
    void liveTick(const std::string &load)
    {
        packet(0x00A1, load);
        packet(0x00B2, "21.5", 1);
        clock.advanceSeconds(0.333);
        window->ScreenTimer_Timer();
    }

    LCDModule &panel(int n) { return *window->Disp().at(static_cast<std::size_t>(n)); }
};

TEST_F(Walk, AUsersSession)
{
    useWorkspace(
        "[Workspace]\nType=CORVALOG\nVersion=2\nTitle=Test rig\nChannels=4\nlogInterval=100\n"
        "DataTagList1=<00A1>\nCaption1=Load (kg)\nFormat1=0.000\nTimeout1=3\n"
        "DataTagList2=<00B2>\nCaption2=Temperature\nFormat2=0.0\nTimeout2=3\n"
        "DataTagList3=<00C3>\nCaption3=Strain (silent)\nFormat3=0.00\nTimeout3=3\n"
        "DataTagList4=(<1>+<2>)/2\nCaption4=Mean of 1 and 2\nFormat4=00.00\nTimeout4=3\n"
        "Function4=1\n");
    if (!pictures.isEmpty())
        applyAppStyle(*qApp); // pictures for people show the program's own look
    ASSERT_TRUE(start());
    window->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));

    // Live values: the silent module's channel is in error, the mean keeps its peak.
    liveTick("99.25");
    liveTick("12.5");
    EXPECT_EQ(panel(1).Value(), QStringLiteral("12.500"));
    EXPECT_EQ(panel(3).Value(), QStringLiteral("-------"));
    EXPECT_EQ(panel(4).Value(), QStringLiteral("60.38"));
    screenshot(window.get(), "main-window.png");

    // Zero the load, then Shift+Zero takes the tare off again.
    QTest::mouseClick(panel(1).button(), Qt::LeftButton);
    liveTick("12.5");
    EXPECT_TRUE(panel(1).NetInd());
    EXPECT_EQ(panel(1).Value(), QStringLiteral("0.000"));
    QTest::keyPress(window.get(), Qt::Key_Shift);
    QTest::mouseClick(panel(1).button(), Qt::LeftButton, Qt::ShiftModifier);
    QTest::keyRelease(window.get(), Qt::Key_Shift);
    liveTick("12.5");
    EXPECT_FALSE(panel(1).NetInd());

    // The silent module's panel explains itself.
    QTest::mouseClick(panel(3).number(), Qt::LeftButton);
    StatusFrm *status = window->status().form();
    ASSERT_NE(status, nullptr);
    EXPECT_EQ(status->windowTitle(), QStringLiteral("Status Report Channel 3"));
    screenshot(status, "status-report.png");
    QTest::mouseClick(status->button(), Qt::LeftButton);
    EXPECT_TRUE(window->status().StatusClosed());

    // Two more channels in the editor, the last with a mistyped expression that is kept.
    onEditor([this](QDialog &editor) {
        editor.findChild<QComboBox *>(QStringLiteral("cbChannels"))->setCurrentIndex(5);
        auto *list = editor.findChild<QTreeWidget *>(QStringLiteral("LV"));
        list->setCurrentItem(list->topLevelItem(5));
        editor.findChild<QLineEdit *>(QStringLiteral("tbTag"))->setText("<00A1> +* 2");
        const auto *cross = editor.findChild<QLabel *>(QStringLiteral("Cross"));
        EXPECT_TRUE(cross->isVisibleTo(&editor));
        EXPECT_TRUE(cross->toolTip().startsWith("Error in expression: "));
        screenshot(&editor, "workspace-editor.png");
    });
    window->mnuEditWorkspace_Click();
    liveTick("12.5");
    EXPECT_EQ(panel(6).Value(), QStringLiteral("-------"));

    // A log at 10 Hz: Ctrl+L starts it, runs it for a while, stops it; then it is opened.
    const std::string log = path("docs/run1.csv");
    prompts.files.push_back(log);
    QApplication::setActiveWindow(window.get());
    QTest::keyClick(window.get(), Qt::Key_L, Qt::ControlModifier);
    ASSERT_TRUE(window->logger().isLogging());
    EXPECT_FALSE(window->action("mnuEditWorkspace")->isEnabled());
    EXPECT_EQ(window->LogLabel()->text().toStdString(), "Logging at 10.0Hz to " + log);
    QTest::qWait(450);
    QTest::keyClick(window.get(), Qt::Key_L, Qt::ControlModifier);
    EXPECT_FALSE(window->logger().isLogging());
    const std::string csv = fileText(log);
    EXPECT_EQ(csv.rfind("Date,Time,Elapsed mS,Load (kg),Temperature,Strain (silent),", 0), 0u);
    EXPECT_GE(std::count(csv.begin(), csv.end(), '\n'), 4);
    window->mnuViewLog_Click();
    EXPECT_EQ(prompts.opened, std::vector<std::string> { log });
}

} // namespace

} // namespace corvalog
