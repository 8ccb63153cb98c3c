#include "MainMenus.h"

#include "MainFrm.h"

#include <QAction>
#include <QMenuBar>

namespace corvalog {

namespace {

struct Command {
    const char *name;
    const char *caption;
    void (MainFrm::*handler)();
    QKeySequence keys;
};

QMenu *menuOf(
    MainFrm &window, const char *caption, const char *name, std::initializer_list<Command> commands)
{
    QMenu *menu = window.menuBar()->addMenu(QString::fromLatin1(caption));
    if (name)
        menu->setObjectName(QString::fromLatin1(name));
    for (const Command &c : commands) {
        if (c.handler == nullptr) {
            QAction *separator = menu->addSeparator();
            if (c.name)
                separator->setObjectName(QString::fromLatin1(c.name));
            continue;
        }
        QAction *a = menu->addAction(QString::fromUtf8(c.caption));
        a->setObjectName(QString::fromLatin1(c.name));
        a->setShortcut(c.keys);
        QObject::connect(a, &QAction::triggered, &window, c.handler);
    }
    return menu;
}

} // namespace

QMenu *buildMainMenus(MainFrm &window)
{
    const Command separator { nullptr, nullptr, nullptr, {} };
    menuOf(window, "&File", nullptr,
        { { "mnuopen", "&Open Workspace", &MainFrm::mnuopen_Click, QKeySequence::Open },
            { "mnuSave", "&Save Workspace", &MainFrm::mnuSave_Click, QKeySequence::Save },
            { "mnublank", nullptr, nullptr, {} },
            { "mnuEditWorkspace", "Configure &Workspace", &MainFrm::mnuEditWorkspace_Click, {} },
            { "mnuDriver", "Base Station &Driver...", &MainFrm::mnuDriver_Click, {} }, separator,
            { "mnuReviewLog", "&Review Log…", &MainFrm::mnuReviewLog_Click, {} }, separator,
            { "mnuExit", "E&xit", &MainFrm::mnuExit_Click, {} } });
    // A new driver re-activates the workspace, as the editor's changes do: while logging keeps
    // the editor away, it keeps the driver away too.
    QObject::connect(window.action("mnuEditWorkspace"), &QAction::enabledChanged,
        window.action("mnuDriver"), &QAction::setEnabled);

    // Ctrl+L starts and stops: only one of the two is enabled at a time.
    const QKeySequence startStop(Qt::CTRL | Qt::Key_L);
    menuOf(window, "&Logging", nullptr,
        { { "mnuStartLog", "&Start Logging", &MainFrm::mnuStartStopLog_Click, startStop },
            { "mnuStopLog", "S&top Logging", &MainFrm::mnuStartStopLog_Click, startStop },
            separator,
            { "mnuIntervalConfig", "Log &Interval", &MainFrm::mnuIntervalConfig_Click, {} },
            { "mnuViewLog", "&View Last Log", &MainFrm::mnuViewLog_Click, {} } });
    window.action("mnuStopLog")->setEnabled(false);

    menuOf(window, "&View", nullptr,
        { { "mnuTrends", "&Trends", &MainFrm::mnuTrends_Click,
            QKeySequence(Qt::CTRL | Qt::Key_T) } });

    menuOf(window, "&Sleep && Wake", "mnusleepwake",
        { { "mnuWake", "&Wake", &MainFrm::mnuWake_Click, {} },
            { "mnuSleep", "S&leep", &MainFrm::mnuSleep_Click, {} } });

    QMenu *calibration = menuOf(window, "&Calibration", "mnuCalibration",
        { { "mnuPause", "&Pause Module", &MainFrm::mnuPause_Click, {} },
            { "mnuResume", "&Resume Module", &MainFrm::mnuResume_Click, {} } });
    calibration->menuAction()->setVisible(false);

    // F1 itself is caught application-wide, so it opens the topic of the focused control.
    menuOf(window, "&Help", nullptr,
        { { "mnuHelpContents", "&Contents\tF1", &MainFrm::mnuHelp_Click, {} },
            { "mnuAbout", "&About Corvalog", &MainFrm::mnuAbout_Click, {} } });
    return calibration;
}

} // namespace corvalog
