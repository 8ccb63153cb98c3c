#include "trends/TrendsWindow.h"

#include "FileText.h"
#include "trends/TrendChart.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QtCharts/QLegend>
#include <QtCharts/QLegendMarker>
#include <QtCharts/QLineSeries>
#include <algorithm>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>

namespace corvalog {
namespace {

constexpr double kNoon = 46000.5; // a script date at 12:00:00
constexpr float kNone = 9999999.0f;

ItemClass channel(const char *caption, float under, float over, const char *format)
{
    ItemClass item;
    item.Caption = caption;
    item.Underload = under;
    item.Overload = over;
    item.Format = format;
    return item;
}

class TrendsWindowTest : public ::testing::Test
{
public:
    ManualClock clock { kNoon };
    TrendHistory history { 4096 };
    WorkspaceClass ws;
    std::unique_ptr<TrendsWindow> window;

    void SetUp() override
    {
        ws.Items = { channel("Temp", -kNone, kNone, "0.0"), channel("Flow", 0, 10, "0.00") };
        ws.Channels = 2;
        history.reset(2, kNoon);
        window = std::make_unique<TrendsWindow>(history, ws, clock);
        // The legend lays out its entries only once there is room for them.
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    }

    // Both channels evaluated `seconds` after activation, which is then the present.
    void record(double seconds, float temp, float flow, bool flowError = false)
    {
        clock.set(kNoon + seconds / 86400.0);
        ChannelValues values;
        values.output(1) = temp;
        values.output(2) = flow;
        values.error(2) = flowError ? -1 : 0;
        history.record(clock.now(), values);
    }

