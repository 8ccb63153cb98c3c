#include "MainFrm.h"

#include "AppStyle.h"
#include "DriverDialog.h"
#include "FormAbout.h"
#include "HelpTopics.h"
#include "MainMenus.h"
#include "PanelGrid.h"
#include "StatusStrip.h"
#include "WorkSpaceFrm.h"
#include "acquisition/DriverSettings.h"
#include "acquisition/ModuleCommands.h"
#include "acquisition/SourceLosses.h"
#include "displays/LCDModule.h"
#include "displays/TableContainer.h"
#include "logging/LogMenuActions.h"
#include "runtime/Format.h"
#include "runtime/TimerPeriods.h"
#include "runtime/VbError.h"
#include "values/StatusReport.h"
#include "values/ZeroChannel.h"
#include "workspace/FileDialog.h"
#include "workspace/Settings.h"
#include "workspace/WorkspaceModule.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QEventLoop>
#include <QFileInfo>
#include <QLabel>
#include <QMenuBar>
#include <QScreen>
#include <QVBoxLayout>

namespace corvalog {

namespace {

QString q(const std::string &text)
{
    return QString::fromStdString(text);
}

// The program's version, from the build.
constexpr int kMajor = CORVALOG_VERSION_MAJOR;
constexpr int kMinor = CORVALOG_VERSION_MINOR;
constexpr int kRevision = CORVALOG_VERSION_PATCH;

// The probe of the start-up: 0 formatted "0.0" has a comma as its second character where the
// locale writes decimal commas.
bool formatWritesDecimalComma()
{
    const std::string zero = Format(Variant::integer(0), "0.0");
    return zero.size() > 1 && zero[1] == ',';
}

} // namespace

MainFrm::MainFrm(MainFrmOptions options)
    : m_options(std::move(options))
    , m_prompts(*m_options.prompts)
    , m_logTimer([this](std::int32_t ms) { m_session.logTick(ms); })
    , m_session(
          SessionOptions { m_options.factory, m_options.clock, m_options.locale, false, {}, true },
          SessionHost { *this, *this, m_logTimer, m_prompts })
    , m_workspace(m_session.workspace())
    , m_status(this)
    , m_help(QString(), this)
    , m_charts(*this, m_session.history(), m_workspace, m_session.clock(),
          [this] { return readRecentFile(m_paths.settingsFile, "LogFiles", "", "").folder; })
{
    if (!m_options.eventWait) {
        // Events run as they come, without spinning the processor meanwhile.
        m_options.eventWait = [](std::int32_t ms) {
            QEventLoop loop;
            QTimer::singleShot(ms, Qt::PreciseTimer, &loop, &QEventLoop::quit);
            loop.exec();
        };
    }
    setObjectName(QStringLiteral("MainFrm"));
    setProperty(kHelpTopicProperty, QStringLiteral("main-window"));
    m_calibration = buildMainMenus(*this);
    buildWindow();

    m_screenTimer.setInterval(kScreenIntervalMs);
    connect(&m_screenTimer, &QTimer::timeout, this, &MainFrm::ScreenTimer_Timer);
    m_stayAwakeTimer.setInterval(kStayAwakeIntervalMs);
    connect(&m_stayAwakeTimer, &QTimer::timeout, this,
        [this] { StayAwakeTick(m_session.driverHost(), m_workspace); });
    m_stayAwakeTimer.start();
    // A base station lost or back is told in the status window, without stopping anything.
    m_session.driverHost().setNoticeHandler(
        [this](const std::string &text, bool) { m_status.ShowMessage(text, "Base Station"); });
    m_session.logger().setMetadata([this] {
        const DataProvider *driver = m_session.driver();
        return LogMetadata { m_options.sourceOverride.empty()
                ? readDriverSettings(m_paths.settingsFile).source
                : m_options.sourceOverride,
            driver ? driver->name() : std::string() };
    });
}

MainFrm::~MainFrm()
{
    m_screenTimer.stop();
    m_logTimer.stop();
    // The panels go before the refresh and logger that point at them.
    m_refresh.reset();
}

void MainFrm::buildWindow()
{
    auto *central = new QWidget;
    auto *column = new QVBoxLayout(central);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);

