#include "AppFixture.h"
#include "app/AppStyle.h"
#include "app/FormAbout.h"
#include "app/HelpTopics.h"
#include "displays/LCDModule.h"
#include "displays/TableContainer.h"
#include "runtime/NumberLocale.h"
#include "workspace/Settings.h"

#include <QAction>
#include <QCloseEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>
#include <QTextBrowser>

namespace corvalog {

namespace {

using MainFrmStartUp = AppFixture;

TEST_F(MainFrmStartUp, TheLastWorkspaceComesUpLiveInANormalInstallation)
{
    const std::string file = path("bench.lws");
    writeFile(file, workspaceText(3, "Rig A"));
    rememberWorkspace(file);
    ASSERT_TRUE(start());

    EXPECT_FALSE(window->FixedInstall());
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Rig A - Corvalog"));
    EXPECT_TRUE(window->action("mnuopen")->isVisible());
    EXPECT_EQ(window->Disp().size(), 4u);
    EXPECT_TRUE(window->screenTimerActive());
    EXPECT_FALSE(window->windowIcon().isNull());
    EXPECT_EQ(window->Vers()->text(),
        QStringLiteral("v%1.%2.%3")
            .arg(CORVALOG_VERSION_MAJOR)
            .arg(CORVALOG_VERSION_MINOR)
            .arg(CORVALOG_VERSION_PATCH));
    EXPECT_EQ(window->ImageLogo()->toolTip(), QStringLiteral("Go to https://corvalog.example.com"));
    // The driver check made one object and let it go; activation made the one that is kept.
    EXPECT_EQ(std::vector<std::string>(calls.begin(), calls.begin() + 3),
        std::vector<std::string>({ "create", "create", "OpenInterface(0,0)" }));
    // Nothing needed time to let go of a port.
    EXPECT_TRUE(busyWaits.empty());
    EXPECT_TRUE(prompts.messages.empty());

    packet(1, "12.5");
    window->ScreenTimer_Timer();
    EXPECT_EQ(window->Disp()[1]->Value(), QStringLiteral("12.50"));
}

// In a decimal-comma locale the panels light their point for the comma from the first frame
// of an activation on, and the start-up's separators are the process's.
TEST_F(MainFrmStartUp, TheLocalesSeparatorsHoldFromTheFirstFrame)
{
    ScopedNumberLocale restore(numberLocale());
    const std::string file = path("bench.lws");
    writeFile(file, workspaceText(1, "Rig"));
    rememberWorkspace(file);
    window = std::make_unique<MainFrm>([&] {
        MainFrmOptions o = options();
        o.locale = NumberLocale::comma();
        o.locale.dateSeparator = '.';
        return o;
    }());
    ASSERT_TRUE(window->Form_Load());
    EXPECT_EQ(window->Disp()[1]->Value(), QStringLiteral("0.00"));
    EXPECT_EQ(numberLocale().dateSeparator, '.');
    packet(1, "12,5");
    window->ScreenTimer_Timer();
    EXPECT_EQ(window->Disp()[1]->Value(), QStringLiteral("12.50"));
}

TEST_F(MainFrmStartUp, AFixedWorkspaceBesideTheProgramCannotBeExchanged)
{
    writeFile(programFolder() + "/Corvalog.lws", workspaceText(2, "Line 4"));
    const std::string other = path("other.lws");
    writeFile(other, workspaceText(5, "Other"));
    rememberWorkspace(other);
    ASSERT_TRUE(start());

    EXPECT_TRUE(window->FixedInstall());
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Line 4"));
    EXPECT_EQ(window->workspace().Channels, 2);
    for (const char *hidden : { "mnuopen", "mnuSave" })
        EXPECT_FALSE(window->action(hidden)->isVisible()) << hidden;
    EXPECT_FALSE(window->findChild<QAction *>(QStringLiteral("mnublank"))->isVisible());
    EXPECT_TRUE(window->action("mnuEditWorkspace")->isVisible());
}

TEST_F(MainFrmStartUp, WithoutAWorkspaceFileTheDefaultsAreShown)
{
    ASSERT_TRUE(start());
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Title Text - Corvalog"));
    EXPECT_EQ(window->Disp().size(), 5u);
    EXPECT_TRUE(prompts.messages.empty());
}

TEST_F(MainFrmStartUp, TheCalibrationMenuNeedsTheWordWorkbayAlone)
{
    const struct {
        const char *commandLine;
        bool shown;
    } cases[] = { { "workbay", true }, { "WorkBay", true }, { "WORKBAY", true },
        { "workbay now", false }, { " workbay", false }, { "", false }, { "work bay", false } };
    for (const auto &c : cases) {
        commandLine = c.commandLine;
        ASSERT_TRUE(start());
        EXPECT_EQ(window->mnuCalibration()->menuAction()->isVisible(), c.shown)
            << '"' << c.commandLine << '"';
        window.reset();
    }
}

QColor logoColour(MainFrm &window)
{
    const QImage image = window.ImageLogo()->pixmap().toImage();
    return image.isNull() ? QColor() : image.pixelColor(image.width() / 2, image.height() / 2);
}

void writeJpeg(const std::string &file, Qt::GlobalColor colour)
{
    QImage image(40, 20, QImage::Format_RGB32);
    image.fill(colour);
    ASSERT_TRUE(image.save(QString::fromStdString(file), "JPG"));
}

// A 4 by 4 blue GIF (Qt reads GIF but does not write it).
void writeBlueGif(const std::string &file)
{
    const unsigned char gif[] = { 0x47, 0x49, 0x46, 0x38, 0x39, 0x61, 0x04, 0x00, 0x04, 0x00, 0xf0,
        0x00, 0x00, 0x00, 0x00, 0xff, 0x00, 0x00, 0x00, 0x21, 0xf9, 0x04, 0x00, 0x00, 0x00, 0x00,
        0x00, 0x2c, 0x00, 0x00, 0x00, 0x00, 0x04, 0x00, 0x04, 0x00, 0x00, 0x02, 0x04, 0x84, 0x8f,
        0x09, 0x05, 0x00, 0x3b };
    std::ofstream(file, std::ios::binary).write(reinterpret_cast<const char *>(gif), sizeof gif);
}

TEST_F(MainFrmStartUp, AJpegLogoWinsOverAGifAndBadPicturesAreIgnored)
{
    writeBlueGif(programFolder() + "/Corvalog.gif");
    ASSERT_TRUE(start());
    EXPECT_EQ(logoColour(*window), QColor(Qt::blue));

    writeJpeg(programFolder() + "/Corvalog.jpg", Qt::white);
    ASSERT_TRUE(start());
    EXPECT_EQ(logoColour(*window).lightness(), 255);

    writeFile(programFolder() + "/Corvalog.jpg", "not a picture");
    ASSERT_TRUE(start());
    EXPECT_EQ(logoColour(*window), QColor(Qt::blue));
    EXPECT_TRUE(prompts.messages.empty());
}

TEST_F(MainFrmStartUp, NoDriverEndsTheProgramWithItsMessage)
{
    factoryFails = true;
    EXPECT_FALSE(start());
    EXPECT_EQ(prompts.messages,
        std::vector<RecordingPrompts::Message>({ { "Corvalog",
            "ZentaDataProviderCOM.DLL possibly not registered!\r\nError: Corvalog UDP receiver "
            "(udp:9): Address already in use [Code: 429]",
            PromptIcon::Critical, PromptButtons::Ok } }));
    EXPECT_FALSE(window->screenTimerActive());
    EXPECT_EQ(window->Disp().size(), 1u); // nothing was activated
}

using MainFrmActivation = AppFixture;

TEST_F(MainFrmActivation, PanelsFollowTheWorkspace)
{
    const std::string file = path("w.lws");
    writeFile(file, workspaceText(24));
    rememberWorkspace(file);
    ASSERT_TRUE(start());
    EXPECT_EQ(window->Disp().size(), 25u);

    const struct {
        int channels;
        const char *functions; // per channel: 0 none, 1 peak, 2 trough
        bool startLog;
    } cases[] = { { 3, "120", true }, { 0, "", false }, { 2, "21", true } };
    for (const auto &c : cases) {
        std::string extra;
        for (int n = 1; c.functions[n - 1]; ++n)
            extra += "Function" + std::to_string(n) + "=" + c.functions[n - 1] + "\n";
        writeFile(file, workspaceText(c.channels, "W", extra));
        prompts.files.push_back(file);
        window->mnuopen_Click();

        ASSERT_EQ(window->Disp().size(), static_cast<std::size_t>(c.channels + 1));
        const auto panels = window->grid()->findChildren<LCDModule *>();
        EXPECT_EQ(std::count_if(panels.begin(), panels.end(),
                      [](LCDModule *p) { return p->isVisibleTo(p->parentWidget()); }),
            c.channels);
        for (int n = 1; n <= c.channels; ++n) {
            const char f = c.functions[n - 1];
            EXPECT_EQ(window->Disp()[n]->BtnCaption(),
                f == '0' ? QStringLiteral("Zero") : QStringLiteral("Reset"));
            EXPECT_EQ(window->Disp()[n]->Value(), QStringLiteral("0.00"));
            if (f != '0') {
                EXPECT_EQ(window->values().working(n),
                    f == '1' ? ChannelValues::kPeakSeed : ChannelValues::kTroughSeed);
            }
        }
        EXPECT_EQ(window->action("mnuStartLog")->isEnabled(), c.startLog);
        EXPECT_FALSE(window->action("mnuStopLog")->isEnabled());
        if (c.channels > 0) {
            EXPECT_EQ(window->workspace().item(1).DataTagExpression, "T(1)");
        }
    }
    // Every later activation closed the driver first and waited for it to let go.
    EXPECT_EQ(busyWaits, std::vector<std::int32_t>({ 1000, 500, 1000, 500, 1000, 500 }));
}

// Packets the source lost are told once an activation, from the event loop.
TEST_F(MainFrmActivation, LostPacketsAreToldOnceAnActivation)
{
    ASSERT_TRUE(start());
    window->ScreenTimer_Timer();
    QCoreApplication::processEvents();
    EXPECT_TRUE(prompts.messages.empty());
    driver->systemDrops = 5;
    window->ScreenTimer_Timer();
    EXPECT_TRUE(prompts.messages.empty()); // not inside the refresh
    QCoreApplication::processEvents();
    driver->systemDrops = 9;
    window->ScreenTimer_Timer();
    QCoreApplication::processEvents();
    ASSERT_EQ(prompts.messages.size(), 1u);
    EXPECT_EQ(prompts.messages[0],
        (RecordingPrompts::Message { "Warning",
            "Packets from the data source were lost: 5 datagrams were dropped by the system "
            "before they could be read (its receive buffer was full). Further losses are not "
            "told until a workspace is activated again.",
            PromptIcon::Exclamation, PromptButtons::Ok }));

    window->SetupDisplays(); // a new activation, a new driver that has lost nothing yet
    packet(0x10000, "1"); // a Data Tag beyond the tables cannot be stored
    window->ScreenTimer_Timer();
    QCoreApplication::processEvents();
    ASSERT_EQ(prompts.messages.size(), 2u);
    EXPECT_NE(prompts.messages[1].text.find("1 packets could not be stored, 0 were dropped"),
        std::string::npos);
}

TEST_F(MainFrmActivation, TheWindowIsFittedAroundTheGridAtTheStoredWidth)
{
    const std::string file = path("w.lws");
    writeFile(file, workspaceText(10));
    rememberWorkspace(file);
    const struct {
        int storedWidth;
        int perRow;
    } cases[] = { { 16000, 4 }, { 10000, 3 }, { 3000, 1 } };
    for (const auto &c : cases) {
        QSettings(settingsStore(), QSettings::IniFormat).setValue("Size/Width", c.storedWidth);
        ASSERT_TRUE(start());
        window->show();
        QCoreApplication::processEvents();
        const QSize extent = window->grid()->scaleExtentTwips();
        EXPECT_EQ(extent.width(), c.perRow * LCDModule::kWidthTwips) << c.storedWidth;
        // Offscreen windows have no frame: the border is 0 and the caption is the menu bar. The
        // menus and the screen bound the fitted size.
        const QRect room = window->screen()->availableGeometry();
        EXPECT_EQ(window->width(),
            std::max(twipsToPixels(extent.width()), window->menuBar()->sizeHint().width()));
        const int menu = window->menuBar()->sizeHint().height();
        const int fitted = twipsToPixels(extent.height() + menu * 15 - 300);
        EXPECT_EQ(window->height(), std::min(fitted, room.height()));
        // Every panel can be seen without scrolling, where the screen has room for them.
        auto *scroll = window->findChild<QScrollArea *>();
        EXPECT_EQ(scroll->verticalScrollBar()->isVisible(), fitted > room.height())
            << c.storedWidth;
        // A narrower window flows the panels into fewer columns.
        window->resize(twipsToPixels(LCDModule::kWidthTwips) + 10, window->height());
        QCoreApplication::processEvents();
        EXPECT_EQ(window->grid()->scaleExtentTwips().width(), LCDModule::kWidthTwips);
        window.reset();
    }
}

using MainFrmCalibration = AppFixture;

TEST_F(MainFrmCalibration, PauseAndResumeReachTheModuleOfAChannel)
{
    const std::string file = path("w.lws");
    std::string text = workspaceText(2);
    text.replace(text.find("<0002>"), 6, "3*2");
    writeFile(file, text);
    rememberWorkspace(file);
    commandLine = "workbay";
    ASSERT_TRUE(start());
    const struct {
        bool pause;
        std::optional<std::string> answer;
        std::string message; // a message box, or "" for none
        std::string status; // the status window's last line, or "" for none
    } cases[] = {
        { true, "1", "", "Channel 1: the module is paused." },
        { false, "1", "", "Channel 1: the module is running again." },
        { true, "7", "Pause Module: There is no channel 7.", "" },
        { false, "2", "Resume Module: Channel 2 does not refer to a module.", "" },
        { true, std::nullopt, "", "" },
    };
    for (const auto &c : cases) {
        prompts.messages.clear();
        prompts.inputs.push_back(c.answer);
        window->status().unload();
        driver->acknowledgeOnAttempt = driver->sendCommandCalls; // answers at once
        window->mnuPauseResume_Click(c.pause);
        EXPECT_EQ(messageTexts(),
            c.message.empty() ? std::vector<std::string>()
                              : std::vector<std::string>({ c.message }));
        StatusFrm *status = window->status().form();
        EXPECT_EQ(status ? status->label()->text().toStdString() : "", c.status);
    }
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "SendCommand(1,1,57,0)"), 1);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "SendCommand(1,1,59,0)"), 1);
}

