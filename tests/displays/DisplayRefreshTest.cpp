#include "displays/DisplayRefresh.h"

#include "NullWindow.h"
#include "RecordingPrompts.h"
#include "displays/eLCD.h"
#include "session/Session.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

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
        ws.Channels = static_cast<std::int16_t>(expressions.size());
        ws.Items.assign(expressions.size(), ItemClass {});
        for (std::size_t i = 0; i < expressions.size(); ++i) {
            ItemClass &item = ws.Items[i];
            item.DataTagList = expressions[i];
            item.Format = "0.0";
            item.Underload = 0;
            item.Overload = 10;
            panels.push_back(new LCDModule(&window));
        }
        prepareChannels(ws, values);
    }
    LCDModule &panel(int n) { return *panels[static_cast<std::size_t>(n)]; }
};

TEST_F(DisplayRefreshTest, PanelsShowValuesLimitsAndIndicators)
{
    define({ "10", "10.01", "0", "-0.5", "1/0", "7" });
    ws.item(1).DataTagLQIScript = "55";
    ws.item(1).DataTagBattScript = "True";
    ws.item(6).TareValue = 2;
    refresh.ScreenTimer_Timer();
    const struct {
        int n;
        const char *value;
        bool flash;
        OleColor back;
    } cases[] = {
        { 1, "10.0", false, kSystem3DLight }, // a value on a limit does not flash
        { 2, "10.0", true, kSystem3DLight }, // just beyond it does, whatever the format shows
        { 3, "0.0", false, kSystem3DLight },
        { 4, "-0.5", true, kSystem3DLight },
        { 5, kNoValue, false, kPureRed },
        { 6, "5.0", false, kSystem3DLight },
    };
    for (const auto &c : cases) {
        EXPECT_EQ(panel(c.n).Value().toStdString(), c.value) << c.n;
        EXPECT_EQ(panel(c.n).FlashMode(), c.flash) << c.n;
        EXPECT_EQ(panel(c.n).BackColor(), c.back) << c.n;
        EXPECT_EQ(panel(c.n).NetInd(), c.n == 6) << c.n;
    }
    EXPECT_EQ(panel(1).LQI(), 3.0f);
    EXPECT_TRUE(panel(1).LoBatt());
    EXPECT_EQ(panel(5).LQI(), 0.0f);
    EXPECT_FALSE(panel(5).LoBatt());
    EXPECT_TRUE(window.updatesEnabled());
}

TEST_F(DisplayRefreshTest, FastLogsLeaveEvaluationToTheLogTimer)
{
    define({ "1", "2" });
    const std::string file = dir.filePath("log.csv").toStdString();
    const struct {
        std::int32_t interval;
        bool evaluates;
        const char *line;
    } cases[] = {
        { 250, false,
            "Logging requested at 250ms (8 channel readings per sec) to {} and "
            "achieving 087ms" },
        { 333, false, nullptr },
        { 334, true, nullptr },
    };
    for (const auto &c : cases) {
        ws.LogInterval = c.interval;
        ASSERT_TRUE(logger.start(file));
        logger.LogTimer_Timer(87);
        ws.item(1).DataTagExpression = "5"; // what the next evaluation would show
        refresh.ScreenTimer_Timer();
        EXPECT_EQ(panel(1).Value().toStdString(), c.evaluates ? "5.0" : "1.0") << c.interval;
        if (c.line) {
            std::string expected = c.line;
            expected.replace(expected.find("{}"), 2, file);
            EXPECT_EQ(logLine, expected);
        }
        logger.stop();
        ws.item(1).DataTagExpression = "1";
        refresh.ScreenTimer_Timer();
    }
}

TEST_F(DisplayRefreshTest, AMinimisedOrClosingWindowIsLeftAlone)
{
    define({ "3" });
    window.setWindowState(Qt::WindowMinimized);
    window.setUpdatesEnabled(false);
    refresh.ScreenTimer_Timer();
    EXPECT_FALSE(window.updatesEnabled()); // neither frozen nor thawed by the tick
    EXPECT_EQ(panel(1).Value().toStdString(), "3.0");

    window.setWindowState(Qt::WindowNoState);
    window.setUpdatesEnabled(true);
    ws.item(1).DataTagExpression = "4";
    refresh.setClosing(true);
    refresh.ScreenTimer_Timer();
    EXPECT_EQ(panel(1).Value().toStdString(), "3.0");
    EXPECT_EQ(values.output(1), 4.0f); // evaluated all the same
}

// Counts the paints a widget gets.
class PaintCounter : public QObject
{
public:
    int paints = 0;
    bool eventFilter(QObject *, QEvent *event) override
    {
        paints += event->type() == QEvent::Paint;
        return false;
    }
};

TEST_F(DisplayRefreshTest, EachTickPaintsThePanelsOnceBeforeReturning)
{
    define({ "1", "2", "3" });
    for (int n = 1; n <= 3; ++n)
        panel(n).move((n - 1) * 230, 0);
    window.resize(700, 200);
    window.show();
    QCoreApplication::processEvents();
    std::vector<PaintCounter> counters(3);
    for (int n = 1; n <= 3; ++n)
        panel(n).number()->installEventFilter(&counters[static_cast<std::size_t>(n - 1)]);
    for (int tick = 1; tick <= 3; ++tick) {
        ws.item(1).DataTagExpression = std::to_string(tick * 10);
        refresh.ScreenTimer_Timer();
        EXPECT_EQ(counters[0].paints, tick); // the changing panel, once per tick...
    }
    EXPECT_LE(counters[1].paints, 1); // ...the steady ones only for their first value
}

TEST(FlashPhase, EveryTickTurnsThePhaseOver)
{
    FlashPhase phase;
    std::vector<bool> seen;
    QObject::connect(&phase, &FlashPhase::changed, [&] { seen.push_back(phase.isOn()); });
    for (int i = 0; i < 3; ++i)
        phase.toggle();
    EXPECT_EQ(seen, (std::vector<bool> { true, false, true }));
}

} // namespace