    m_panels = new PanelGrid;
    connect(m_panels, &PanelGrid::zeroClicked, this, &MainFrm::panelZero);
    connect(m_panels, &PanelGrid::panelClicked, this, &MainFrm::panelClick);
    column->addWidget(m_panels, 1);

    m_strip = new StatusStrip;
    connect(m_strip, &StatusStrip::logoClicked, this, &MainFrm::ImageLogo_Click);
    column->addWidget(m_strip);
    setCentralWidget(central);

    // One panel always fits, with the strip and the menu.
    setMinimumSize(twipsToPixels(LCDModule::kWidthTwips),
        menuBar()->sizeHint().height() + m_strip->height() + 40);
}

QAction *MainFrm::action(const char *name) const
{
    return findChild<QAction *>(QString::fromLatin1(name));
}

bool MainFrm::Form_Load()
{
    // 1. Marks the program as running; a second instance is not refused.
    m_instanceMarker
        = std::make_unique<QLockFile>(QDir::temp().filePath(QStringLiteral("Orvilog")));
    m_instanceMarker->setStaleLockTime(0);
    m_instanceMarker->tryLock(0);

    // 2, 3. Version label and icon.
    m_strip->version()->setText(QStringLiteral("v%1.%2.%3").arg(kMajor).arg(kMinor).arg(kRevision));
    setWindowIcon(AppIcon());

    // 4. The user's separators, then: decimal commas in this locale?
    setNumberLocale(m_options.locale);
    m_commaDecimal = formatWritesDecimalComma();

    // 5. Settings folder and file, log folder.
    m_paths = setUpPaths(m_options.folders, m_prompts);
    m_session.configureLogging(m_commaDecimal,
        m_options.rescueFolder.empty() ? m_paths.logFolder : m_options.rescueFolder);
    m_refresh = std::make_unique<DisplayRefresh>(
        DisplayRefresh::Context { m_session, *this, m_panels->panels(),
            [this](const std::string &line) {
                setLogLabel(line);
                setLogLabelToolTip(line);
            },
            m_commaDecimal });
    m_help.setManual(manualPath(q(m_paths.programFolder)));

    // 6. The logo.
    m_strip->loadLogo(q(m_paths.programFolder));

    // 7, 8. The script engine is ready; the look is the application's style.
    // 9. Start from the empty workspace.
    LoadWorkspace(m_workspace, {}, m_prompts);

    // 10. The fixed workspace beside the program, else the last one opened.
    const std::string fixed = programWorkspaceFile(m_paths);
    m_fixedInstall = QFileInfo::exists(q(fixed));
    if (m_fixedInstall) {
        action("mnuopen")->setVisible(false);
        action("mnuSave")->setVisible(false);
        findChild<QAction *>(QStringLiteral("mnublank"))->setVisible(false);
        LoadWorkspace(m_workspace, fixed, m_prompts);
    } else {
        action("mnuEditWorkspace")->setVisible(true);
        const RecentFile last
            = readRecentFile(m_paths.settingsFile, settings::kWorkspaceFiles, "", "");
        if (!last.file.empty())
            LoadWorkspace(
                m_workspace, last.folder + "/" + last.file, m_prompts, m_paths.settingsFile);
    }

    // 11. Can a driver object be made at all?
    try {
        m_options.factory();
    } catch (const VbError &e) {
        m_prompts.message(kProgramName,
            "ZentaDataProviderCOM.DLL possibly not registered!\r\nError: " + e.description()
                + " [Code: " + std::to_string(e.number()) + "]",
            PromptIcon::Critical, PromptButtons::Ok);
        return false;
    }

    // 12-15. Activate, let events run, start the refresh. No hook on the window is needed: its
    // layout resizes the grid with it, and the grid re-lays its panels on every resize.
    SetupDisplays();
    QApplication::processEvents();
    m_screenTimer.start();

    // 16. The logo's tooltip.
    m_strip->logo()->setToolTip(QStringLiteral("Go to ") + QString::fromLatin1(kWebAddress));

    // 17. The calibration commands, for the word "workbay" alone.
    m_calibration->menuAction()->setVisible(
        q(m_options.commandLine).toLower() == QStringLiteral("workbay"));
    keepMenusInView();
    return true;
}

