#include "AppFixture.h"
#include "app/FormAbout.h"
#include "displays/TableContainer.h"
#include "runtime/NumberLocale.h"
#include "workspace/Settings.h"

#include <QAction>
#include <QMenu>

namespace corvalog {

namespace {

using MainWindow = AppFixture;

// Cases build on each other: nothing, then a last workspace, then a fixed one beside it.
TEST_F(MainWindow, TheFixedWorkspaceElseTheLastOneElseTheDefaults)
{
    // The case, the command line, the window's title and its panels (with the template).
    const std::tuple<std::string, const char *, const char *, std::size_t> cases[] = {
        { "none", "WorkBay", "Title Text - Corvalog", 5 },
        { "last", "workbay now", "Rig A - Corvalog", 4 },
        { "fixed", " workbay", "Line 4", 3 },
    };
    for (const auto &[name, line, title, panels] : cases) {
        SCOPED_TRACE(name);
        const bool fixed = name == "fixed";
        if (name == "last") {
            useWorkspace(workspaceText(3, "Rig A"));
            QImage logo(40, 20, QImage::Format_RGB32);
            logo.fill(Qt::white);
            ASSERT_TRUE(logo.save(QString::fromStdString(path("program/Corvalog.jpg"))));
            writeFile(path("program/Corvalog.gif"), "not a picture");
        }
        if (fixed) {
            writeFile(path("program/Corvalog.lws"), workspaceText(2, "Line 4"));
            writeFile(path("program/Corvalog.jpg"), "not a picture");
        }
        calls.clear();
        commandLine = line;
        ASSERT_TRUE(start());
        EXPECT_EQ(window->FixedInstall(), fixed);
        EXPECT_EQ(window->windowTitle(), QString::fromLatin1(title));
        EXPECT_EQ(window->Disp().size(), panels);
        for (const char *exchange : { "mnuopen", "mnuSave", "mnublank" })
            EXPECT_EQ(window->action(exchange)->isVisible(), !fixed) << exchange;
        EXPECT_TRUE(window->action("mnuEditWorkspace")->isVisible());
        // The calibration commands need the word "workbay" alone, in any case.
        EXPECT_EQ(window->mnuCalibration()->menuAction()->isVisible(), name == "none");
        // A logo beside the program shows; a picture that cannot be read is ignored.
        EXPECT_EQ(window->ImageLogo()->pixmap().isNull(), name != "last");
        EXPECT_TRUE(window->screenTimerActive());
        EXPECT_FALSE(window->windowIcon().isNull()); // built in: no file beside it is needed
        // The driver check made one object and let it go; activation made the one kept.
        EXPECT_EQ(std::vector<std::string>(calls.begin(), calls.begin() + 3),
            std::vector<std::string>({ "create", "create", "OpenInterface(0,0)" }));
        EXPECT_TRUE(busyWaits.empty()); // nothing needed time to let go of a port
        EXPECT_TRUE(prompts.messages.empty());
    }
}

// In a decimal-comma locale the panels light their point for the comma from the first frame
// of an activation on, and the start-up's separators are the process's.
TEST_F(MainWindow, TheLocalesSeparatorsHoldFromTheFirstFrame)
{
    ScopedNumberLocale restore(numberLocale());
    useWorkspace(workspaceText(1, "Rig"));
    MainFrmOptions o = options();
    o.locale = NumberLocale::comma();
    o.locale.dateSeparator = '.';
    window = std::make_unique<MainFrm>(std::move(o));
    ASSERT_TRUE(window->Form_Load());
    EXPECT_EQ(window->Disp()[1]->Value(), QStringLiteral("0.00"));
    EXPECT_EQ(numberLocale().dateSeparator, '.');
    packet(1, "12,5");
    window->ScreenTimer_Timer();
    EXPECT_EQ(window->Disp()[1]->Value(), QStringLiteral("12.50"));
}

TEST_F(MainWindow, NoDriverEndsTheProgramWithItsMessage)
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

TEST_F(MainWindow, PanelsFollowTheWorkspace)
{
    const std::string file = useWorkspace(workspaceText(24));
    ASSERT_TRUE(start());
    for (const int channels : { 0, 3 }) {
        // Channel 1 has no function, 2 captures the peak and 3 the trough.
        writeFile(file, workspaceText(channels, "W", channels ? "Function2=1\nFunction3=2\n" : ""));
        prompts.files.push_back(file);
        window->mnuopen_Click();
        ASSERT_EQ(window->Disp().size(), channels + 1u);
        const auto panels = window->grid()->findChildren<LCDModule *>();
        EXPECT_EQ(std::count_if(panels.begin(), panels.end(),
                      [](LCDModule *p) { return p->isVisibleTo(p->parentWidget()); }),
            channels);
        EXPECT_EQ(window->action("mnuStartLog")->isEnabled(), channels > 0);
    }
    const auto &panel = window->Disp();
    EXPECT_EQ(panel[1]->BtnCaption(), QStringLiteral("Zero"));
    EXPECT_EQ(panel[2]->BtnCaption(), QStringLiteral("Reset"));
    EXPECT_EQ(panel[3]->Value(), QStringLiteral("0.00"));
    EXPECT_EQ(window->values().working(2), ChannelValues::kPeakSeed);
    EXPECT_EQ(window->values().working(3), ChannelValues::kTroughSeed);
    EXPECT_EQ(window->workspace().item(1).DataTagExpression, "T(1)");
    // Every later activation closed the driver first and waited for it to let go.
    EXPECT_EQ(busyWaits, std::vector<std::int32_t>({ 1000, 500, 1000, 500 }));
}

// Losses are told once an activation, from the event loop, not inside the refresh.
TEST_F(MainWindow, LostPacketsAreToldOnceAnActivation)
{
    ASSERT_TRUE(start());
    driver->systemDrops = 5;
    window->ScreenTimer_Timer();
    EXPECT_TRUE(prompts.messages.empty());
    QCoreApplication::processEvents();
    driver->systemDrops = 9;
    window->ScreenTimer_Timer();
    QCoreApplication::processEvents();
    ASSERT_EQ(prompts.messages.size(), 1u);
    EXPECT_NE(prompts.messages[0].text.find("5 datagrams were dropped"), std::string::npos);

    window->SetupDisplays(); // a new activation, a new driver that has lost nothing yet
    packet(0x10000, "1"); // a Data Tag beyond the tables cannot be stored
    window->ScreenTimer_Timer();
    QCoreApplication::processEvents();
    ASSERT_EQ(prompts.messages.size(), 2u);
    EXPECT_NE(prompts.messages[1].text.find("1 packets could not be stored, 0 were dropped"),
        std::string::npos);
}

TEST_F(MainWindow, TheWindowIsFittedAroundTheGridAtTheStoredWidth)
{
    useWorkspace(workspaceText(10));
    userStore()->setValue("Size/Width", 16000);
    ASSERT_TRUE(start());
    window->show();
    QCoreApplication::processEvents();
    // Four panels to a row, and the window as wide as they are and tall enough for all rows.
    const QSize extent = window->grid()->scaleExtentTwips();
    EXPECT_EQ(extent.width(), 4 * LCDModule::kWidthTwips);
    EXPECT_EQ(window->width(),
        std::max(twipsToPixels(extent.width()), window->menuBar()->sizeHint().width()));
    EXPECT_FALSE(window->findChild<QScrollArea *>()->verticalScrollBar()->isVisible());
    // A narrower window flows the panels into fewer columns.
    window->resize(twipsToPixels(LCDModule::kWidthTwips) + 10, window->height());
    QCoreApplication::processEvents();
    EXPECT_EQ(window->grid()->scaleExtentTwips().width(), LCDModule::kWidthTwips);
}

TEST_F(MainWindow, PauseAndResumeReachTheModuleOfAChannel)
{
    useWorkspace(workspaceText(2));
    ASSERT_TRUE(start());
    // Pause or resume, the channel answered, and the message box's text or the status line.
    const std::tuple<bool, const char *, std::string, std::string> cases[] = {
        { true, "1", "", "Channel 1: the module is paused." },
        { false, "1", "", "Channel 1: the module is running again." },
        { true, "7", "There is no channel 7.", "" },
    };
    for (const auto &[pause, answer, message, statusLine] : cases) {
        prompts.messages.clear();
        prompts.inputs.push_back(std::string(answer));
        window->status().unload();
        driver->acknowledgeOnAttempt = driver->sendCommandCalls; // answers at once
        window->mnuPauseResume_Click(pause);
        EXPECT_EQ(prompts.messages.empty() ? "" : prompts.messages[0].text, message);
        StatusFrm *status = window->status().form();
        EXPECT_EQ(status ? status->label()->text().toStdString() : "", statusLine);
    }
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "SendCommand(1,1,57,0)"), 1);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "SendCommand(1,1,59,0)"), 1);
}

