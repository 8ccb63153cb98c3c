// The program itself, started as a user in a decimal-comma locale starts it.
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QThread>
#include <gtest/gtest.h>

namespace {

QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// A program folder of its own: the program, a Config.INI that keeps its settings there, and a
// fixed workspace of two constant channels logged every 100 ms.
QString programFolder(const QTemporaryDir &dir)
{
    const QString folder = dir.filePath(QStringLiteral("program"));
    QDir().mkpath(folder);
    QFile::copy(QStringLiteral(CORVALOG_APP_PATH), folder + QStringLiteral("/corvalog"));
    QFile config(folder + QStringLiteral("/Config.INI"));
    config.open(QIODevice::WriteOnly);
    QFile workspace(folder + QStringLiteral("/Corvalog.lws"));
    workspace.open(QIODevice::WriteOnly);
    workspace.write("[Workspace]\nType=CORVALOG\nVersion=2\nChannels=2\nlogInterval=100\n"
                    "DataTagList1=5/4\nCaption1=Ratio, x\nFormat1=0.00\n"
                    "DataTagList2=1234.5\nCaption2=Big\nFormat2=#,##0.0\n");
    return folder;
}

TEST(Program, LogsInTheSeparatorsOfTheUsersLocale)
{
    QTemporaryDir dir;
    const QString folder = programFolder(dir);
    const QString log = dir.filePath(QStringLiteral("log.csv"));

    // Only what the test sets decides the locale, whatever the machine's own settings are.
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    for (const char *name : { "LC_ALL", "LC_NUMERIC", "LC_TIME", "LC_MESSAGES", "LANGUAGE" })
        env.remove(QString::fromLatin1(name));
    env.insert(QStringLiteral("LANG"), QStringLiteral("de_DE.UTF-8"));
    env.insert(QStringLiteral("HOME"), dir.path());
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), dir.filePath(QStringLiteral("config")));
    env.insert(QStringLiteral("XDG_DATA_HOME"), dir.filePath(QStringLiteral("data")));
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    env.insert(QStringLiteral("CORVALOG_SOURCE"), QStringLiteral("sim:1"));
    env.insert(QStringLiteral("CORVALOG_LOG_TO"), log);

    QProcess program;
    program.setProcessEnvironment(env);
    program.start(folder + QStringLiteral("/corvalog"), {});
    ASSERT_TRUE(program.waitForStarted(5000));
    QElapsedTimer waited;
    waited.start();
    while (fileBytes(log).count('\n') < 3 && waited.elapsed() < 10000)
        QThread::msleep(50);
    program.kill();
    program.waitForFinished(5000);

    const QList<QByteArray> lines = fileBytes(log).split('\n');
    ASSERT_GE(lines.size(), 3) << program.readAllStandardError().toStdString();
    EXPECT_EQ(lines[0], "Date;Time;Elapsed mS;Ratio, x;Big\r");
    const QRegularExpression row(
        QStringLiteral(R"(^\d\d\.\d\d\.\d{4};\d\d:\d\d:\d\d;\d+(,\d+)?;1,25;1\.234,5\r$)"));
    EXPECT_TRUE(row.match(QString::fromLatin1(lines[1])).hasMatch()) << lines[1].toStdString();
}

} // namespace