void MainFrm::SetupDisplays()
{
    m_busy = true;
    setWindowTitle(m_fixedInstall
            ? q(m_workspace.Title)
            : q(m_workspace.Title) + QStringLiteral(" - ") + QString::fromLatin1(kProgramName));

    m_panels->showChannels(m_workspace, m_commaDecimal);

    enableMenu(LogMenu::StartLog, m_workspace.Channels >= 1);
    enableMenu(LogMenu::StopLog, false);

    InterfaceInitHooks hooks;
    hooks.processEvents = [] { QApplication::processEvents(); };
    hooks.wait = m_options.busyWait;
    // The base station re-opened, the scripts of every channel made, and the starting points
    // of peak and trough capture set.
    m_session.activate(hooks);
    m_lossTold = false;

    fitWindowToGrid();
    m_busy = false;
}

void MainFrm::fitWindowToGrid()
{
    const int tw = kTwipsPerPixel;
    // The frame around the window and the caption and menu above the grid, in twips.
    const QRect outer = frameGeometry();
    const QRect inner = geometry();
    const int menu = menuBar()->sizeHint().height();
    const int border = qRound((outer.width() - inner.width()) * tw / 2.0);
    const int allowance = ((outer.height() - inner.height() + menu) * tw - 2 * border) - 300;
    QApplication::processEvents();

    // The stored size sets the width the grid flows in.
    const int frameW = outer.width() - inner.width();
    const int frameH = outer.height() - inner.height();
    const WindowSize stored = readWindowSize(*m_options.userSettings());
    const int clientWidth = qMax(minimumWidth(), twipsToPixels(stored.width) - frameW);
    resize(clientWidth, qMax(minimumHeight(), twipsToPixels(stored.height) - frameH));
    m_panels->grid()->resize(clientWidth, m_panels->grid()->height());
    m_panels->grid()->Refresh();

    const QSize extent = m_panels->grid()->scaleExtentTwips();
    QSize fitted(twipsToPixels(extent.width() + 2 * border) - frameW,
        twipsToPixels(extent.height() + allowance + 2 * border) - frameH);
    // Never narrower than the menu bar (its last menus would fold away behind a button), never
    // larger than the screen leaves room for (the grid then scrolls).
    const int menus = keepMenusInView();
    fitted.setWidth(qMax(fitted.width(), menus));
    if (const QScreen *where = screen()) {
        const QRect room = where->availableGeometry();
        fitted = fitted.boundedTo(QSize(room.width() - frameW, room.height() - frameH));
    }
    resize(fitted);
}

int MainFrm::keepMenusInView()
{
    const int menus = menuBar()->sizeHint().width();
    setMinimumWidth(qMax(twipsToPixels(LCDModule::kWidthTwips), menus));
    return menus;
}

void MainFrm::SaveForm()
{
    if (isMinimized())
        return;
    const QRect outer = frameGeometry();
    writeWindowSize(*m_options.userSettings(),
        { outer.width() * kTwipsPerPixel, outer.height() * kTwipsPerPixel });
}

void MainFrm::ScreenTimer_Timer()
{
    // Never over a workspace half made active.
    if (m_busy || !m_refresh)
        return;
    // A log whose reader has left stops now, not at its next row.
    m_session.logger().checkOutput();
    m_refresh->ScreenTimer_Timer();
    tellLosses();
}

void MainFrm::tellLosses()
{
    if (m_lossTold)
        return;
    const SourceLosses losses = m_session.lossesSinceActivation();
    if (losses.total() == 0)
        return;
    m_lossTold = true;
    const std::string text = lossWarning(losses);
    // Told from the event loop: the message runs events, and the refresh must not run inside
    // itself.
    QTimer::singleShot(0, this, [this, text] {
        m_prompts.message("Warning", text, PromptIcon::Exclamation, PromptButtons::Ok);
    });
}

