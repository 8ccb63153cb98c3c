#pragma once

#include "ChartWindows.h"
#include "HelpWindow.h"
#include "PanelGrid.h"
#include "StatusFrm.h"
#include "StatusStrip.h"
#include "acquisition/InterfaceInit.h"
#include "displays/DisplayRefresh.h"
#include "logging/IntervalTimer.h"
#include "runtime/Clock.h"
#include "runtime/NumberLocale.h"
#include "session/Session.h"
#include "workspace/Settings.h"
#include "workspace/SystemFolders.h"

#include <QLockFile>
#include <QMainWindow>
#include <QSettings>
#include <QTimer>
#include <functional>
#include <memory>

class QAction;
class QLabel;
class QMenu;

namespace corvalog {

class LCDModule;
class TableContainer;

// What the main window is given by the program (and by tests).
struct MainFrmOptions {
    SystemFolders folders = SystemFolders::current();
    // Makes the driver object; raises VbError when it cannot.
    ProviderFactory factory;
    // The source CORVALOG_SOURCE names, which wins over the driver setting ("" when unset).
    std::string sourceOverride;
    // The command line after the program name, as typed.
    std::string commandLine;
    UserPrompts *prompts = nullptr;
    // The per-user store of the window size.
    std::function<std::unique_ptr<QSettings>()> userSettings
        = [] { return corvalog::userSettings(); };
    const Clock *clock = nullptr; // the system clock when null
    // The waits of activation and closing; tests make them instant.
    std::function<void(std::int32_t)> busyWait = Delay;
    // Waits letting events run meanwhile (the last second of unloading).
    std::function<void(std::int32_t)> eventWait;
    // Where the rows of a log file deleted while logging are saved ("" = the log folder).
    std::string rescueFolder;
    // The separators numbers and dates are written with; the program passes the user's own
    // (systemNumberLocale()), and start-up makes them the process's.
    NumberLocale locale;
};

// The main window: the channel panels in a grid that flows with the window's width, the
// logging line, the menus, and the four timers (screen refresh, blink phase, log rows,
// keep-awake). It brings the program up (Form_Load), activates workspaces (SetupDisplays) and
// takes the program down (closing asks about an unsaved workspace, releases the driver and
// stores the window size).
class MainFrm final : public QMainWindow, private ReadValuesHost, private LoggingView
{
    Q_OBJECT

public:
    // The address the logo opens.
    static constexpr const char *kWebAddress = "https://corvalog.example.com";

    explicit MainFrm(MainFrmOptions options);
    ~MainFrm() override;

    // The start-up sequence. False when no driver object can be made: the user has been told
    // and the program must end at once, saving nothing.
    bool Form_Load();
    // Turns the current workspace into panels, re-opens the base station, fits the window
    // around the grid and prepares every channel's scripts.
    void SetupDisplays();
    // Stores the window size, unless minimised.
    void SaveForm();

    // The menu commands.
    void mnuopen_Click();
    void mnuSave_Click();
    void mnuEditWorkspace_Click();
    void mnuDriver_Click();
    void mnuExit_Click();
    void mnuStartStopLog_Click();
    // Starts logging to a file without the dialog (unattended runs); nothing when logging.
    void startLoggingTo(const std::string &path);
    void mnuIntervalConfig_Click();
    void mnuViewLog_Click();
    void mnuTrends_Click() { m_charts.showTrends(); }
    void mnuReviewLog_Click() { m_charts.askAndReview(); }
    void mnuWake_Click();
    void mnuSleep_Click();
    void mnuPauseResume_Click(bool pause);
    void mnuPause_Click() { mnuPauseResume_Click(true); }
    void mnuResume_Click() { mnuPauseResume_Click(false); }
    void mnuAbout_Click();
    void mnuHelp_Click();

    // What tests and the walk-through look at.
    Session &session() { return m_session; }
    WorkspaceClass &workspace() { return m_session.workspace(); }
    ChannelValues &values() { return m_session.values(); }
    ScriptClass &tables() { return m_session.tables(); }
    DataLogger &logger() { return m_session.logger(); }
    StatusWindow &status() { return m_status; }
    HelpWindow &help() { return m_help; }
    ChartWindows &charts() { return m_charts; }
    DriverHost &driverHost() { return m_session.driverHost(); }
    const SettingsPaths &paths() const { return m_paths; }
    const std::vector<LCDModule *> &Disp() const { return m_panels->panels(); }
    TableContainer *grid() const { return m_panels->grid(); }
    QLabel *LogLabel() const { return m_strip->logLabel(); }
    QLabel *Vers() const { return m_strip->version(); }
    QLabel *ImageLogo() const { return m_strip->logo(); }
    QAction *action(const char *name) const;
    QMenu *mnuCalibration() const { return m_calibration; }
    bool FixedInstall() const { return m_fixedInstall; }
    bool workspaceChanged() const { return m_workspaceChanged; }
    bool activationBusy() const { return m_busy; }
    bool closing() const { return m_closing; }
    bool screenTimerActive() const { return m_screenTimer.isActive(); }
    // One screen tick now, as the timer would run it.
    void ScreenTimer_Timer();

signals:
    // The workspace editor is open (the walk-through drives it from here).
    void editorOpened(QDialog *editor);

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void ImageLogo_Click();
    void tellLosses();
    // ReadValuesHost
    bool suppressReadingLabel() const override { return true; }
    void setReadingLabel(const std::string &text) override;
    void processEvents() override;
    std::string panelTitle(int n) const override;
    // LoggingView
    void enableMenu(LogMenu menu, bool enabled) override;
    void setLogLabel(const std::string &caption) override;
    void setLogLabelToolTip(const std::string &text) override;

    void buildWindow();
    bool Form_QueryUnload();
    void Form_Unload();
    void fitWindowToGrid();
    // Keeps the window at least as wide as its menu bar; the menu bar's width.
    int keepMenusInView();
    void panelZero(int n);
    void panelClick(int n);
    // Asks about unsaved changes before they would be lost; false to stay.
    bool keepOrSaveChanges();

    MainFrmOptions m_options;
    UserPrompts &m_prompts;
    SettingsPaths m_paths;
    std::unique_ptr<QLockFile> m_instanceMarker;

    IntervalTimer m_logTimer;
    Session m_session;
    WorkspaceClass &m_workspace; // the session's, named as the window has always named it
    std::unique_ptr<DisplayRefresh> m_refresh;
    StatusWindow m_status;
    HelpWindow m_help;

    QTimer m_screenTimer;
    QTimer m_stayAwakeTimer;

    PanelGrid *m_panels = nullptr;
    StatusStrip *m_strip = nullptr;
    QMenu *m_calibration = nullptr;

    bool m_fixedInstall = false;
    bool m_commaDecimal = false;
    bool m_workspaceChanged = false;
    bool m_busy = false;
    // Packets lost by the source are told once per activation.
    bool m_lossTold = false;
    bool m_closing = false;
    bool m_unloaded = false;
    ChartWindows m_charts;
};

} // namespace corvalog