using MainFrmClosing = AppFixture;

TEST_F(MainFrmClosing, AnUnsavedWorkspaceIsAskedAbout)
{
    const struct {
        const char *name;
        std::vector<PromptAnswer> answers;
        std::string saveTo; // "" cancels the save dialog
        bool closes;
    } cases[] = {
        { "cancel", { PromptAnswer::Cancel }, "", false },
        { "yes, then cancel the dialog", { PromptAnswer::Yes }, "", false },
        { "yes, and save", { PromptAnswer::Yes }, "saved.lws", true },
        { "no", { PromptAnswer::No }, "", true },
    };
    for (const auto &c : cases) {
        ASSERT_TRUE(start());
        window->show();
        // The editor marks the workspace changed.
        const QString title = QString::fromLatin1(c.name);
        QObject::connect(window.get(), &MainFrm::editorOpened, [title](QDialog *editor) {
            QTimer::singleShot(0, editor, [editor, title] {
                editor->findChild<QLineEdit *>(QStringLiteral("tbTitle"))->setText(title);
                editor->close();
            });
        });
        window->mnuEditWorkspace_Click();
        ASSERT_TRUE(window->workspaceChanged()) << c.name;
        prompts.messages.clear();
        prompts.answers.assign(c.answers.begin(), c.answers.end());
        if (!c.saveTo.empty())
            prompts.files.push_back(path(c.saveTo));
        calls.clear();

        EXPECT_EQ(window->close(), c.closes) << c.name;
        EXPECT_EQ(prompts.messages,
            std::vector<RecordingPrompts::Message>({ { "Unsaved Workspace",
                "You have made changes to the workspace but have not saved those changes!\r\n"
                "Would you like to save the workspace now?",
                PromptIcon::Question, PromptButtons::YesNoCancel } }))
            << c.name;
        EXPECT_EQ(window->closing(), c.closes) << c.name;
        EXPECT_EQ(window->workspaceChanged(), !c.closes || c.answers[0] == PromptAnswer::No)
            << c.name;
        EXPECT_EQ(!calls.empty() && calls[0] == "CloseInterface()", c.closes) << c.name;
        if (!c.saveTo.empty()) {
            EXPECT_TRUE(QFileInfo::exists(QString::fromStdString(path(c.saveTo))));
        }
        window.reset();
    }
}