void MainFrm::closeEvent(QCloseEvent *event)
{
    if (m_unloaded) {
        event->accept();
        return;
    }
    if (!Form_QueryUnload()) {
        event->ignore();
        return;
    }
    Form_Unload();
    event->accept();
}

bool MainFrm::keepOrSaveChanges()
{
    if (!m_workspaceChanged)
        return true;
    const PromptAnswer answer = m_prompts.message("Unsaved Workspace",
        "You have made changes to the workspace but have not saved those changes!\r\n"
        "Would you like to save the workspace now?",
        PromptIcon::Question, PromptButtons::YesNoCancel);
    if (answer == PromptAnswer::Cancel)
        return false;
    if (answer == PromptAnswer::Yes) {
        const std::string file = chooseWorkspaceToSave(m_paths, m_prompts);
        // A save that failed has been reported; the changes are still only here.
        if (file.empty() || !SaveWorkspace(m_workspace, file, m_prompts))
            return false;
        m_workspaceChanged = false;
    }
    return true;
}

bool MainFrm::Form_QueryUnload()
{
    if (m_busy)
        return false;
    if (!keepOrSaveChanges())
        return false;

    m_closing = true;
    if (m_refresh)
        m_refresh->setClosing(true);
    m_stayAwakeTimer.stop();
    m_screenTimer.stop();
    // The log ends with the last row taken while the modules were still being heard.
    if (m_session.logger().isLogging())
        m_session.logger().stop();
    QApplication::setOverrideCursor(Qt::WaitCursor);

    if (DataProvider *driver = m_session.driver()) {
        try {
            driver->CloseInterface();
        } catch (const VbError &) {
        }
        m_options.busyWait(1000);
        m_session.driverHost().release();
    }
    return true;
}

void MainFrm::Form_Unload()
{
    m_status.unload();
    m_panels->stopBlinking();
    SaveForm();
    QApplication::setOverrideCursor(Qt::WaitCursor);
    m_options.eventWait(1000);
    m_status.unload();
    while (QApplication::overrideCursor())
        QApplication::restoreOverrideCursor();
    m_unloaded = true;
}

void MainFrm::mnuExit_Click()
{
    close();
    // The program ends even when the window would not close.
    QCoreApplication::exit(0);
}

void MainFrm::mnuopen_Click()
{
    if (!keepOrSaveChanges())
        return;
    const std::string file = chooseWorkspaceToOpen(m_paths, m_prompts);
    if (file.empty() || !LoadWorkspace(m_workspace, file, m_prompts, m_paths.settingsFile))
        return;
    m_workspaceChanged = false;
    m_screenTimer.stop();
    SetupDisplays();
    m_screenTimer.start();
}

void MainFrm::mnuSave_Click()
{
    const std::string file = chooseWorkspaceToSave(m_paths, m_prompts);
    if (!file.empty() && SaveWorkspace(m_workspace, file, m_prompts))
        m_workspaceChanged = false;
}

void MainFrm::mnuEditWorkspace_Click()
{
    const WorkspaceClass before = m_workspace;
    m_stayAwakeTimer.stop();
    {
        WorkSpaceFrm editor(
            m_workspace, m_session.engine(), m_prompts, m_commaDecimal, m_paths.settingsFile, this);
        emit editorOpened(&editor);
        editor.exec();
    }
    // The editor has copied its settings back; a fixed workspace is saved where it lies, any
    // other is saved when the user says so.
    if (workspacesDiffer(before, m_workspace)) {
        if (m_fixedInstall)
            SaveWorkspace(m_workspace, programWorkspaceFile(m_paths), m_prompts);
        else
            m_workspaceChanged = true;
    }
    m_screenTimer.stop();
    SetupDisplays();
    m_screenTimer.start();
    m_stayAwakeTimer.start();
}

void MainFrm::mnuDriver_Click()
{
    if (!editDriverSource(m_paths.settingsFile, m_options.sourceOverride, m_prompts, this))
        return;
    m_screenTimer.stop();
    SetupDisplays();
    m_screenTimer.start();
}

void MainFrm::mnuStartStopLog_Click()
{
    m_session.logger().DoLogging([this] { return chooseLogFile(m_paths, m_prompts); });
}

