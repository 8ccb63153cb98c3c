#include "MainFrm.h"

#include "AppStyle.h"
#include "FormAbout.h"
#include "HelpTopics.h"
#include "WorkSpaceFrm.h"
#include "acquisition/ModuleCommands.h"
#include "acquisition/SourceLosses.h"
#include "displays/LCDModule.h"
#include "displays/TableContainer.h"
#include "logging/LogMenuActions.h"
#include "runtime/Format.h"
#include "runtime/TimerPeriods.h"
#include "runtime/Val.h"
#include "runtime/VbError.h"
#include "values/PanelState.h"
#include "values/StatusReport.h"
#include "values/TagReplace.h"
#include "values/ZeroChannel.h"
#include "workspace/FileDialog.h"
#include "workspace/INIFileModule.h"
#include "workspace/Settings.h"
#include "workspace/WorkspaceModule.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QEventLoop>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenuBar>
#include <QScreen>
#include <QScrollArea>
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

// The strip below the grid holding the logging line, the version and the logo: the grid's
// bottom margin less the height the window gives up when it is fitted around the grid.
constexpr int kStripTwips = TableContainer::kBottomMarginTwips - 300;

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
    , m_session(SessionOptions { m_options.factory, m_options.clock, m_options.locale, false, {} },
          SessionHost { *this, *this, m_logTimer, m_prompts })
    , m_workspace(m_session.workspace())
    , m_status(this)
    , m_help(QString(), this)
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
    buildMenus();
    buildWindow();

    m_screenTimer.setInterval(kScreenIntervalMs);
    connect(&m_screenTimer, &QTimer::timeout, this, &MainFrm::ScreenTimer_Timer);
    m_flashTimer.setInterval(kFlashIntervalMs);
    connect(&m_flashTimer, &QTimer::timeout, this,
        [this] { DisplayRefresh::FlashTimer_Timer(m_flasher); });
    m_flashTimer.start();
    m_stayAwakeTimer.setInterval(kStayAwakeIntervalMs);
    connect(&m_stayAwakeTimer, &QTimer::timeout, this,
        [this] { StayAwakeTick(m_session.driverHost(), m_workspace); });
    m_stayAwakeTimer.start();
}

MainFrm::~MainFrm()
{
    m_screenTimer.stop();
    m_logTimer.stop();
    // The panels go before the refresh and logger that point at them.
    m_refresh.reset();
}

void MainFrm::buildMenus()
{
    const auto add = [this](QMenu *menu, const char *name, const QString &caption,
                         void (MainFrm::*slot)(), const QKeySequence &keys = {}) {
        QAction *a = menu->addAction(caption);
        a->setObjectName(QString::fromLatin1(name));
        a->setShortcut(keys);
        connect(a, &QAction::triggered, this, slot);
        return a;
    };
    QMenu *file = menuBar()->addMenu(QStringLiteral("&File"));
    add(file, "mnuopen", QStringLiteral("&Open Workspace"), &MainFrm::mnuopen_Click,
        QKeySequence::Open);
    add(file, "mnuSave", QStringLiteral("&Save Workspace"), &MainFrm::mnuSave_Click,
        QKeySequence::Save);
    file->addSeparator()->setObjectName(QStringLiteral("mnublank"));
    add(file, "mnuEditWorkspace", QStringLiteral("Configure &Workspace"),
        &MainFrm::mnuEditWorkspace_Click);
    file->addSeparator();
    add(file, "mnuExit", QStringLiteral("E&xit"), &MainFrm::mnuExit_Click);

    // Ctrl+L starts and stops: only one of the two is enabled at a time.
    QMenu *logging = menuBar()->addMenu(QStringLiteral("&Logging"));
    add(logging, "mnuStartLog", QStringLiteral("&Start Logging"), &MainFrm::mnuStartStopLog_Click,
        QKeySequence(Qt::CTRL | Qt::Key_L));
    add(logging, "mnuStopLog", QStringLiteral("S&top Logging"), &MainFrm::mnuStartStopLog_Click,
        QKeySequence(Qt::CTRL | Qt::Key_L))
        ->setEnabled(false);
    logging->addSeparator();
    add(logging, "mnuIntervalConfig", QStringLiteral("Log &Interval"),
        &MainFrm::mnuIntervalConfig_Click);
    add(logging, "mnuViewLog", QStringLiteral("&View Last Log"), &MainFrm::mnuViewLog_Click);

    QMenu *sleepWake = menuBar()->addMenu(QStringLiteral("&Sleep && Wake"));
    sleepWake->setObjectName(QStringLiteral("mnusleepwake"));
    add(sleepWake, "mnuWake", QStringLiteral("&Wake"), &MainFrm::mnuWake_Click);
    add(sleepWake, "mnuSleep", QStringLiteral("S&leep"), &MainFrm::mnuSleep_Click);

    m_calibration = menuBar()->addMenu(QStringLiteral("&Calibration"));
    m_calibration->setObjectName(QStringLiteral("mnuCalibration"));
    QAction *pause = m_calibration->addAction(QStringLiteral("&Pause Module"));
    pause->setObjectName(QStringLiteral("mnuPause"));
    connect(pause, &QAction::triggered, this, [this] { mnuPauseResume_Click(true); });
    QAction *resume = m_calibration->addAction(QStringLiteral("&Resume Module"));
    resume->setObjectName(QStringLiteral("mnuResume"));
    connect(resume, &QAction::triggered, this, [this] { mnuPauseResume_Click(false); });
    m_calibration->menuAction()->setVisible(false);

    // F1 itself is caught application-wide, so it opens the topic of the focused control.
    QMenu *helpMenu = menuBar()->addMenu(QStringLiteral("&Help"));
    add(helpMenu, "mnuHelpContents", QStringLiteral("&Contents\tF1"), &MainFrm::mnuHelp_Click);
    add(helpMenu, "mnuAbout", QStringLiteral("&About Corvalog"), &MainFrm::mnuAbout_Click);
}

