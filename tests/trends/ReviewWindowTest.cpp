#include "trends/ReviewWindow.h"

#include "FileText.h"
#include "trends/TrendChart.h"
#include "trends/TrendChartView.h"

#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>
#include <QtCharts/QLineSeries>
#include <gtest/gtest.h>

namespace corvalog {
namespace {

// A log of 100 s as the program writes it: Load rises 0..99 and goes over its limit of 80 at
// 81 s; Temp is in error from 20 s to 30 s (its Default logged meanwhile).
class ReviewWindowTest : public ::testing::Test
{
public:
    QTemporaryDir dir;

    std::unique_ptr<ReviewWindow> open(const std::string &name)
    {
        std::string error;
        std::optional<ReviewData> data
            = readForReview(dir.filePath(name.c_str()).toStdString(), error);
        EXPECT_TRUE(data) << error;
        if (!data)
            return nullptr;
        auto window = std::make_unique<ReviewWindow>(std::move(*data));
        window->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(window.get()));
        window->redraw();
        return window;
    }

    void writeLog()
    {
        std::string log = "Date,Time,Elapsed mS,Load,Temp\r\n";
        for (int s = 1; s <= 100; ++s) {
            char row[96];
            std::snprintf(row, sizeof row, "24/11/2026,08:00:%02d,%d,%d,%s\r\n", s % 60, s * 1000,
                s - 1, s >= 20 && s < 30 ? "-9999999.00" : "21.5");
            log += row;
        }
        writeFile(dir.filePath("run.csv").toStdString(), log);
        writeFile(dir.filePath("run.events.csv").toStdString(),
            "Date,Time,Elapsed mS,Channel,Caption,Event,Value,Limit\r\n"
            "24/11/2026,08:00:20,20000,2,Temp,error,-9999999.00,\r\n"
            "24/11/2026,08:00:30,30000,2,Temp,recovered,21.5,\r\n"
            "24/11/2026,08:01:22,82000,1,Load,over,81,80\r\n");
        writeFile(dir.filePath("run.meta.json").toStdString(),
            R"({"started":"2026-11-24T08:00:00.000+01:00","workspace":{"items":[)"
            R"({"Underload":-9999999,"Overload":80},{"Underload":-9999999,"Overload":9999999}]}})");
    }
};

TEST_F(ReviewWindowTest, ALogOpensWithItsEventsAndLimits)
{
    writeLog();
    const auto window = open("run.csv");
    ASSERT_TRUE(window);
    EXPECT_TRUE(window->windowTitle().contains(QStringLiteral("run.csv")));
    TrendChart &chart = window->chart();
    ASSERT_EQ(chart.channels(), 2);
    EXPECT_EQ(chart.seriesFor(1)->name(), "Load");
    EXPECT_EQ(chart.trace(1).over, 80.0);
    EXPECT_FALSE(chart.trace(2).over || chart.trace(2).under);
    EXPECT_FALSE(chart.trace(1).beyond.empty()) << "the part over 80 is marked";
    EXPECT_EQ(window->shownFromMs(), 1000);
    EXPECT_GE(window->shownToMs(), 100000);

    const QTreeWidget &list = window->eventList();
    ASSERT_EQ(list.topLevelItemCount(), 3);
    const QStringList third { "82.000", "Load", "over", "81", "80" };
    for (int c = 0; c < third.size(); ++c)
        EXPECT_EQ(list.topLevelItem(2)->text(c), third[c]);
    ASSERT_EQ(chart.marks().size(), 3u);
    EXPECT_TRUE(chart.marks()[0].leaving);
    EXPECT_FALSE(chart.marks()[1].leaving);
    EXPECT_EQ(chart.marks()[2].seconds, 82.0);

    // The time of day comes from the log's Time; the rows in error read as errors.
    const std::pair<double, const char *> readings[] = {
        { 10000, "10.0 s (08:00:10)   Load: 9   Temp: 21.5" },
        { 25000, "25.0 s (08:00:25)   Load: 24   Temp: error" },
    };
    for (const auto &[ms, text] : readings)
        EXPECT_EQ(window->cursorTextAt(ms).toStdString(), text);
    ASSERT_EQ(chart.trace(2).errors.size(), 1u);
    EXPECT_NEAR(chart.trace(2).errors[0].first, 20.0, 0.5);
}

TEST_F(ReviewWindowTest, AnEventTakesTheViewToItAndResetShowsTheWholeLog)
{
    writeLog();
    const auto window = open("run.csv");
    ASSERT_TRUE(window);
    QTreeWidget &list = window->eventList();
    emit list.itemClicked(list.topLevelItem(2), 0);
    EXPECT_TRUE(window->zoomed());
    EXPECT_NEAR((window->shownFromMs() + window->shownToMs()) / 2, 82000, 1);
    EXPECT_LT(window->shownToMs() - window->shownFromMs(), 20000);
    window->findChild<QPushButton *>(QStringLiteral("btnResetZoom"))->click();
    EXPECT_FALSE(window->zoomed());
    EXPECT_EQ(window->shownFromMs(), 1000);
}

// What the chart paints: each channel in its colour, nothing of a hidden one.
TEST_F(ReviewWindowTest, TheTracesArePaintedInTheirColours)
{
    writeLog();
    const auto window = open("run.csv");
    ASSERT_TRUE(window);
    auto *view = window->findChild<TrendChartView *>();
    const auto pixelsOf = [view](const QColor &colour) {
        const QImage image = view->grab().toImage();
        int count = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                count += image.pixelColor(x, y).rgb() == colour.rgb();
        return count;
    };
    // Temp, without limits, is a level line across the plot (with a gap where it was in error);
    // its legend marker alone is a hundred pixels, and fades when the channel is hidden.
    const QColor temp = channelColour(2);
    EXPECT_GT(pixelsOf(temp), 400);
    window->chart().setChannelVisible(2, false);
    window->redraw();
    EXPECT_LT(pixelsOf(temp), 20);
}

TEST_F(ReviewWindowTest, ARecordingOpensAsASeriesPerTagWithoutAnEventList)
{
    writeFile(dir.filePath("rec.csv").toStdString(),
        "# Corvalog packet recording 1\ntime_ms,base_station,data_tag,value,status,rssi,cv,"
        "batt_low,error\n0,1,FF12,12.5,0,-60,100,0,0\n500,1,0012,20,0,-60,100,0,0\n"
        "1000,1,FF12,13,0,-60,100,0,0\n");
    const auto window = open("rec.csv");
    ASSERT_TRUE(window);
    ASSERT_EQ(window->chart().channels(), 2);
    EXPECT_EQ(window->chart().seriesFor(2)->name(), "FF12");
    EXPECT_FALSE(window->eventList().isVisible());
    EXPECT_EQ(window->cursorTextAt(1000).toStdString(), "1.0 s   0012: 20   FF12: 13");
}

} // namespace
} // namespace corvalog
