#include "app/WorkSpaceFrm.h"

#include "RecordingPrompts.h"
#include "runtime/Clock.h"
#include "values/ScriptClass.h"
#include "values/ScriptEngine.h"
#include "values/TagReplace.h"
#include "workspace/WorkspaceClass.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>

using namespace corvalog;

namespace {

enum Column {
    ColDescription = 1,
    ColExpression,
    ColFormat,
    ColTare,
    ColTimeout,
    ColDefault,
    ColOverload = 8,
    ColFunction
};

class WorkSpaceFrmTest : public ::testing::Test
{
protected:
    ManualClock clock { 46000.5 };
    ScriptClass sclass { clock };
    ScriptEngine engine { sclass };
    WorkspaceClass workspace;
    RecordingPrompts prompts;
    std::unique_ptr<WorkSpaceFrm> form;

    WorkSpaceFrm &open(bool commaDecimal = false)
    {
        form = std::make_unique<WorkSpaceFrm>(workspace, engine, prompts, commaDecimal);
        return *form;
    }

    template <typename T = QWidget> T *child(const char *name)
    {
        T *found = form->findChild<T *>(QString::fromLatin1(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }

    QTreeWidget &list() { return *child<QTreeWidget>("LV"); }
    QString cell(int channel, int column)
    {
        return list().topLevelItem(form->FindItem(channel))->text(column);
    }
    void choose(int channel)
    {
        list().setCurrentItem(list().topLevelItem(form->FindItem(channel)));
    }
    void retype(const char *box, const QString &text)
    {
        QLineEdit *edit = child<QLineEdit>(box);
        edit->setFocus();
        edit->selectAll();
        if (text.isEmpty())
            QTest::keyClick(edit, Qt::Key_Delete);
        else
            QTest::keyClicks(edit, text);
    }
    void chooseChannelCount(int count)
    {
        child<QComboBox>("cbChannels")->setCurrentIndex(count - 1);
    }
};

TEST_F(WorkSpaceFrmTest, FewerChannelsAreAskedForAndOnlyYesDropsThem)
{
    workspace.item(4).Caption = "Fourth";
    open();
    choose(4);
    prompts.answers = { PromptAnswer::No, PromptAnswer::Yes };
    chooseChannelCount(2);
    EXPECT_EQ(prompts.messages,
        std::vector<RecordingPrompts::Message>({ { "Change Channels",
            "If you reduce the number of channels then the settings for the unused channels will "
            "be lost!\r\nAre you sure you want to continue?",
            PromptIcon::Question, PromptButtons::YesNo } }));
    EXPECT_EQ(workspace.Channels, 4);
    EXPECT_EQ(workspace.item(4).Caption, "Fourth");
    EXPECT_EQ(child<QComboBox>("cbChannels")->currentIndex(), 3);
    EXPECT_EQ(list().topLevelItemCount(), 4);

    chooseChannelCount(2);
    EXPECT_EQ(workspace.Channels, 2);
    EXPECT_EQ(workspace.Items.size(), 2u);
    EXPECT_EQ(list().topLevelItemCount(), 2);
    // The boxes move to a channel that still exists.
    retype("tbCaption", "Still here");
    EXPECT_EQ(workspace.item(1).Caption, "Still here");
}

TEST_F(WorkSpaceFrmTest, MoreChannelsArriveWithTheEditorsDefaults)
{
    workspace.item(4).Caption = "Fourth";
    open();
    chooseChannelCount(6);

    EXPECT_TRUE(prompts.messages.empty());
    EXPECT_EQ(workspace.Channels, 6);
    ASSERT_EQ(workspace.Items.size(), 6u);
    EXPECT_EQ(workspace.item(4).Caption, "Fourth");
    for (int n : { 5, 6 }) {
        const ItemClass &item = workspace.item(n);
        EXPECT_EQ(item.Caption, "Channel " + std::to_string(n));
        EXPECT_EQ(item.Format, "00.000");
        EXPECT_EQ(item.Timeout, 3);
        EXPECT_EQ(item.Underload, -9999999.0f);
        EXPECT_EQ(item.Overload, 9999999.0f);
        EXPECT_EQ(item.Functionality, ChannelFunction::None);
        EXPECT_EQ(cell(n, ColDescription), QString::fromStdString(item.Caption));
    }
}

TEST_F(WorkSpaceFrmTest, ExpressionIsCheckedAndStoredAsTyped)
{
    // Overflow depends on the values of the moment, so it does not make an expression wrong.
    const struct {
        const char *text;
        bool valid;
    } cases[]
        = { { "(<FF12>+<0012>)/2-<3>", true }, { "Frobnicate(<FF12>)", false }, { "T(", false },
              { "<ff12>*2", false }, { "CInt(40000)", true }, { "2*PI", true }, { "1/0", false } };
    open();
    const std::string untouched = workspace.item(1).DataTagList;
    choose(2);
    auto *tick = child<QLabel>("Tick");
    auto *cross = child<QLabel>("Cross");
    auto *box = child<QLineEdit>("tbTag");
    const QColor normal = box->palette().color(QPalette::Text);
    for (const auto &c : cases) {
        SCOPED_TRACE(c.text);
        retype("tbTag", QString::fromLatin1(c.text));
        EXPECT_EQ(workspace.item(2).DataTagList, c.text);
        EXPECT_EQ(cell(2, ColExpression), c.text);
        EXPECT_EQ(tick->isHidden(), !c.valid);
        EXPECT_EQ(cross->isHidden(), c.valid);
        if (c.valid) {
            EXPECT_EQ(box->palette().color(QPalette::Text), normal);
        } else {
            const EvalResult engineSays = engine.Eval(rewriteReferences(c.text));
            EXPECT_EQ(
                cross->toolTip().toStdString(), "Error in expression: " + engineSays.description);
            EXPECT_NE(box->palette().color(QPalette::Text), normal);
        }
    }
    EXPECT_EQ(workspace.item(1).DataTagList, untouched);
}

TEST_F(WorkSpaceFrmTest, ChannelEditsLandInTheChosenItemAndItsRow)
{
    const struct {
        const char *box;
        const char *typed;
        int column;
        const char *shown;
    } cases[] = {
        { "tbCaption", "Load", ColDescription, "Load" },
        { "tbFormat", "0.0", ColFormat, "0.0" },
        { "tbTareValue", "-12.5", ColTare, "-12.5" },
        // Typed digit by digit: the last number that still fitted the seconds stays.
        { "tbTimeout", "99999", ColTimeout, "9999" },
        { "tbDefault", "7.25", ColDefault, "7.25" },
        { "tbOverload", "1e3", ColOverload, "1000" },
    };
    open();
    choose(3);
    for (const auto &c : cases) {
        retype(c.box, QString::fromLatin1(c.typed));
        EXPECT_EQ(cell(3, c.column), c.shown) << c.box;
    }
    child<QComboBox>("ddFunction")->setCurrentIndex(2);
    EXPECT_EQ(cell(3, ColFunction), "Trough Capture");
    const ItemClass &item = workspace.item(3);
    EXPECT_EQ(item.Caption, "Load");
    EXPECT_EQ(item.Format, "0.0");
    EXPECT_EQ(item.TareValue, -12.5f);
    EXPECT_EQ(item.Timeout, 9999);
    EXPECT_EQ(item.Default, 7.25f);
    EXPECT_EQ(item.Overload, 1000.0f);
    EXPECT_EQ(item.Functionality, ChannelFunction::TroughCapture);
    EXPECT_EQ(workspace.item(2).Caption, "Channel 2");

    // An empty Default box means the channel has none.
    retype("tbDefault", QString());
    EXPECT_FALSE(workspace.item(3).Default.has_value());
    EXPECT_EQ(cell(3, ColDefault), "");
}

TEST_F(WorkSpaceFrmTest, NumberBoxesRefuseKeysThatBreakANumber)
{
    const struct {
        const char *box;
        bool commaDecimal;
        const char *typed;
        const char *result;
    } cases[] = {
        { "tbTareValue", false, "-1a2.5,6-", "-12.56" },
        { "tbLogInterval", false, "5x00 ", "500" },
        { "tbFormat", false, "00.0a.0#", "00.0.0" },
        { "tbTareValue", true, "3,5.1", "3,51" },
    };
    for (const auto &c : cases) {
        open(c.commaDecimal);
        retype(c.box, QString::fromLatin1(c.typed));
        EXPECT_EQ(child<QLineEdit>(c.box)->text(), c.result) << c.box << " <- " << c.typed;
    }
    // The comma locale reads and writes the tare with its decimal comma.
    EXPECT_EQ(workspace.item(1).TareValue, 3.51f);
    EXPECT_EQ(cell(1, ColTare), "3,51");
}

// A box left empty or holding no number keeps the setting as it was and shows it is no number;
// a number typed again takes effect.
TEST_F(WorkSpaceFrmTest, ABoxThatHoldsNoNumberKeepsTheSettingAndSaysSo)
{
    const struct {
        const char *box;
        const char *typed;
        std::function<float(const WorkspaceClass &)> setting;
    } cases[] = {
        { "tbTimeout", "abc", [](const WorkspaceClass &w) { return float(w.item(1).Timeout); } },
        { "tbTimeout", "", [](const WorkspaceClass &w) { return float(w.item(1).Timeout); } },
        { "tbTareValue", "", [](const WorkspaceClass &w) { return w.item(1).TareValue; } },
        { "tbTareValue", "-", [](const WorkspaceClass &w) { return w.item(1).TareValue; } },
        { "tbUnderload", "1,2", [](const WorkspaceClass &w) { return w.item(1).Underload; } },
        { "tbOverload", "12kg", [](const WorkspaceClass &w) { return w.item(1).Overload; } },
        { "tbDefault", "x", [](const WorkspaceClass &w) { return w.item(1).Default.value_or(0); } },
        { "tbLogInterval", "", [](const WorkspaceClass &w) { return float(w.LogInterval); } },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.box) + " <- \"" + c.typed + "\"");
        workspace = WorkspaceClass();
        workspace.item(1).Timeout = 7;
        workspace.item(1).TareValue = 2.5f;
        workspace.item(1).Default = 4.0f;
        const float before = c.setting(workspace);
        open();
        QLineEdit *box = child<QLineEdit>(c.box);
        const QString plainTip = box->toolTip();
        box->setText(QString::fromLatin1(c.typed)); // in one piece, as a paste puts it
        EXPECT_TRUE(box->property("notANumber").toBool());
        EXPECT_NE(box->toolTip(), plainTip);
        form->done(QDialog::Accepted);
        EXPECT_EQ(c.setting(workspace), before);

        open();
        retype(c.box, QStringLiteral("9"));
        box = child<QLineEdit>(c.box);
        EXPECT_FALSE(box->property("notANumber").toBool());
        EXPECT_EQ(box->toolTip(), plainTip);
        form->done(QDialog::Accepted);
        EXPECT_EQ(c.setting(workspace), 9.0f);
    }
}

TEST_F(WorkSpaceFrmTest, TextBoxesHoldNoMoreThanAFileGivesBack)
{
    open();
    for (const char *name : { "tbTag", "tbCaption", "tbTitle" }) {
        retype(name, QString(300, QLatin1Char('1')));
        EXPECT_EQ(child<QLineEdit>(name)->text().size(), 254) << name;
    }
    EXPECT_EQ(workspace.item(1).DataTagList, std::string(254, '1'));
}

TEST_F(WorkSpaceFrmTest, PastedTextKeepsOnlyWhatCouldBeTyped)
{
    open().show();
    QLineEdit *tare = child<QLineEdit>("tbTareValue");
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
    QAction *paste = nullptr;
    for (QAction *action : menu->actions()) {
        if (action->text().contains(QStringLiteral("Paste")))
            paste = action;
    }
    ASSERT_NE(paste, nullptr);
    paste->trigger();
    menu->close();
    EXPECT_EQ(tare->text(), "-1");
}

TEST_F(WorkSpaceFrmTest, PortAndBaudrateFollowTheSerialInterface)
{
    workspace.Interface = 1;
    open();
    auto *interface = child<QComboBox>("cbInterface");
    for (const int chosen : { -1, 0, 1 }) {
        if (chosen >= 0)
            interface->setCurrentIndex(chosen);
        const bool serial = interface->currentText() == "Serial Base Station";
        EXPECT_EQ(serial, chosen != 0);
        EXPECT_EQ(child("cbPort")->isEnabled(), serial);
        EXPECT_EQ(child("cbBaudrate")->isEnabled(), serial);
    }
}

TEST_F(WorkSpaceFrmTest, OpeningAndClosingChangesNothingEvenOffTheLists)
{
    workspace.Interface = 2;
    workspace.Port = 40;
    workspace.Baudrate = 12345;
    workspace.RFChannel = 300;
    workspace.BSAddress = 7;
    workspace.KeepAwake = 5;
    workspace.LogInterval = 250;
    workspace.Notes = "first\r\nsecond";
    workspace.item(1).Default.reset();
    workspace.item(2).Functionality = static_cast<ChannelFunction>(7);
    workspace.item(3).TareValue = 1e20f;
    const WorkspaceClass before = workspace;
    open().show();
    form->close();
    EXPECT_FALSE(workspacesDiffer(workspace, before));
}

TEST_F(WorkSpaceFrmTest, EveryWayOfClosingHandsTheSettingsBack)
{
    const std::pair<const char *, std::function<void(WorkSpaceFrm &)>> ways[] = {
        { "close box", [](WorkSpaceFrm &f) { f.close(); } },
        { "OK",
            [](WorkSpaceFrm &f) {
                QTest::mouseClick(f.findChild<QPushButton *>("btnOK"), Qt::LeftButton);
            } },
        { "Escape", [](WorkSpaceFrm &f) { QTest::keyClick(&f, Qt::Key_Escape); } },
    };
    for (const auto &[way, close] : ways) {
        SCOPED_TRACE(way);
        workspace = WorkspaceClass();
        open().show();
        retype("tbTitle", QStringLiteral("Rig %1").arg(QString::fromLatin1(way)));
        retype("tbLogInterval", QStringLiteral("20"));
        child<QCheckBox>("cbKeepAwake")->setChecked(true);
        child<QPlainTextEdit>("tbNotes")->setPlainText(QStringLiteral("a\nb"));
        // Nothing goes back while the dialog is open.
        EXPECT_EQ(workspace.Title, "Title Text");
        close(*form);
        EXPECT_TRUE(form->isHidden());
        EXPECT_EQ(workspace.Title, std::string("Rig ") + way);
        EXPECT_EQ(workspace.LogInterval, 20);
        EXPECT_EQ(workspace.KeepAwake, 1);
        EXPECT_EQ(workspace.Notes, "a\r\nb");
    }
}

TEST_F(WorkSpaceFrmTest, HelpGoesToTheControlTheUserWasIn)
{
    struct HelpKeys : QObject {
        int count = 0;
        bool eventFilter(QObject *, QEvent *event) override
        {
            if (event->type() == QEvent::KeyPress
                && static_cast<QKeyEvent *>(event)->key() == Qt::Key_F1)
                ++count;
            return false;
        }
    } helpKeys;
    open().show();
    form->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(form.get()));
    QLineEdit *tag = child<QLineEdit>("tbTag");
    tag->setFocus();
    tag->installEventFilter(&helpKeys);
    QTest::mouseClick(child<QPushButton>("btnHelp"), Qt::LeftButton);
    EXPECT_EQ(helpKeys.count, 1);
    EXPECT_EQ(QApplication::focusWidget(), tag);
}

} // namespace