void MainFrm::buildWindow()
{
    auto *central = new QWidget;
    auto *column = new QVBoxLayout(central);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);

    m_scroll = new QScrollArea;
    m_scroll->setObjectName(QStringLiteral("GridScroll"));
    m_scroll->setFrameShape(QFrame::NoFrame);
    m_scroll->setWidgetResizable(true);
    m_scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_grid = new TableContainer;
    m_grid->setObjectName(QStringLiteral("TableContainer1"));
    m_grid->setProperty(kHelpTopicProperty, QStringLiteral("panels"));
    m_scroll->setWidget(m_grid);
    column->addWidget(m_scroll, 1);

    // Element 0 of the panel array: the template, never shown.
    auto *templ = new LCDModule(m_grid);
    templ->setProperty("Index", 0);
    templ->hide();
    m_disp.push_back(templ);

    auto *strip = new QWidget;
    strip->setObjectName(QStringLiteral("StatusStrip"));
    strip->setFixedHeight(twipsToPixels(kStripTwips));
    auto *row = new QHBoxLayout(strip);
    row->setContentsMargins(8, 0, 6, 2);
    m_logLabel = new QLabel;
    m_logLabel->setObjectName(QStringLiteral("LogLabel"));
    m_logLabel->setProperty(kHelpTopicProperty, QStringLiteral("logging"));
    // A long log path must not make the window wider; the tooltip has it whole.
    m_logLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_vers = new QLabel;
    m_vers->setObjectName(QStringLiteral("Vers"));
    m_vers->setEnabled(false);
    m_logo = new QLabel;
    m_logo->setObjectName(QStringLiteral("ImageLogo"));
    m_logo->setCursor(Qt::PointingHandCursor);
    m_logo->installEventFilter(this);
    row->addWidget(m_logLabel, 1);
    row->addWidget(m_vers);
    row->addWidget(m_logo);
    column->addWidget(strip);
    setCentralWidget(central);

    // One panel always fits, with the strip and the menu.
    setMinimumSize(twipsToPixels(LCDModule::kWidthTwips),
        menuBar()->sizeHint().height() + strip->height() + 40);
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
    m_vers->setText(QStringLiteral("v%1.%2.%3").arg(kMajor).arg(kMinor).arg(kRevision));
    setWindowIcon(AppIcon());

    // 4. The user's separators, then: decimal commas in this locale?
    setNumberLocale(m_options.locale);
    m_commaDecimal = formatWritesDecimalComma();

    // 5. Settings folder and file, log folder.
    m_paths = setUpPaths(m_options.folders, m_prompts);
    m_session.configureLogging(m_commaDecimal,
        m_options.rescueFolder.empty() ? m_paths.logFolder : m_options.rescueFolder);
    m_refresh = std::make_unique<DisplayRefresh>(DisplayRefresh::Context { m_session, *this, m_disp,
        [this](const std::string &line) {
            setLogLabel(line);
            setLogLabelToolTip(line);
        },
        m_commaDecimal });
    m_help.setManual(manualPath(q(m_paths.programFolder)));

    // 6. The logo: a .jpg replaces a .gif. Unreadable pictures are ignored.
    const QDir programDir(q(m_paths.programFolder));
    for (const char *ext : { ".gif", ".jpg" }) {
        const QString logo
            = programDir.filePath(QString::fromLatin1(kProgramName) + QLatin1String(ext));
        QPixmap picture;
        if (QFileInfo::exists(logo) && picture.load(logo))
            m_logo->setPixmap(picture.scaledToHeight(
                qMin(picture.height(), twipsToPixels(kStripTwips) - 4), Qt::SmoothTransformation));
    }

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
        const std::string file
            = ReadINI(m_paths.settingsFile, settings::kWorkspaceFiles, settings::kInitFile, "");
        if (!file.empty()) {
            const std::string dir
                = ReadINI(m_paths.settingsFile, settings::kWorkspaceFiles, settings::kInitDir, "");
            LoadWorkspace(m_workspace, dir + "/" + file, m_prompts, m_paths.settingsFile);
        }
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
    m_logo->setToolTip(QStringLiteral("Go to ") + QString::fromLatin1(kWebAddress));

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

    for (std::size_t i = m_disp.size() - 1; i >= 1; --i)
        delete m_disp[i];
    m_disp.resize(1);

    for (int i = 1; i <= m_workspace.Channels; ++i) {
        const ItemClass &item = m_workspace.item(i);
        auto *panel = new LCDModule(m_grid);
        panel->setObjectName(QStringLiteral("Disp%1").arg(i));
        panel->setProperty("Index", i);
        panel->setProperty(kHelpTopicProperty, QStringLiteral("panels"));
        panel->setForeColor(kBlack);
        panel->InitFlashLabel(&m_flasher);
        panel->setVisible(true);
        panel->setTitle(q(item.Caption));
        panel->setValue(q(panelText(Format(Variant::integer(0), item.Format), m_commaDecimal)));
        panel->setBtnCaption(q(zeroButtonCaption(item.Functionality)));
        connect(panel, &LCDModule::Zero, this, [this, i] { panelZero(i); });
        connect(panel, &LCDModule::Click, this, [this, i] { panelClick(i); });
        m_disp.push_back(panel);
    }

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
    m_grid->resize(clientWidth, m_grid->height());
    m_grid->Refresh();

    const QSize extent = m_grid->scaleExtentTwips();
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
    std::string text = "Packets from the data source were lost:";
    for (const std::string &sentence : lossSentences(losses))
        text += " " + sentence + ".";
    text += " Further losses are not told until a workspace is activated again.";
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

