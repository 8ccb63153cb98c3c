// A session as a user has it, driven through the window: live values, zero and Shift+Zero, the
// status report of a silent module, the workspace editor, save and reopen, a log started,
// stopped and opened, the interval changed, and closing with unsaved changes. With
// CORVALOG_SCREENSHOTS set to a folder it saves the pictures the README shows.
#include "AppFixture.h"
#include "app/AppStyle.h"
#include "displays/FlatButton.h"
#include "displays/LCDModule.h"
#include "displays/eLCD.h"
#include "logging/DataLogger.h"

#include <QComboBox>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>
#include <fstream>
#include <sstream>

namespace corvalog {

namespace {

std::string readAll(const std::string &file)
{
    std::ifstream in(file, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

class Walk : public AppFixture
{
protected:
    void SetUp() override
    {
        AppFixture::SetUp();
        // Pictures for people show the program's own look.
        if (!qEnvironmentVariableIsEmpty("CORVALOG_SCREENSHOTS"))
            applyAppStyle(*qApp);
    }

    void screenshot(QWidget *widget, const char *name)
    {
        const QByteArray folder = qgetenv("CORVALOG_SCREENSHOTS");
        if (folder.isEmpty())
            return;
        QCoreApplication::processEvents();
        EXPECT_TRUE(widget->grab().save(
            QString::fromUtf8(folder) + QLatin1Char('/') + QString::fromLatin1(name)));
    }

    // One live second: fresh packets, then a screen tick.
    void liveTick(const std::string &load, bool loadOnly = false)
    {
        packet(0x00A1, load);
        if (!loadOnly)
            packet(0x00B2, "21.5", 1);
        clock.advanceSeconds(0.333);
        window->ScreenTimer_Timer();
    }

    LCDModule &panel(int n) { return *window->Disp().at(static_cast<std::size_t>(n)); }

    void runEventsFor(int ms)
    {
        QElapsedTimer t;
        t.start();
        while (t.elapsed() < ms)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    }
};

TEST_F(Walk, AUsersSessionFromStartToClose)
{
    const std::string file = path("rig.lws");
    writeFile(file,
        "[Workspace]\nType=CORVALOG\nVersion=2\nTitle=Test rig\nChannels=4\nlogInterval=1000\n"
        "DataTagList1=<00A1>\nCaption1=Load (kg)\nFormat1=0.000\nTimeout1=3\n"
        "Underload1=-50\nOverload1=50\n"
        "DataTagList2=<00B2>\nCaption2=Temperature\nFormat2=0.0\nTimeout2=3\n"
        "DataTagList3=<00C3>\nCaption3=Strain (silent)\nFormat3=0.00\nTimeout3=3\n"
        "DataTagList4=(<1>+<2>)/2\nCaption4=Mean of 1 and 2\nFormat4=00.00\nTimeout4=3\n"
        "Function4=1\n");
    rememberWorkspace(file);
    ASSERT_TRUE(start());
    window->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));

    // Live values.
    liveTick("12.5");
    EXPECT_EQ(panel(1).Value(), QStringLiteral("12.500"));
    EXPECT_EQ(panel(2).Value(), QStringLiteral("21.5"));
    EXPECT_TRUE(panel(2).LoBatt());
    EXPECT_EQ(panel(3).Value(), QStringLiteral("-------")); // never heard
    EXPECT_EQ(panel(4).Value(), QStringLiteral("17.00"));
    EXPECT_EQ(panel(4).BtnCaption(), QStringLiteral("Reset"));
    liveTick("99.25"); // beyond the overload: flashes
    EXPECT_TRUE(panel(1).FlashMode());
    liveTick("12.5");
    EXPECT_EQ(panel(4).Value(), QStringLiteral("60.38")); // the peak of the mean is kept
    screenshot(window.get(), "main-window.png");

    // Zero the load, then Shift+Zero takes the tare off again.
    QTest::mouseClick(panel(1).button(), Qt::LeftButton);
    liveTick("12.5");
    EXPECT_EQ(window->workspace().item(1).TareValue, 12.5f);
    EXPECT_TRUE(panel(1).NetInd());
    EXPECT_EQ(panel(1).Value(), QStringLiteral("0.000"));
    EXPECT_NE(readAll(window->paths().settingsFile).find("Tare1=12.5"), std::string::npos);
    QTest::keyPress(window.get(), Qt::Key_Shift);
    QTest::mouseClick(panel(1).button(), Qt::LeftButton, Qt::ShiftModifier);
    QTest::keyRelease(window.get(), Qt::Key_Shift);
    liveTick("12.5");
    EXPECT_EQ(window->workspace().item(1).TareValue, 0.0f);
    EXPECT_FALSE(panel(1).NetInd());
    EXPECT_EQ(panel(1).Value(), QStringLiteral("12.500"));

    // The silent module's panel explains itself; a channel in error cannot be zeroed.
    QTest::mouseClick(panel(3).number(), Qt::LeftButton);
    StatusFrm *status = window->status().form();
    ASSERT_NE(status, nullptr);
    EXPECT_EQ(status->windowTitle(), QStringLiteral("Status Report Channel 3"));
    EXPECT_EQ(status->label()->text().toStdString(),
        "The following items have timed out: \n Module Data Tag 00C3\n"
        "The following items have reported low LQI: \n Module Data Tag 00C3");
    screenshot(status, "status-report.png");
    QTest::mouseClick(status->button(), Qt::LeftButton);
    EXPECT_TRUE(window->status().StatusClosed());
    prompts.messages.clear();
    QTest::mouseClick(panel(3).button(), Qt::LeftButton);
    ASSERT_EQ(prompts.messages.size(), 1u);
    EXPECT_EQ(prompts.messages[0].title, "Tare");

    // The editor: two more channels, and a mistyped expression that is kept.
    prompts.answers.clear();
    QObject::connect(window.get(), &MainFrm::editorOpened, [this](QDialog *editor) {
        QTimer::singleShot(0, editor, [this, editor] {
            editor->findChild<QComboBox *>(QStringLiteral("cbChannels"))->setCurrentIndex(5);
            auto *list = editor->findChild<QTreeWidget *>(QStringLiteral("LV"));
            EXPECT_EQ(list->topLevelItemCount(), 6);
            list->setCurrentItem(list->topLevelItem(5));
            auto *tag = editor->findChild<QLineEdit *>(QStringLiteral("tbTag"));
            tag->clear();
            QTest::keyClicks(tag, QStringLiteral("<00A1> +* 2"));
            auto *cross = editor->findChild<QLabel *>(QStringLiteral("Cross"));
            EXPECT_TRUE(cross->isVisibleTo(editor));
            EXPECT_TRUE(cross->toolTip().startsWith(QStringLiteral("Error in expression: ")));
            screenshot(editor, "workspace-editor.png");
            editor->close();
        });
    });
    window->mnuEditWorkspace_Click();
    QObject::disconnect(window.get(), &MainFrm::editorOpened, nullptr, nullptr);
    EXPECT_EQ(window->workspace().Channels, 6);
    EXPECT_EQ(window->workspace().item(6).DataTagList, "<00A1> +* 2");
    EXPECT_EQ(window->workspace().item(5).Caption, "Channel 5");
    EXPECT_EQ(window->Disp().size(), 7u);
    EXPECT_TRUE(window->workspaceChanged());
    liveTick("12.5");
    EXPECT_EQ(panel(6).Value(), QStringLiteral("-------"));

    // Save, then reopen what was saved.
    const std::string saved = path("rig-6.lws");
    prompts.files.push_back(saved);
    window->mnuSave_Click();
    EXPECT_FALSE(window->workspaceChanged());
    prompts.files.push_back(saved);
    window->mnuopen_Click();
    EXPECT_EQ(window->workspace().Channels, 6);
    EXPECT_EQ(window->workspace().item(6).DataTagList, "<00A1> +* 2");
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Test rig - Corvalog"));

    // A faster log interval, saved beside the program at once.
    prompts.inputs.push_back("100");
    window->mnuIntervalConfig_Click();
    EXPECT_EQ(window->workspace().LogInterval, 100);
    EXPECT_TRUE(QFileInfo::exists(QString::fromStdString(programFolder() + "/Corvalog.lws")));

    // Start a log with Ctrl+L, let it run, stop it, and open it.
    const std::string log = path("docs/run1.csv");
    prompts.files.push_back(log);
    QApplication::setActiveWindow(window.get());
    QTest::keyClick(window.get(), Qt::Key_L, Qt::ControlModifier);
    ASSERT_TRUE(window->logger().isLogging());
    EXPECT_FALSE(window->action("mnuEditWorkspace")->isEnabled());
    EXPECT_EQ(window->LogLabel()->text().toStdString(), "Logging at 10.0Hz to " + log);
    runEventsFor(450);
    QTest::keyClick(window.get(), Qt::Key_L, Qt::ControlModifier);
    EXPECT_FALSE(window->logger().isLogging());
    EXPECT_TRUE(window->action("mnuEditWorkspace")->isEnabled());
    const std::string csv = readAll(log);
    EXPECT_EQ(csv.rfind("Date,Time,Elapsed mS,Load (kg),Temperature,Strain (silent),", 0), 0u);
    EXPECT_GE(std::count(csv.begin(), csv.end(), '\n'), 4);
    window->mnuViewLog_Click();
    ASSERT_FALSE(prompts.opened.empty());
    EXPECT_EQ(prompts.opened.back(), log);

    // Close with an unsaved change, saving it on the way out.
    QObject::connect(window.get(), &MainFrm::editorOpened, [](QDialog *editor) {
        QTimer::singleShot(0, editor, [editor] {
            editor->findChild<QLineEdit *>(QStringLiteral("tbTitle"))->setText("Rig B");
            editor->close();
        });
    });
    window->mnuEditWorkspace_Click();
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Rig B - Corvalog"));
    prompts.messages.clear();
    prompts.answers.push_back(PromptAnswer::Yes);
    const std::string last = path("rig-b.lws");
    prompts.files.push_back(last);
    EXPECT_TRUE(window->close());
    ASSERT_EQ(prompts.messages.size(), 1u);
    EXPECT_EQ(prompts.messages[0].title, "Unsaved Workspace");
    EXPECT_NE(readAll(last).find("Title=Rig B"), std::string::npos);
}

} // namespace

} // namespace corvalog
