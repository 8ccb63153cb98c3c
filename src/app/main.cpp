// Corvalog, the desktop program. The packets come from the source CORVALOG_SOURCE names (the
// built-in simulated base station by default); the command line is the program's own
// ("workbay" shows the calibration commands).
#include "AppStyle.h"
#include "MainFrm.h"
#include "ProviderChoice.h"
#include "QtPrompts.h"

#include <QApplication>

using namespace corvalog;

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QString::fromLatin1(kProgramName));
    QApplication::setApplicationVersion(QStringLiteral(CORVALOG_VERSION));
    applyAppStyle(app);

    QStringList words = app.arguments();
    words.removeFirst();
    const QByteArray source = qgetenv(kSourceVariable);

    QtPrompts prompts;
    MainFrmOptions options;
    options.factory = providerFactoryFor(source.isEmpty() ? "sim" : source.toStdString());
    options.commandLine = words.join(QLatin1Char(' ')).toStdString();
    options.prompts = &prompts;
    MainFrm window(std::move(options));
    prompts.setOwner(&window);
    if (!window.Form_Load())
        return 1;
    window.show();
    return app.exec();
}