void MainFrm::startLoggingTo(const std::string &path)
{
    if (!m_session.logger().isLogging())
        m_session.logger().DoLogging([&path] { return path; });
}

void MainFrm::mnuIntervalConfig_Click()
{
    mnuIntervalConfig(m_workspace, m_prompts, programWorkspaceFile(m_paths));
}

void MainFrm::mnuViewLog_Click()
{
    mnuViewLog(m_paths.settingsFile, m_prompts);
}

void MainFrm::mnuWake_Click()
{
    WakeModules(m_session.driverHost(), m_workspace);
}

void MainFrm::mnuSleep_Click()
{
    SleepModules(m_session.driverHost());
}

void MainFrm::mnuPauseResume_Click(bool pause)
{
    const std::string title = pause ? "Pause Module" : "Resume Module";
    const auto answer = m_prompts.input(title,
        "Enter the channel whose module to " + std::string(pause ? "pause." : "resume."), "1");
    if (!answer)
        return;
    const ModuleChoice choice = moduleOfChannel(m_workspace, *answer);
    if (!choice.error.empty()) {
        m_prompts.message(title, choice.error, PromptIcon::Exclamation, PromptButtons::Ok);
        return;
    }
    try {
        const bool ok = PauseResume(m_session.driverHost(), m_workspace, m_status, pause ? 1 : 0,
            choice.tag, static_cast<std::int16_t>(choice.channel));
        if (!m_status.StatusClosed())
            m_status.ShowMessage(
                pauseResumeOutcome(choice.channel, pause, ok), kModuleCommandTitle);
    } catch (const VbError &e) {
        m_prompts.message(
            title, "Error: " + e.description(), PromptIcon::Critical, PromptButtons::Ok);
    }
}

void MainFrm::mnuAbout_Click()
{
    const auto version = [this](float (DataProvider::*get)()) -> std::optional<float> {
        if (DataProvider *driver = m_session.driver()) {
            try {
                return (driver->*get)();
            } catch (const VbError &) {
            }
        }
        return std::nullopt;
    };
    FormAbout about(q(versionLine(kMajor, kMinor, kRevision, version(&DataProvider::ComVersion),
                        version(&DataProvider::DllVersion))),
        this);
    about.exec();
}

void MainFrm::ImageLogo_Click()
{
    m_prompts.openAddress(kWebAddress);
}

void MainFrm::mnuHelp_Click()
{
    m_help.showTopic(QString::fromLatin1(kHelpContents));
}

void MainFrm::panelZero(int n)
{
    const bool shift = QGuiApplication::queryKeyboardModifiers() & Qt::ShiftModifier;
    const ZeroResult result
        = ZeroChannel(n, shift, m_workspace, m_session.values(), m_prompts, m_paths.settingsFile);
    LCDModule *panel = m_panels->panel(n);
    if (result.netIndicator && panel)
        panel->setNetInd(*result.netIndicator);
}

void MainFrm::panelClick(int n)
{
    ShowStatusReport(
        n, m_workspace, m_session.engine(), [this](int k) { return panelTitle(k); }, m_status);
}

void MainFrm::setReadingLabel(const std::string &text)
{
    m_strip->logLabel()->setText(q(text));
}

void MainFrm::processEvents()
{
    QApplication::processEvents();
}

std::string MainFrm::panelTitle(int n) const
{
    const LCDModule *panel = m_panels->panel(n);
    return panel ? panel->Title().toStdString() : std::string();
}

void MainFrm::enableMenu(LogMenu menu, bool enabled)
{
    // In the order of LogMenu.
    static constexpr const char *kNames[]
        = { "mnuStartLog", "mnuStopLog", "mnuViewLog", "mnuEditWorkspace", "mnuopen" };
    action(kNames[static_cast<int>(menu)])->setEnabled(enabled);
}

void MainFrm::setLogLabel(const std::string &caption)
{
    m_strip->logLabel()->setText(q(caption));
}

void MainFrm::setLogLabelToolTip(const std::string &text)
{
    m_strip->logLabel()->setToolTip(q(text));
}

} // namespace corvalog