TEST_F(MainFrmClosing, ClosingDuringActivationDoesNothing)
{
    ASSERT_TRUE(start());
    window->show();
    bool closed = true;
    duringWait = [&] {
        if (window->activationBusy())
            closed = window->close();
    };
    window->SetupDisplays();
    duringWait = nullptr;
    EXPECT_FALSE(closed);
    EXPECT_FALSE(window->closing());
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(prompts.messages.empty());
}

TEST_F(MainFrmClosing, TheWindowSizeIsStoredUnlessMinimised)
{
    ASSERT_TRUE(start());
    window->show();
    window->resize(700, 300);
    const QSize outer = window->frameGeometry().size();
    ASSERT_TRUE(window->close());
    const WindowSize stored
        = readWindowSize(*std::make_unique<QSettings>(settingsStore(), QSettings::IniFormat));
    EXPECT_EQ(stored.width, outer.width() * 15);
    EXPECT_EQ(stored.height, outer.height() * 15);
    // The driver was closed, given its second and released.
    EXPECT_EQ(busyWaits.back(), 1000);
    EXPECT_EQ(window->driverHost().driver(), nullptr);

    ASSERT_TRUE(start());
    window->show();
    window->resize(500, 200);
    window->showMinimized();
    window->SaveForm();
    const WindowSize kept
        = readWindowSize(*std::make_unique<QSettings>(settingsStore(), QSettings::IniFormat));
    EXPECT_EQ(kept.width, outer.width() * 15);
}