TEST_F(MainWindow, AnUnsavedWorkspaceIsAskedAbout)
{
    // The answer, the file chosen to save to ("" cancels that dialog), and whether it closes.
    const std::tuple<PromptAnswer, std::string, bool> cases[] = {
        { PromptAnswer::Cancel, "", false },
        { PromptAnswer::Yes, "", false },
        { PromptAnswer::Yes, "saved.lws", true },
        { PromptAnswer::No, "", true },
    };
    int run = 0;
    for (const auto &[answer, saveTo, closes] : cases) {
        SCOPED_TRACE(testing::Message() << static_cast<int>(answer) << " " << saveTo);
        ASSERT_TRUE(start());
        window->show();
        // A title of its own each run: a saved one comes up as the last workspace next time.
        const QString title = QStringLiteral("Changed %1").arg(++run);
        onEditor([title](QDialog &editor) {
            editor.findChild<QLineEdit *>(QStringLiteral("tbTitle"))->setText(title);
        });
        window->mnuEditWorkspace_Click();
        prompts.messages.clear();
        prompts.answers = { answer };
        if (!saveTo.empty())
            prompts.files.push_back(path(saveTo));
        calls.clear();

        EXPECT_EQ(window->close(), closes);
        ASSERT_EQ(prompts.messages.size(), 1u);
        EXPECT_EQ(prompts.messages[0].title, "Unsaved Workspace");
        EXPECT_EQ(window->workspaceChanged(), !closes || answer == PromptAnswer::No);
        EXPECT_EQ(!calls.empty() && calls[0] == "CloseInterface()", closes); // the driver let go
        if (!saveTo.empty()) {
            EXPECT_TRUE(QFileInfo::exists(QString::fromStdString(path(saveTo))));
        }
    }
}

