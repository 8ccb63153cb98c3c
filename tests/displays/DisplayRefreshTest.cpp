#include "displays/DisplayRefresh.h"

#include "NullWindow.h"
#include "RecordingPrompts.h"
#include "session/Session.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <tuple>

using namespace corvalog;

namespace {

class DisplayRefreshTest : public ::testing::Test
{
public:
    QTemporaryDir dir;
    ManualClock clock { 46000.0 };
    NullWindow host;
    RecordingPrompts prompts;
    Session session { SessionOptions { nullptr, &clock, {}, false, {} },
        SessionHost { host, host, host, prompts } };
    WorkspaceClass &ws = session.workspace();
    ChannelValues &values = session.values();
    DataLogger &logger = session.logger();
    QWidget window;
    std::vector<LCDModule *> panels { nullptr };
    std::string logLine;
    DisplayRefresh refresh { { session, window, panels,
        [this](const std::string &text) { logLine = text; } } };

    // Channels with their expressions; limits 0..10, format "0.0".
    void define(const std::vector<std::string> &expressions)
    {
        ItemClass item;
        item.Format = "0.0";
        item.Overload = 10; // the underload is 0
        ws.Channels = static_cast<std::int16_t>(expressions.size());
        ws.Items.assign(expressions.size(), item);
        for (std::size_t i = 0; i < expressions.size(); ++i) {
            ws.Items[i].DataTagList = expressions[i];
            panels.push_back(new LCDModule(&window));
        }
        prepareChannels(ws, values);
    }
    LCDModule &panel(int n) { return *panels[static_cast<std::size_t>(n)]; }
};

// The refresh writes into each panel what its channel decides.
TEST_F(DisplayRefreshTest, PanelsShowWhatTheirChannelsDecide)
{
    define({ "12", "1/0" });
    ws.item(1).TareValue = 1;
    ws.item(1).DataTagLQIScript = "55";
    ws.item(1).DataTagBattScript = "True";
    refresh.ScreenTimer_Timer();
    const auto shown = [this](int n) {
        LCDModule &p = panel(n);
        return std::make_tuple(
            p.Value().toStdString(), p.FlashMode(), p.BackColor(), p.NetInd(), p.LQI(), p.LoBatt());
    };
    // Channel 1, tared, lies beyond its overload with every indicator lit; 2 is in error.
    EXPECT_EQ(
        shown(1), std::make_tuple(std::string("11.0"), true, kSystem3DLight, true, 3.0f, true));
    EXPECT_EQ(
        shown(2), std::make_tuple(std::string(kNoValue), false, kPureRed, false, 0.0f, false));
}

TEST_F(DisplayRefreshTest, FastLogsLeaveEvaluationToTheLogTimer)
{
    define({ "1", "2" });
    const std::string file = dir.filePath("log.csv").toStdString();
    // The log interval, whether the screen tick evaluates, and the logging line it shows.
    const std::tuple<std::int32_t, bool, const char *> cases[] = {
        { 250, false, "Logging requested at 250ms (8 channel readings per sec) to " },
        { 333, false, nullptr },
        { 334, true, nullptr },
    };
    for (const auto &[interval, evaluates, line] : cases) {
        ws.LogInterval = interval;
        ASSERT_TRUE(logger.start(file));
        logger.LogTimer_Timer(87);
        ws.item(1).DataTagExpression = "5"; // what the next evaluation would show
        refresh.ScreenTimer_Timer();
        EXPECT_EQ(panel(1).Value().toStdString(), evaluates ? "5.0" : "1.0") << interval;
        if (line) {
            EXPECT_EQ(logLine, line + file + " and achieving 087ms");
        }
        logger.stop();
        ws.item(1).DataTagExpression = "1";
        refresh.ScreenTimer_Timer();
    }
}

// A minimised window is not painted, but its panels keep up; a closing one is left alone.
TEST_F(DisplayRefreshTest, PanelsAreWrittenWhileMinimisedButNotWhileClosing)
{
    define({ "3" });
    window.setWindowState(Qt::WindowMinimized);
    refresh.ScreenTimer_Timer();
    EXPECT_EQ(panel(1).Value().toStdString(), "3.0");

    window.setWindowState(Qt::WindowNoState);
    ws.item(1).DataTagExpression = "4";
    refresh.setClosing(true);
    refresh.ScreenTimer_Timer();
    EXPECT_EQ(panel(1).Value().toStdString(), "3.0");
    EXPECT_EQ(values.output(1), 4.0f); // evaluated all the same
}

} // namespace