TEST(FormAbout, TheVersionLineHasOneDecimalPerDriverVersion)
{
    const struct {
        std::optional<float> com, dll;
        const char *expected;
    } cases[] = {
        { 1.5f, 2.5f, "App: 0.1.0 | Drv COM: 1.5 | Drv DLL: 2.5" },
        { 1.0f, 12.04f, "App: 0.1.0 | Drv COM: 1.0 | Drv DLL: 12.0" },
        { 0.96f, 3.0f, "App: 0.1.0 | Drv COM: 1.0 | Drv DLL: 3.0" },
        { std::nullopt, std::nullopt, "App: 0.1.0 | Drv COM: none | Drv DLL: none" },
    };
    for (const auto &c : cases)
        EXPECT_EQ(versionLine(0, 1, 0, c.com, c.dll), c.expected);
}

// The icon is part of the program: no file beside it is needed.
TEST(AppIcon, IsCompiledIntoTheProgram)
{
    EXPECT_FALSE(AppIcon().pixmap(32, 32).isNull());
    FormAbout about(QStringLiteral("App: 0.1.0"));
    const QLabel *image = about.findChild<QLabel *>(QStringLiteral("Image1"));
    ASSERT_NE(image, nullptr);
    EXPECT_FALSE(image->pixmap().isNull());
}