// Closing waits for an activation to end; then the driver is let go and the window's size is
// stored, unless the window is minimised.
TEST_F(MainWindow, ClosingReleasesTheDriverAndStoresTheSize)
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

    window->resize(700, 300);
    const QSize outer = window->frameGeometry().size();
    ASSERT_TRUE(window->close());
    const WindowSize stored = readWindowSize(*userStore());
    EXPECT_EQ(stored.width, outer.width() * 15);
    EXPECT_EQ(stored.height, outer.height() * 15);
    EXPECT_EQ(busyWaits.back(), 1000); // the port's second to let go
    EXPECT_EQ(window->driverHost().driver(), nullptr);

    ASSERT_TRUE(start());
    window->show();
    window->resize(500, 200);
    window->showMinimized();
    window->SaveForm();
    EXPECT_EQ(readWindowSize(*userStore()).width, outer.width() * 15);
}

// One decimal per driver version, rounded; "none" where there is no driver to ask.
TEST(FormAbout, TheVersionLineHasOneDecimalPerDriverVersion)
{
    EXPECT_EQ(
        versionLine(0, 1, 0, 0.96f, std::nullopt), "App: 0.1.0 | Drv COM: 1.0 | Drv DLL: none");
}

// A message starting with "!" can be cancelled; only the user's cancel counts as one.
TEST(StatusWindow, CancellableMessagesAndTheClosedFlag)
{
    QWidget owner;
    StatusWindow status(&owner);
    status.ShowMessage("!Line one\r\nLine two\r\n", "Module Commands");
    EXPECT_EQ(status.form()->label()->text(), QStringLiteral("Line one\nLine two"));
    EXPECT_EQ(status.form()->button()->text(), QStringLiteral("Cancel"));
    QTest::mouseClick(status.form()->button(), Qt::LeftButton);
    QCoreApplication::processEvents();
    EXPECT_TRUE(status.StatusClosed());
    EXPECT_EQ(status.form(), nullptr);

    status.ShowMessage("Again", "T");
    EXPECT_FALSE(status.StatusClosed());
    EXPECT_EQ(status.form()->button()->text(), QStringLiteral("Close"));
    status.unload();
    EXPECT_FALSE(status.StatusClosed());
}

} // namespace

} // namespace corvalog
