#include "logging/DataLogger.h"

#include "FileText.h"
#include "RecordingPrompts.h"
#include "runtime/DateTime.h"
#include "values/ScriptClass.h"

#include <QTemporaryDir>
#include <csignal>
#include <gtest/gtest.h>
#include <map>
#include <sys/resource.h>
#include <unistd.h>

using namespace corvalog;

namespace {

using Menus = std::map<LogMenu, bool>;
const Menus kLogging = { { LogMenu::StartLog, false }, { LogMenu::StopLog, true },
    { LogMenu::ViewLog, false }, { LogMenu::EditWorkspace, false }, { LogMenu::Open, false } };
const Menus kNotLogging = { { LogMenu::StartLog, true }, { LogMenu::StopLog, false },
    { LogMenu::ViewLog, true }, { LogMenu::EditWorkspace, true }, { LogMenu::Open, true } };

class Window final : public ReadValuesHost, public LoggingView, public TickTimer
{
public:
    Menus menus;
    std::string label, toolTip;
    std::int32_t timerInterval = 0; // 0 while stopped
    std::function<void()> onEvents = [] {};

    bool suppressReadingLabel() const override { return false; }
    void setReadingLabel(const std::string &) override { }
    void processEvents() override { onEvents(); }
    std::string panelTitle(int n) const override { return "Ch" + std::to_string(n); }
    void enableMenu(LogMenu menu, bool enabled) override { menus[menu] = enabled; }
    void setLogLabel(const std::string &caption) override { label = caption; }
    void setLogLabelToolTip(const std::string &text) override { toolTip = text; }
    void start(std::int32_t intervalMs) override { timerInterval = intervalMs; }
    void stop() override { timerInterval = 0; }
};

class DataLoggerTest : public ::testing::Test
{
public:
    QTemporaryDir dir;
    ManualClock clock { dateFromCivil({ 2026, 11, 15, 14, 3, 7 }) };
    ScriptClass tables { clock };
    ScriptEngine engine { tables };
    WorkspaceClass workspace;
    ChannelValues values;
    Window window;
    RecordingPrompts prompts;
    DataLogger logger { { workspace, values, engine, window, window, window, clock, prompts },
        false, dir.path().toStdString() };

    DataLoggerTest()
    {
        workspace.Channels = 2;
        workspace.Items.assign(2, ItemClass {});
        workspace.item(1).DataTagList = "1.5";
        workspace.item(2).DataTagList = "<1>*2";
        for (ItemClass &item : workspace.Items)
            item.Format = "0.00";
        workspace.LogInterval = 250;
        prepareChannels(workspace, values);
    }