TEST(FormAbout, AnyClickOrKeyClosesIt)
{
    for (int how = 0; how < 3; ++how) {
        FormAbout about(QStringLiteral("App: 0.1.0"));
        about.show();
        if (how == 0)
            QTest::mouseClick(about.versionLabel(), Qt::LeftButton);
        else if (how == 1)
            QTest::mouseClick(&about, Qt::LeftButton, {}, QPoint(2, 2));
        else
            QTest::keyClick(&about, Qt::Key_X);
        EXPECT_EQ(about.result(), QDialog::Accepted) << how;
        EXPECT_FALSE(about.isVisible()) << how;
    }
}

using StatusWindowTest = AppFixture;

TEST_F(StatusWindowTest, CancellableMessagesAndTheClosedFlag)
{
    QWidget owner;
    StatusWindow status(&owner);
    status.ShowMessage("Line one\r\nLine two\r\n", "Status Report Channel 2");
    StatusFrm *form = status.form();
    ASSERT_NE(form, nullptr);
    EXPECT_EQ(form->windowTitle(), QStringLiteral("Status Report Channel 2"));
    EXPECT_EQ(form->label()->text(), QStringLiteral("Line one\nLine two"));
    EXPECT_EQ(form->button()->text(), QStringLiteral("Close"));
    // The button sits 160 twips below the label's height; the window holds both plus 500.
    EXPECT_EQ(form->button()->y(), 8 + form->label()->height() + 11);
    EXPECT_EQ(form->height(), 8 + form->label()->height() + form->button()->height() + 33);
    EXPECT_FALSE(status.StatusClosed());

    status.ShowMessage("!Channel 3 ID:FF12 pausing. Attempt 0", "Module Commands");
    EXPECT_EQ(form->label()->text(), QStringLiteral("Channel 3 ID:FF12 pausing. Attempt 0"));
    EXPECT_EQ(form->button()->text(), QStringLiteral("Cancel"));

    QTest::mouseClick(form->button(), Qt::LeftButton);
    QCoreApplication::processEvents();
    EXPECT_TRUE(status.StatusClosed());
    EXPECT_EQ(status.form(), nullptr);

    // A new load starts uncancelled, with the designed caption.
    status.ShowMessage("Again", "T");
    EXPECT_FALSE(status.StatusClosed());
    EXPECT_EQ(status.form()->button()->text(), QStringLiteral("Close"));
    status.unload();
    EXPECT_FALSE(status.StatusClosed());
}

