// "corvalog --review FILE", as a user starts it from a terminal.
#include "FileText.h"

#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

TEST(Program, ReviewOpensALogAloneAndRefusesWhatIsNone)
{
    QTemporaryDir dir;
    const QString log = dir.filePath("run.csv");
    corvalog::writeFile(log.toStdString(),
        "Date,Time,Elapsed mS,Load\r\n24/11/2026,07:00:00,1000,1.5\r\n"
        "24/11/2026,07:00:01,2000,2.5\r\n");
    corvalog::writeFile(dir.filePath("notes.csv").toStdString(), "a,b\n1,2\n");
    const struct {
        QStringList arguments;
        int exitCode;
        const char *says; // on stderr
    } cases[] = {
        { { "--review", log }, 0, "" },
        { { "--review", dir.filePath("notes.csv") }, 1,
            "notes.csv is neither a Corvalog log nor a packet recording" },
        { { "--review", dir.filePath("missing.csv") }, 1, "cannot open" },
        { { "--review" }, 2, "--review needs a log file" },
    };
    for (const auto &c : cases) {
        QProcess run;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        // Painted, the review ends itself: it opened without a base station or a workspace.
        env.insert(QStringLiteral("CORVALOG_QUIT_AFTER_FIRST_FRAME"), QStringLiteral("1"));
        env.insert(QStringLiteral("HOME"), dir.path());
        run.setProcessEnvironment(env);
        run.start(QStringLiteral(CORVALOG_APP_PATH), c.arguments);
        ASSERT_TRUE(run.waitForFinished(20000)) << c.arguments.join(' ').toStdString();
        const std::string stderrText = run.readAllStandardError().toStdString();
        EXPECT_EQ(run.exitCode(), c.exitCode) << stderrText;
        EXPECT_NE(stderrText.find(c.says), std::string::npos) << stderrText;
    }
}

} // namespace
