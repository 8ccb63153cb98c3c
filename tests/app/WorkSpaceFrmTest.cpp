#include "app/WorkSpaceFrm.h"

#include "FileText.h"
#include "RecordingPrompts.h"
#include "acquisition/DriverSettings.h"
#include "app/HeardModulesDialog.h"
#include "app/HelpWindow.h"
#include "runtime/Clock.h"
#include "values/ScriptClass.h"
#include "values/ScriptEngine.h"
#include "workspace/WorkspaceClass.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBrowser>
#include <QTimer>
#include <QTreeWidget>
#include <functional>
#include <gtest/gtest.h>
#include <tuple>

using namespace corvalog;

namespace {

// The list's columns.
namespace col {
enum { Description = 1, Expression, Format, Tare, Timeout, Default, Overload = 8, Function };
} // namespace col

class WorkSpaceFrmTest : public ::testing::Test
{
protected:
    ManualClock clock { 46000.5 };
    ScriptClass sclass { clock };
    ScriptEngine engine { sclass };
    WorkspaceClass workspace;
    RecordingPrompts prompts;
    std::string settingsFile;
    std::unique_ptr<WorkSpaceFrm> form;

    WorkSpaceFrm &open(bool commaDecimal = false)
    {
        form = std::make_unique<WorkSpaceFrm>(
            workspace, engine, prompts, commaDecimal, settingsFile);
        return *form;
    }
    template <typename T = QLineEdit> T *child(const char *n) { return form->findChild<T *>(n); }
    QTreeWidget &list() { return *child<QTreeWidget>("LV"); }
    QString cell(int n, int column) { return list().topLevelItem(form->FindItem(n))->text(column); }
    void choose(int n) { list().setCurrentItem(list().topLevelItem(form->FindItem(n))); }
    // Types over what a box holds, key by key as a user does.
    void retype(const char *box, const QString &text)
    {
        child(box)->selectAll();
        QTest::keyClick(child(box), Qt::Key_Delete);
        QTest::keyClicks(child(box), text);
    }
};

// More channels arrive at once with the editor's defaults; fewer are asked about first, and
// only Yes drops them.
TEST_F(WorkSpaceFrmTest, ChangingTheChannelCount)
{
    workspace.item(4).Caption = "Fourth";
    open();
    child<QComboBox>("cbChannels")->setCurrentIndex(5);
    ASSERT_EQ(workspace.Items.size(), 6u);
    EXPECT_EQ(workspace.item(4).Caption, "Fourth");
    EXPECT_EQ(cell(6, col::Description), "Channel 6");

    choose(6);
    prompts.answers = { PromptAnswer::No, PromptAnswer::Yes };
    child<QComboBox>("cbChannels")->setCurrentIndex(1);
    ASSERT_EQ(prompts.messages.size(), 1u); // only now
    EXPECT_EQ(prompts.messages[0].buttons, PromptButtons::YesNo);
    EXPECT_EQ(workspace.Channels, 6);
    EXPECT_EQ(child<QComboBox>("cbChannels")->currentIndex(), 5);

    child<QComboBox>("cbChannels")->setCurrentIndex(1);
    EXPECT_EQ(workspace.Channels, 2);
    EXPECT_EQ(workspace.Items.size(), 2u);
    retype("tbCaption", "Still here"); // the boxes moved to a channel that still exists
    EXPECT_EQ(workspace.item(1).Caption, "Still here");
}

TEST_F(WorkSpaceFrmTest, ChannelEditsLandInTheChosenItemAndItsRow)
{
    // The box, what is typed into it, and the list column that then shows it.
    const std::tuple<const char *, std::string, int, std::string> cases[] = {
        { "tbCaption", "Load", col::Description, "Load" },
        { "tbTag", "<FF12> +* 2", col::Expression, "<FF12> +* 2" }, // kept, though it is wrong
        // No more than a workspace file gives back: a cut expression would change its meaning.
        { "tbTag", std::string(300, '1'), col::Expression, std::string(254, '1') },
        { "tbFormat", "0.0", col::Format, "0.0" }, { "tbTareValue", "-12.5", col::Tare, "-12.5" },
        // Typed digit by digit: the last number that still fitted the seconds stays.
        { "tbTimeout", "99999", col::Timeout, "9999" },
        { "tbOverload", "1e3", col::Overload, "1000" },
        { "tbDefault", "7.25", col::Default, "7.25" },
        { "tbDefault", "", col::Default, "" }, // an empty box: the channel has no default
    };
    open();
    choose(3);
    for (const auto &[box, typed, column, shown] : cases) {
        retype(box, QString::fromStdString(typed));
        EXPECT_EQ(cell(3, column).toStdString(), shown) << box;
    }
    child<QComboBox>("ddFunction")->setCurrentIndex(2);
    EXPECT_EQ(cell(3, col::Function), "Trough Capture");
    EXPECT_FALSE(workspace.item(3).Default.has_value());
    EXPECT_EQ(workspace.item(2).Caption, "Channel 2");
}

TEST_F(WorkSpaceFrmTest, NumberBoxesRefuseKeysThatBreakANumber)
{
    // The box, whether numbers have a decimal comma, the keys typed and what the box holds.
    const std::tuple<const char *, bool, const char *, const char *> cases[] = {
        { "tbTareValue", false, "-1a2.5,6-", "-12.56" },
        { "tbLogInterval", false, "5x00 ", "500" },
        { "tbFormat", false, "00.0a.0#", "00.0.0" },
        { "tbTareValue", true, "3,5.1", "3,51" },
    };
    for (const auto &[box, commaDecimal, typed, result] : cases) {
        open(commaDecimal);
        retype(box, QString::fromLatin1(typed));
        EXPECT_EQ(child(box)->text(), result) << box << " <- " << typed;
    }
    // The comma locale reads and writes the tare with its decimal comma.
    EXPECT_EQ(workspace.item(1).TareValue, 3.51f);
    EXPECT_EQ(cell(1, col::Tare), "3,51");
}

// Text that arrives in one piece (a paste) and holds no number keeps the setting as it was,
// and the box says so until it holds a number again.
TEST_F(WorkSpaceFrmTest, ABoxThatHoldsNoNumberKeepsTheSettingAndSaysSo)
{
    const std::pair<const char *, const char *> cases[]
        = { { "tbTimeout", "abc" }, { "tbTareValue", "-" }, { "tbUnderload", "1,2" },
              { "tbDefault", "x" }, { "tbLogInterval", "" } };
    for (const auto &[name, typed] : cases) {
        SCOPED_TRACE(std::string(name) + " <- \"" + typed + "\"");
        for (const bool typedAgain : { false, true }) {
            const WorkspaceClass before = workspace;
            open();
            QLineEdit *box = child(name);
            const QString plainTip = box->toolTip();
            box->setText(QString::fromLatin1(typed));
            EXPECT_NE(box->toolTip(), plainTip);
            if (typedAgain)
                retype(name, QStringLiteral("9"));
            EXPECT_EQ(box->property("notANumber").toBool(), !typedAgain);
            form->done(QDialog::Accepted);
            EXPECT_EQ(workspacesDiffer(workspace, before), typedAgain);
        }
    }
}

TEST_F(WorkSpaceFrmTest, PastedTextKeepsOnlyWhatCouldBeTyped)
{
    open().show();
    QLineEdit *tare = child("tbTareValue");
    QGuiApplication::clipboard()->setText(QStringLiteral("12.5 kg"));
    tare->selectAll();
    QTest::keySequence(tare, QKeySequence::Paste);
    EXPECT_EQ(tare->text(), "12.5");
    EXPECT_EQ(workspace.item(1).TareValue, 12.5f);

    // The context menu's Paste goes through the same filter.
    QGuiApplication::clipboard()->setText(QStringLiteral("a-1b"));
    tare->selectAll();
    QContextMenuEvent menuAsked(
        QContextMenuEvent::Mouse, QPoint(2, 2), tare->mapToGlobal(QPoint(2, 2)));
    QApplication::sendEvent(tare, &menuAsked);
    auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    for (QAction *action : menu->actions()) {
        if (action->text().contains(QStringLiteral("Paste")))
            action->trigger();
    }
    menu->close();
    EXPECT_EQ(tare->text(), "-1");
}

// The general settings go back when the dialog closes, however it is closed; what was not
// edited goes back as it was, even where the lists do not offer it.
TEST_F(WorkSpaceFrmTest, EveryWayOfClosingHandsBackWhatWasEditedAndOnlyThat)
{
    workspace.Interface = 2;
    workspace.Port = 40;
    workspace.Baudrate = 12345;
    workspace.RFChannel = 300;
    workspace.BSAddress = 7;
    workspace.KeepAwake = 5;
    workspace.item(1).Default.reset();
    workspace.item(2).Functionality = static_cast<ChannelFunction>(7);
    workspace.item(3).TareValue = 1e20f;
    const WorkspaceClass before = workspace;
    WorkspaceClass edited = before;
    edited.Title = "Rig";
    edited.LogInterval = 20;
    edited.Notes = "a\r\nb";
    const std::function<void(WorkSpaceFrm &)> ways[] = {
        [](WorkSpaceFrm &f) { f.close(); },
        [](WorkSpaceFrm &f) {
            QTest::mouseClick(f.findChild<QPushButton *>("btnOK"), Qt::LeftButton);
        },
        [](WorkSpaceFrm &f) { QTest::keyClick(&f, Qt::Key_Escape); },
    };
    for (const auto &close : ways) {
        workspace = before;
        open().show();
        retype("tbTitle", QStringLiteral("Rig"));
        retype("tbLogInterval", QStringLiteral("20"));
        child<QPlainTextEdit>("tbNotes")->setPlainText(QStringLiteral("a\nb"));
        EXPECT_FALSE(workspacesDiffer(workspace, before)); // nothing goes back while it is open
        close(*form);
        EXPECT_TRUE(form->isHidden());
        EXPECT_FALSE(workspacesDiffer(workspace, edited));
    }
}

// The Help button leaves the focus where it was, so the manual opens at that control's topic.
TEST_F(WorkSpaceFrmTest, HelpOpensTheManualAtTheTopicOfTheControlTheUserWasIn)
{
    QTemporaryDir dir;
    writeFile(dir.filePath("manual.html").toStdString(),
        "<html><body><h1 id=\"contents\">Contents</h1><h2 id=\"expressions\">Ex</h2>");
    open().show();
    HelpWindow help(manualPath(dir.path()), form.get());
    form->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(form.get()));
    child("tbTag")->setFocus();
    QTest::mouseClick(child<QPushButton>("btnHelp"), Qt::LeftButton);
    ASSERT_NE(help.browser(), nullptr);
    EXPECT_EQ(help.browser()->source().fragment(), QStringLiteral("expressions"));
}

} // namespace

