// Corvalog, the desktop program. The packets come from the source CORVALOG_SOURCE names, else
// the driver setting of the settings file (the built-in simulated base station by default); the
// command line is the program's own ("workbay" shows the calibration commands), except
// "--review FILE", which opens a log for review alone. CORVALOG_QUIT_AFTER_FIRST_FRAME=1 ends
// the program once its window has been painted, for measuring start-up. CORVALOG_LOG_TO=FILE
// starts logging to FILE as soon as the window is up, for unattended runs.
#include "AppStyle.h"
#include "ChartWindows.h"
#include "HelpWindow.h"
#include "MainFrm.h"
#include "ProviderChoice.h"
#include "QtPrompts.h"
#include "runtime/SystemLocale.h"
#include "trends/ReviewWindow.h"

#include <QApplication>
#include <QTimer>
#include <csignal>
#include <cstdio>
#include <cstdlib>

using namespace corvalog;

namespace {

// Ends the process once the window has painted: the whole start-up, as a user waits for it,
// and nothing of the orderly shutdown (which takes its own two seconds).
class FirstFrameProbe final : public QObject
{
protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            QTimer::singleShot(0, [] { std::_Exit(0); });
        return false;
    }
};

// "--review FILE...": review windows on logs, without a base station or a workspace. The
// program ends when the last is closed; a file that does not read is told on stderr.
int reviewOnly(const QStringList &files)
{
    if (files.isEmpty()) {
        std::fprintf(stderr, "corvalog: --review needs a log file\n");
        return 2;
    }
    HelpWindow help(manualPath(QApplication::applicationDirPath()), nullptr);
    FirstFrameProbe probe;
    const bool probing = qEnvironmentVariableIntValue("CORVALOG_QUIT_AFTER_FIRST_FRAME") != 0;
    int opened = 0;
    for (const QString &file : files) {
        QString error;
        if (ReviewWindow *window = openReviewWindow(file, nullptr, error)) {
            window->setAttribute(Qt::WA_QuitOnClose, true);
            if (probing)
                window->installEventFilter(&probe);
            ++opened;
        } else {
            std::fprintf(stderr, "corvalog: %s\n", qPrintable(error));
        }
    }
    return opened == 0 ? 1 : QApplication::exec();
}

} // namespace

int main(int argc, char **argv)
{
    // A log written to a pipe whose reader left fails its write (and is reported) instead of
    // ending the program.
    std::signal(SIGPIPE, SIG_IGN);
    QApplication app(argc, argv);
    QApplication::setApplicationName(QString::fromLatin1(kProgramName));
    QApplication::setApplicationVersion(QStringLiteral(CORVALOG_VERSION));
    applyAppStyle(app);

    QStringList words = app.arguments();
    words.removeFirst();
    if (!words.isEmpty() && words.front() == QLatin1String("--review"))
        return reviewOnly(words.mid(1));
    const QByteArray source = qgetenv(kSourceVariable);

    QtPrompts prompts;
    MainFrmOptions options;
    // The settings file is settled by the window's start-up, before the first driver is made.
    const MainFrm *frame = nullptr;
    options.factory = providerFactoryFor(source.toStdString(),
        [&frame] { return frame ? frame->paths().settingsFile : std::string(); });
    options.sourceOverride = source.toStdString();
    options.commandLine = words.join(QLatin1Char(' ')).toStdString();
    options.prompts = &prompts;
    options.locale = systemNumberLocale();
    MainFrm window(std::move(options));
    frame = &window;
    prompts.setOwner(&window);
    if (!window.Form_Load())
        return 1;
    FirstFrameProbe probe;
    if (qEnvironmentVariableIntValue("CORVALOG_QUIT_AFTER_FIRST_FRAME"))
        window.installEventFilter(&probe);
    window.show();
    const QString logTo = qEnvironmentVariable("CORVALOG_LOG_TO");
    if (!logTo.isEmpty())
        QTimer::singleShot(
            0, &window, [&window, logTo] { window.startLoggingTo(logTo.toStdString()); });
    return app.exec();
}