bool MainFrm::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_logo && event->type() == QEvent::MouseButtonRelease) {
        ImageLogo_Click();
        return true;
    }
    return QMainWindow::eventFilter(watched, event);
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
    m_flashTimer.stop();
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
        WorkSpaceFrm editor(m_workspace, m_session.engine(), m_prompts, m_commaDecimal, this);
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
    const int channel = static_cast<int>(Val(*answer));
    if (channel < 1 || channel > m_workspace.Channels) {
        m_prompts.message(title, "There is no channel " + *answer + ".", PromptIcon::Exclamation,
            PromptButtons::Ok);
        return;
    }
    const std::int32_t tag = firstDataTag(m_workspace.item(channel).DataTagList);
    if (tag < 0) {
        m_prompts.message(title,
            "Channel " + std::to_string(channel) + " does not refer to a module.",
            PromptIcon::Exclamation, PromptButtons::Ok);
        return;
    }
    try {
        const bool ok = PauseResume(m_session.driverHost(), m_workspace, m_status, pause ? 1 : 0,
            tag, static_cast<std::int16_t>(channel));
        if (!m_status.StatusClosed())
            m_status.ShowMessage(std::string("Channel ") + std::to_string(channel)
                    + (ok ? (pause ? ": the module is paused." : ": the module is running again.")
                          : ": the module did not answer."),
                kModuleCommandTitle);
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
    if (result.netIndicator && n < static_cast<int>(m_disp.size()))
        m_disp[static_cast<std::size_t>(n)]->setNetInd(*result.netIndicator);
}

void MainFrm::panelClick(int n)
{
    ShowStatusReport(
        n, m_workspace, m_session.engine(), [this](int k) { return panelTitle(k); }, m_status);
}

void MainFrm::setReadingLabel(const std::string &text)
{
    m_logLabel->setText(q(text));
}

void MainFrm::processEvents()
{
    QApplication::processEvents();
}

std::string MainFrm::panelTitle(int n) const
{
    if (n < 1 || n >= static_cast<int>(m_disp.size()))
        return {};
    return m_disp[static_cast<std::size_t>(n)]->Title().toStdString();
}

void MainFrm::enableMenu(LogMenu menu, bool enabled)
{
    const char *name = "mnuStartLog";
    switch (menu) {
    case LogMenu::StartLog:
        break;
    case LogMenu::StopLog:
        name = "mnuStopLog";
        break;
    case LogMenu::ViewLog:
        name = "mnuViewLog";
        break;
    case LogMenu::EditWorkspace:
        name = "mnuEditWorkspace";
        break;
    case LogMenu::Open:
        name = "mnuopen";
        break;
    }
    action(name)->setEnabled(enabled);
}

void MainFrm::setLogLabel(const std::string &caption)
{
    m_logLabel->setText(q(caption));
}

void MainFrm::setLogLabelToolTip(const std::string &text)
{
    m_logLabel->setToolTip(q(text));
}

} // namespace corvalog
