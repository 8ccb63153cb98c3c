#include "logging/DataLogger.h"

#include "FileText.h"
#include "RecordingPrompts.h"
#include "runtime/DateTime.h"
#include "values/ScriptClass.h"

#include <QTemporaryDir>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace corvalog;

namespace {

// What the user was told: "" for nothing, "?" for more than one message.
std::string told(const RecordingPrompts &prompts)
{
    const auto &m = prompts.messages;
    return m.size() > 1 ? "?" : m.empty() ? "" : m[0].text;
}

const std::string kHeader = "Date,Time,Elapsed mS,Ch1,Ch2\r\n";
const std::string kFirstRow = "15/11/2026,14:03:07,250,1.50,3.00\r\n";

// The fixture is the main window too: its menus, log label and log timer.
class DataLoggerTest : public ::testing::Test,
                       public ReadValuesHost,
                       public LoggingView,
                       public TickTimer
{
public:
    // Start Log, Stop Log, View Log, Edit Workspace and Open: 1 enabled, 0 disabled, - untouched.
    std::string menus = "-----";
    std::string label;
    std::int32_t timerInterval = 0; // 0 while stopped
    std::function<void()> onEvents = [] {};

    bool suppressReadingLabel() const override { return false; }
    void setReadingLabel(const std::string &) override { }
    void processEvents() override { onEvents(); }
    std::string panelTitle(int n) const override { return "Ch" + std::to_string(n); }
    void enableMenu(LogMenu m, bool on) override { menus.at(std::size_t(m)) = on ? '1' : '0'; }
    void setLogLabel(const std::string &caption) override { label = caption; }
    void setLogLabelToolTip(const std::string &) override { }
    void start(std::int32_t intervalMs) override { timerInterval = intervalMs; }
    void stop() override { timerInterval = 0; }

    QTemporaryDir dir;
    ManualClock clock { dateFromCivil({ 2026, 11, 15, 14, 3, 7 }) };
    ScriptClass tables { clock };
    ScriptEngine engine { tables };
    WorkspaceClass workspace;
    ChannelValues values;
    RecordingPrompts prompts;
    DataLogger logger { { workspace, values, engine, *this, *this, *this, clock, prompts }, false,
        dir.path().toStdString() };

    DataLoggerTest()
    {
        workspace.Channels = 2;
        workspace.Items.assign(2, ItemClass {});
        workspace.item(1).DataTagList = "1.5";
        workspace.item(2).DataTagList = "<1>*2";
        workspace.item(1).Format = workspace.item(2).Format = "0.00";
        workspace.LogInterval = 250;
        prepareChannels(workspace, values);
    }

    std::string path(const std::string &n) const { return dir.path().toStdString() + "/" + n; }
    // The menus, the log timer's interval and the log label, as the window shows them.
    std::string window() const { return menus + " " + std::to_string(timerInterval) + " " + label; }
};

TEST_F(DataLoggerTest, LogsFreshRowsBetweenStartAndStopAndNoneAfter)
{
    const std::string file = path("run.csv");
    logger.DoLogging([&] { return file; });
    EXPECT_EQ(window(), "01000 250 Logging at 4.0Hz to " + file);

    logger.LogTimer_Timer(250);
    clock.advanceSeconds(1);
    workspace.item(1).DataTagList = "2"; // the cycle reads scripts, so nothing changes...
    workspace.item(1).DataTagExpression = "2"; // ...until they do
    logger.LogTimer_Timer(262);

    logger.DoLogging([] { return std::string("never asked"); });
    EXPECT_EQ(window(), "10111 0 ");
    EXPECT_EQ(fileText(file), kHeader + kFirstRow + "15/11/2026,14:03:08,512,2.00,4.00\r\n");
    EXPECT_EQ(told(prompts), "");

    // Stopped while the cycle lets events run: no row.
    ASSERT_TRUE(logger.start(file));
    onEvents = [&] { logger.stop(); };
    logger.LogTimer_Timer(250);
    EXPECT_EQ(fileText(file), kHeader);
}

TEST_F(DataLoggerTest, StartsThatCannotLogTellWhyAndChangeNothing)
{
    const std::tuple<std::int32_t, std::string, std::string> cases[] = {
        { 250, "", "" }, // the dialog was cancelled
        { 0, path("log.csv"),
            "Cannot log at an interval of 0 ms. Set a log interval of at least 1 ms first." },
        { 250, path("gone/log.csv"),
            "Cannot create the log file " + path("gone/log.csv") + ": Path not found (error 76)." },
        { 250, "/dev/full", "Cannot write the log file /dev/full: Disk full (error 61)." },
    };
    for (const auto &[interval, chosen, message] : cases) {
        prompts.messages.clear();
        workspace.LogInterval = interval;
        logger.DoLogging([&] { return chosen; });
        EXPECT_EQ(window(), "----- 0 ") << chosen;
        EXPECT_EQ(told(prompts), message);
    }
}

// A row that cannot be written stops logging and is told once, with every whole row kept: on a
// full disk (the file may grow by half a row, which is taken back out), and when the file is
// deleted (its rows are saved again).
TEST_F(DataLoggerTest, ARowThatCannotBeWrittenStopsLoggingWithEveryWholeRowKept)
{
    const std::string full = path("full.csv"), deleted = path("deleted.csv");
    ASSERT_TRUE(logger.start(full));
    logger.LogTimer_Timer(250);
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit old {};
    ::getrlimit(RLIMIT_FSIZE, &old);
    const rlimit limited { (kHeader + kFirstRow).size() + 10, old.rlim_max };
    ::setrlimit(RLIMIT_FSIZE, &limited);
    logger.LogTimer_Timer(250);
    logger.LogTimer_Timer(250);
    ::setrlimit(RLIMIT_FSIZE, &old);
    EXPECT_EQ(window(), "10111 0 ");
    EXPECT_EQ(fileText(full), kHeader + kFirstRow);
    EXPECT_EQ(told(prompts),
        "Logging has stopped: the log file " + full
            + " could not be written: Disk full (error 61). Every row before this one is in the "
              "file.");

    prompts.messages.clear();
    ASSERT_TRUE(logger.start(deleted));
    logger.LogTimer_Timer(250);
    ::unlink(deleted.c_str());
    logger.LogTimer_Timer(250);
    EXPECT_EQ(told(prompts),
        "Logging has stopped: the log file " + deleted
            + " was deleted, or its folder removed, while logging. The rows written before were "
              "saved to "
            + deleted + ".");
    EXPECT_EQ(fileText(deleted), kHeader + kFirstRow);
}

} // namespace
