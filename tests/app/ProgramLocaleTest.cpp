// The program itself, started as a user in a decimal-comma locale starts it.
#include "FileText.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QThread>
#include <gtest/gtest.h>

namespace {

TEST(Program, LogsInTheSeparatorsOfTheUsersLocale)
{
    // A program folder of its own: the program, a Config.INI that keeps its settings there,
    // and a fixed workspace of two constant channels logged every 100 ms.
    QTemporaryDir dir;
    const QString program = dir.filePath("corvalog");
    QFile::copy(QStringLiteral(CORVALOG_APP_PATH), program);
    corvalog::writeFile(dir.filePath("Config.INI").toStdString(), "");
    corvalog::writeFile(dir.filePath("Corvalog.lws").toStdString(),
        "[Workspace]\nType=CORVALOG\nVersion=2\nChannels=2\nlogInterval=100\n"
        "DataTagList1=5/4\nCaption1=Ratio, x\nFormat1=0.00\n"
        "DataTagList2=1234.5\nCaption2=Big\nFormat2=#,##0.0\n");
    const QString log = dir.filePath("log.csv");

    // Only what the test sets decides the locale, whatever the machine's own settings are.
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    for (const char *name : { "LC_ALL", "LC_NUMERIC", "LC_TIME", "LC_MESSAGES", "LANGUAGE" })
        env.remove(QString::fromLatin1(name));
    const std::pair<const char *, QString> settings[] = { { "LANG", "de_DE.UTF-8" },
        { "HOME", dir.path() }, { "XDG_CONFIG_HOME", dir.filePath("config") },
        { "XDG_DATA_HOME", dir.filePath("data") }, { "QT_QPA_PLATFORM", "offscreen" },
        { "CORVALOG_SOURCE", "sim:1" }, { "CORVALOG_LOG_TO", log } };
    for (const auto &[name, value] : settings)
        env.insert(QString::fromLatin1(name), value);

    QProcess run;
    run.setProcessEnvironment(env);
    run.start(program, {});
    ASSERT_TRUE(run.waitForStarted(5000));
    const auto logLines = [&log] {
        return QByteArray::fromStdString(corvalog::fileText(log.toStdString())).split('\n');
    };
    QElapsedTimer waited;
    waited.start();
    while (logLines().size() < 4 && waited.elapsed() < 10000) // three whole lines
        QThread::msleep(50);
    run.kill();
    run.waitForFinished(5000);

    const QList<QByteArray> lines = logLines();
    ASSERT_GE(lines.size(), 3) << run.readAllStandardError().toStdString();
    EXPECT_EQ(lines[0], "Date;Time;Elapsed mS;Ratio, x;Big\r");
    const QRegularExpression row(
        QStringLiteral(R"(^\d\d\.\d\d\.\d{4};\d\d:\d\d:\d\d;\d+(,\d+)?;1,25;1\.234,5\r$)"));
    EXPECT_TRUE(row.match(QString::fromLatin1(lines[1])).hasMatch()) << lines[1].toStdString();
}

} // namespace
