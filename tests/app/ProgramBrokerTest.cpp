// The program on a broker source, as a display PC far from its base station runs it.
#include "Broker.h"
#include "ChildProcess.h"
#include "FileText.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QThread>
#include <gtest/gtest.h>

namespace corvalog {
namespace {

TEST(Program, ShowsLivePanelsFromABroker)
{
    QTemporaryDir dir;
    Broker broker(dir.path().toStdString());
    ASSERT_TRUE(broker.start()) << broker.log();
    // A relay on the base station's PC, the simulator standing in for its base station.
    ChildProcess::Options quiet;
    quiet.environment = { { "HOME", dir.path().toStdString() } };
    ChildProcess relay(
        { CORVALOG_CLI_PATH, "relay", "--source", "sim", "--to", broker.url("site/bench1"),
            "--spool", dir.filePath("spool").toStdString(), "--duration", "60" },
        quiet);

    const QString program = dir.filePath("corvalog");
    QFile::copy(QStringLiteral(CORVALOG_APP_PATH), program);
    writeFile(dir.filePath("Config.INI").toStdString(), "");
    writeFile(dir.filePath("Corvalog.lws").toStdString(),
        "[Workspace]\nType=CORVALOG\nVersion=2\nChannels=1\nlogInterval=250\n"
        "DataTagList1=<FF12>\nCaption1=Load\nFormat1=0.000\nTimeout1=2\n");
    const QString log = dir.filePath("log.csv");
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("HOME", dir.path());
    env.insert("QT_QPA_PLATFORM", "offscreen");
    env.insert("CORVALOG_SOURCE", QString::fromStdString(broker.url("site?client=display1")));
    env.insert("CORVALOG_LOG_TO", log);
    QProcess run;
    run.setProcessEnvironment(env);
    run.start(program, {});
    ASSERT_TRUE(run.waitForStarted(5000));
    // The load module's readings, not an error's Default, in the rows of the last seconds.
    const QRegularExpression live(QStringLiteral(R"(,1[0-9]\.\d{3}\r$)"));
    int liveRows = 0;
    for (int i = 0; i < 200 && liveRows < 4; ++i) {
        QThread::msleep(50);
        liveRows = 0;
        for (const QByteArray &line :
            QByteArray::fromStdString(fileText(log.toStdString())).split('\n'))
            liveRows += live.match(QString::fromLatin1(line)).hasMatch();
    }
    run.kill();
    run.waitForFinished(5000);
    EXPECT_GE(liveRows, 4) << fileText(log.toStdString())
                           << run.readAllStandardError().toStdString();
}

} // namespace
} // namespace corvalog