namespace {

// The ports are the devices the settings map and those present, in port order; the
// workspace's port is offered even when no device stands for it, so it is kept.
TEST_F(WorkSpaceFrmTest, ThePortListHoldsTheMappedDevicesAndTheWorkspacesPort)
{
    QTemporaryDir dir;
    const std::string settings = "[Driver]\nCOM3=/tmp/x\n";
    settingsFile = writeFile(dir.filePath("config.ini").toStdString(), settings);
    workspace.Interface = 1;
    workspace.Port = 200;
    open();
    QComboBox &ports = *child<QComboBox>("cbPort");
    ASSERT_GE(ports.findData(3), 0);
    EXPECT_EQ(ports.itemText(ports.findData(3)), QString::fromUtf8("3 \u2014 /tmp/x"));
    EXPECT_EQ(ports.currentText(), QString::fromUtf8("200 \u2014 /dev/ttyS199"));
    for (int index = 1; index < ports.count(); ++index)
        EXPECT_LT(ports.itemData(index - 1).toInt(), ports.itemData(index).toInt());
    form->done(QDialog::Accepted);
    EXPECT_EQ(workspace.Port, 200);
    EXPECT_EQ(fileText(settingsFile), settings); // the port opens the device it always did

    // With nothing mapped or present, a number can still be chosen.
    if (serialPortEntries({}).empty()) {
        settingsFile.clear();
        open();
        QComboBox &fallback = *child<QComboBox>("cbPort");
        EXPECT_EQ(fallback.count(), 17);
        EXPECT_EQ(fallback.itemText(0), QString::fromUtf8("1 \u2014 /dev/ttyS0"));
        EXPECT_EQ(fallback.currentData().toInt(), 200);
    }
}

// The chosen port is mapped to the device it was listed with wherever the settings (read as
// the dialog closes) map it to another, and only for the serial interface.
TEST_F(WorkSpaceFrmTest, ClosingMapsTheChosenSerialPortToItsDevice)
{
    QTemporaryDir dir;
    settingsFile = dir.filePath("config.ini").toStdString();
    // The interface, and the device COM3 opens afterwards.
    const std::pair<std::int16_t, const char *> cases[] = { { 1, "/tmp/x" }, { 0, "/tmp/y" } };
    for (const auto &[interface, device] : cases) {
        writeFile(settingsFile, "[Driver]\nCOM3=/tmp/x\n");
        workspace.Interface = interface;
        open();
        QComboBox &ports = *child<QComboBox>("cbPort");
        ports.setCurrentIndex(ports.findData(3));
        writeFile(settingsFile, "[Driver]\nCOM3=/tmp/y\n"); // changed meanwhile
        form->done(QDialog::Accepted);
        EXPECT_EQ(workspace.Port, 3);
        EXPECT_EQ(readDriverSettings(settingsFile).comDevice(3), device) << interface;
    }
    // The everyday case, where this machine has a device present that nothing maps.
    writeFile(settingsFile, "");
    const DriverSettings unmapped = readDriverSettings(settingsFile);
    for (const SerialPortEntry &entry : serialPortEntries(unmapped)) {
        if (entry.device == unmapped.comDevice(entry.port))
            continue;
        workspace.Interface = 1;
        open();
        QComboBox &ports = *child<QComboBox>("cbPort");
        ports.setCurrentIndex(ports.findData(entry.port));
        form->done(QDialog::Accepted);
        EXPECT_EQ(readDriverSettings(settingsFile).comDevice(entry.port), entry.device);
        break;
    }
    EXPECT_TRUE(prompts.messages.empty());
}

// The module chosen in Modules Heard goes in at the cursor as if typed: the channel takes it
// and the expression is checked again.
TEST_F(WorkSpaceFrmTest, ModulesInsertsTheChosenModuleAtTheCursor)
{
    sclass.setT(0xAB, 4);
    open().show();
    retype("tbTag", QStringLiteral("2*+1"));
    child("tbTag")->setCursorPosition(2);
    QTimer::singleShot(0, form.get(), [this] {
        auto *modules = form->findChild<HeardModulesDialog *>();
        ASSERT_NE(modules, nullptr);
        QTest::mouseClick(modules->findChild<QPushButton *>("btnInsert"), Qt::LeftButton);
    });
    QTest::mouseClick(child<QPushButton>("btnModules"), Qt::LeftButton);
    EXPECT_EQ(child("tbTag")->text(), QStringLiteral("2*<00AB>+1"));
    EXPECT_EQ(workspace.item(1).DataTagList, "2*<00AB>+1");
    EXPECT_TRUE(child<QLabel>("Tick")->isVisibleTo(form.get()));
}

} // namespace