    template <typename T> T *child(const char *name) const
    {
        return window->findChild<T *>(QString::fromLatin1(name));
    }
    // To the millisecond: script dates carry a little rounding.
    std::pair<double, double> shown() const
    {
        return { std::round(window->shownFromMs()), std::round(window->shownToMs()) };
    }
};

TEST_F(TrendsWindowTest, ASeriesPerChannelWithItsSetLimitsOnly)
{
    for (const char *name :
        { "cbSpan", "btnPause", "btnExportPng", "btnExportCsv", "lblCursor", "chartView" })
        EXPECT_TRUE(child<QWidget>(name)) << name;
    record(1, 20, 5);
    window->redraw();
    ASSERT_EQ(window->channels(), 2);
    EXPECT_EQ(window->seriesFor(1)->name(), "Temp");
    EXPECT_EQ(window->seriesFor(2)->name(), "Flow");
    // Only the named series have legend entries: runs, limits and error strips have none.
    int entries = 0;
    for (QLegendMarker *marker : window->chart().legend()->markers())
        entries += marker->isVisible();
    EXPECT_EQ(entries, 2);

    TrendChart &chart = window->chart();
    EXPECT_FALSE(chart.trace(1).under || chart.trace(1).over);
    EXPECT_EQ(chart.trace(2).under, 0.0);
    EXPECT_EQ(chart.trace(2).over, 10.0);
}

TEST_F(TrendsWindowTest, TheSpanChoiceSetsTheShownRange)
{
    const struct Case {
        double now; // seconds
        int index;
        std::pair<double, double> shown;
    } cases[] = {
        { 10, 0, { 0, 60000 } }, // a young history fills the span from the left
        { 7200, 0, { 7140000, 7200000 } },
        { 7200, 1, { 6600000, 7200000 } },
        { 7200, 2, { 3600000, 7200000 } },
        { 7200, 3, { 0, 7200000 } },
    };
    auto *box = child<QComboBox>("cbSpan");
    for (const Case &c : cases) {
        record(c.now, 1, 1);
        box->setCurrentIndex(c.index);
        emit box->activated(c.index);
        EXPECT_EQ(shown(), c.shown) << c.now << " s, " << box->currentText().toStdString();
    }
}

// Pausing and zooming hold the view still while the history grows; resuming, resetting the zoom
// or choosing a span follow the present again.
TEST_F(TrendsWindowTest, AHeldViewStaysUntilReleased)
{
    const std::function<void(TrendsWindow &)> pause
        = [this](TrendsWindow &) { child<QPushButton>("btnPause")->click(); };
    const std::function<void(TrendsWindow &)> zoom
        = [](TrendsWindow &w) { w.zoomTo(50000, 90000); };
    const struct Case {
        const char *name;
        std::function<void(TrendsWindow &)> hold;
        std::function<void(TrendsWindow &)> release;
    } cases[] = {
        { "resume", pause, pause },
        { "reset zoom", zoom,
            [this](TrendsWindow &) { child<QPushButton>("btnResetZoom")->click(); } },
        { "span", zoom, [](TrendsWindow &w) { w.setSpan(TrendsWindow::Span::OneMinute); } },
    };
    double now = 100;
    for (const Case &c : cases) {
        record(now, 1, 1);
        window->setSpan(TrendsWindow::Span::OneMinute);
        c.hold(*window);
        window->redraw();
        const auto held = shown();
        record(now += 30, 2, 2);
        window->redraw();
        EXPECT_EQ(shown(), held) << c.name;
        c.release(*window);
        window->redraw();
        EXPECT_EQ(shown(), std::make_pair(now * 1000 - 60000, now * 1000)) << c.name;
        EXPECT_FALSE(window->paused() || window->zoomed()) << c.name;
    }
}

TEST_F(TrendsWindowTest, ALegendClickHidesAndShowsAChannel)
{
    record(1, 1.5, 3);
    record(2, 2.5, 4);
    window->redraw();
    const auto click = [this] {
        const auto markers = window->chart().legend()->markers(window->seriesFor(1));
        ASSERT_EQ(markers.size(), 1);
        emit markers.front()->clicked();
    };
    click();
    EXPECT_FALSE(window->channelVisible(1));
    EXPECT_TRUE(window->chart().trace(1).runs.empty());
    EXPECT_TRUE(window->chart().legend()->markers(window->seriesFor(1)).front()->isVisible());
    EXPECT_FALSE(window->cursorTextAt(1000).contains(QStringLiteral("Temp")));
    click();
    EXPECT_TRUE(window->channelVisible(1));
    EXPECT_FALSE(window->chart().trace(1).runs.empty());
}

TEST_F(TrendsWindowTest, TheCursorReadsEachChannelsNearestSample)
{
    record(1, 1.5, 3);
    record(2, 2.5, 0, true);
    window->redraw();
    const std::pair<double, const char *> cases[] = {
        { 1200, "1.2 s (12:00:01)   Temp: 1.5   Flow: 3.00" },
        { 1900, "1.9 s (12:00:02)   Temp: 2.5   Flow: error" },
        { 5000, "5.0 s (12:00:05)   Temp: no data   Flow: no data" },
    };
    for (const auto &[ms, text] : cases)
        EXPECT_EQ(window->cursorTextAt(ms).toStdString(), text);
}

TEST_F(TrendsWindowTest, ExportsWriteTheShownSpan)
{
    ws.item(2).Caption = "Flow, main";
    for (int s = 0; s < 30; ++s)
        record(s, static_cast<float>(s), 1);
    window->setSpan(TrendsWindow::Span::OneMinute);
    QTemporaryDir dir;
    const QString csv = dir.filePath("trends.csv");
    ASSERT_TRUE(window->exportCsv(csv));
    const std::string text = fileText(csv.toStdString());
    EXPECT_EQ(text.substr(0, text.find("\r\n")), "Time ms,Temp,\"Flow, main\"");
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), window->plotPixels() + 1);

    const QString png = dir.filePath("trends.png");
    ASSERT_TRUE(window->exportPng(png));
    EXPECT_EQ(fileText(png.toStdString()).substr(1, 3), "PNG");
}

TEST_F(TrendsWindowTest, ANewActivationRebuildsTheSeries)
{
    record(1, 1, 1);
    window->zoomTo(0, 500);
    window->redraw();
    ws.Items.push_back(channel("Pressure", -kNone, kNone, "0"));
    ws.Channels = 3;
    history.reset(3, clock.now());
    window->redraw();
    ASSERT_EQ(window->channels(), 3);
    EXPECT_EQ(window->seriesFor(3)->name(), "Pressure");
    EXPECT_FALSE(window->zoomed());
}

} // namespace
} // namespace corvalog