TEST(HelpTopics, F1OpensTheManualAtTheFocusedControlsTopic)
{
    QTemporaryDir dir;
    const QString manual = dir.filePath(QStringLiteral("manual.html"));
    {
        std::ofstream out(manual.toStdString());
        out << "<html><body><h1 id=\"contents\">Contents</h1>";
        for (int i = 0; i < 200; ++i)
            out << "<p>filler</p>";
        out << "<h2 id=\"panels\">Panels</h2>";
        for (int i = 0; i < 200; ++i)
            out << "<p>filler</p>";
        out << "</body></html>";
    }
    EXPECT_EQ(manualPath(dir.path()), QFileInfo(manual).canonicalFilePath());

    QWidget window;
    window.setProperty(kHelpTopicProperty, QStringLiteral("main-window"));
    auto *panel = new QWidget(&window);
    panel->setProperty(kHelpTopicProperty, QStringLiteral("panels"));
    auto *field = new QLineEdit(panel);
    auto *outside = new QLineEdit(&window);
    EXPECT_EQ(helpTopicOf(field), QStringLiteral("panels"));
    EXPECT_EQ(helpTopicOf(outside), QStringLiteral("main-window"));
    EXPECT_EQ(helpTopicOf(nullptr), QStringLiteral("contents"));

    HelpWindow help(manual, &window);
    window.show();
    QApplication::setActiveWindow(&window);
    field->setFocus();
    sendHelpKey();
    ASSERT_NE(help.browser(), nullptr);
    EXPECT_EQ(help.browser()->source().fragment(), QStringLiteral("panels"));
    EXPECT_GT(help.browser()->verticalScrollBar()->value(), 0);

    // Esc closes the help window.
    QWidget *helpWindow = help.browser()->window();
    QApplication::setActiveWindow(helpWindow);
    help.browser()->setFocus();
    QTest::keyClick(help.browser(), Qt::Key_Escape);
    QCoreApplication::processEvents();
    EXPECT_EQ(help.browser(), nullptr);
}

} // namespace

} // namespace corvalog