    std::string path(const std::string &name) const
    {
        return dir.filePath(name.c_str()).toStdString();
    }
};

TEST_F(DataLoggerTest, LogsFreshRowsBetweenStartAndStop)
{
    const std::string file = path("run.csv");
    logger.DoLogging([&] { return file; });
    EXPECT_TRUE(logger.isLogging());
    EXPECT_EQ(window.menus, kLogging);
    EXPECT_EQ(window.label, "Logging at 4.0Hz to " + file);
    EXPECT_EQ(window.toolTip, window.label);
    EXPECT_EQ(window.timerInterval, 250);
    EXPECT_EQ(logger.startDate(), "15/11/2026");

    logger.LogTimer_Timer(250);
    clock.advanceSeconds(1);
    workspace.item(1).DataTagList = "2"; // the cycle reads scripts, so nothing changes...
    workspace.item(1).DataTagExpression = "2"; // ...until they do
    logger.LogTimer_Timer(262);
    EXPECT_EQ(logger.lastIntervalMs(), 262);
    EXPECT_FALSE(logger.firstRowPending());

    logger.DoLogging([] { return std::string("never asked"); });
    EXPECT_FALSE(logger.isLogging());
    EXPECT_EQ(window.menus, kNotLogging);
    EXPECT_EQ(window.label, "");
    EXPECT_EQ(window.timerInterval, 0);
    EXPECT_EQ(fileText(file),
        "Date,Time,Elapsed mS,Ch1,Ch2\r\n"
        "15/11/2026,14:03:07,250,1.50,3.00\r\n"
        "15/11/2026,14:03:08,512,2.00,4.00\r\n");
    EXPECT_TRUE(prompts.messages.empty());
}

TEST_F(DataLoggerTest, StartsThatCannotLogTellWhyAndChangeNothing)
{
    const std::string file = path("log.csv");
    const struct {
        std::int32_t interval;
        std::string chosen;
        std::string message; // "" for none
    } cases[] = {
        { 250, "", "" }, // the dialog was cancelled
        { 0, file,
            "Cannot log at an interval of 0 ms. Set a log interval of at least 1 ms first." },
        { -40, file,
            "Cannot log at an interval of -40 ms. Set a log interval of at least 1 ms first." },
        { 250, path("gone/log.csv"),
            "Cannot create the log file " + path("gone/log.csv") + ": Path not found (error 76)." },
        { 250, "/dev/full", "Cannot write the log file /dev/full: Disk full (error 61)." },
    };
    for (const auto &c : cases) {
        window.menus.clear();
        prompts.messages.clear();
        workspace.LogInterval = c.interval;
        logger.DoLogging([&] { return c.chosen; });
        EXPECT_FALSE(logger.isLogging()) << c.chosen;
        EXPECT_TRUE(window.menus.empty()) << c.chosen;
        EXPECT_EQ(window.timerInterval, 0);
        if (c.message.empty()) {
            EXPECT_TRUE(prompts.messages.empty());
        } else {
            ASSERT_EQ(prompts.messages.size(), 1u) << c.chosen;
            EXPECT_EQ(prompts.messages[0].title, "Log File");
            EXPECT_EQ(prompts.messages[0].text, c.message);
        }
    }
    EXPECT_EQ(prompts.fileDialogs.size(), 0u); // DoLogging's chooser is the test's lambda
}

TEST_F(DataLoggerTest, AFullDiskStopsLoggingOnceWithEveryWholeRowKept)
{
    const std::string file = path("full.csv");
    ASSERT_TRUE(logger.start(file));
    logger.LogTimer_Timer(250);
    const std::string before = fileText(file);
    // The file may grow by half a row more: the row that does not fit is taken back out.
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit old {};
    ::getrlimit(RLIMIT_FSIZE, &old);
    rlimit limited = old;
    limited.rlim_cur = before.size() + 10;
    ::setrlimit(RLIMIT_FSIZE, &limited);
    logger.LogTimer_Timer(250);
    logger.LogTimer_Timer(250);
    ::setrlimit(RLIMIT_FSIZE, &old);

    EXPECT_FALSE(logger.isLogging());
    EXPECT_EQ(window.menus, kNotLogging);
    EXPECT_EQ(fileText(file), before);
    ASSERT_EQ(prompts.messages.size(), 1u);
    EXPECT_EQ(prompts.messages[0].text,
        "Logging has stopped: the log file " + file
            + " could not be written: Disk full (error 61). Every row before this one is in the "
              "file.");
}

TEST_F(DataLoggerTest, RowsOfALogFileDeletedWhileLoggingAreSavedElsewhere)
{
    const std::string file = path("deleted.csv");
    ASSERT_TRUE(logger.start(file));
    logger.LogTimer_Timer(250);
    ::unlink(file.c_str());
    logger.LogTimer_Timer(250);

    EXPECT_FALSE(logger.isLogging());
    ASSERT_EQ(prompts.messages.size(), 1u);
    EXPECT_EQ(prompts.messages[0].text,
        "Logging has stopped: the log file " + file
            + " was deleted, or its folder removed, while logging. The rows written before were "
              "saved to "
            + file + ".");
    EXPECT_EQ(
        fileText(file), "Date,Time,Elapsed mS,Ch1,Ch2\r\n15/11/2026,14:03:07,250,1.50,3.00\r\n");
}

TEST_F(DataLoggerTest, StoppingWhileTheCycleLetsEventsRunWritesNoRow)
{
    const std::string file = path("stopped.csv");
    ASSERT_TRUE(logger.start(file));
    window.onEvents = [&] { logger.stop(); };
    logger.LogTimer_Timer(250);
    EXPECT_EQ(fileText(file), "Date,Time,Elapsed mS,Ch1,Ch2\r\n");
}

TEST(LogScheduling, TheScreenTickLeavesFastLogsToTheLogTimer)
{
    EXPECT_TRUE(screenTickReadsValues(false, 10));
    EXPECT_TRUE(screenTickReadsValues(true, 334));
    EXPECT_FALSE(screenTickReadsValues(true, 333));
    EXPECT_EQ(loggingLabel(300, "x.csv"), "Logging at 3.3Hz to x.csv");
    EXPECT_EQ(loggingLabel(2147483647, "x.csv"), "Logging at 0.0Hz to x.csv");
}

} // namespace
