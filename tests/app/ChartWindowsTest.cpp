#include "app/ChartWindows.h"

#include "FileText.h"
#include "app/HelpTopics.h"
#include "trends/ReviewWindow.h"
#include "trends/TrendsWindow.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace corvalog {
namespace {

// Both windows open at their own topic of the manual (F1), and the manual has those topics.
TEST(ChartWindows, TheTrendsAndAReviewOpenAtTheirTopicsInTheManual)
{
    QWidget owner;
    ManualClock clock(46000.0);
    TrendHistory history(16);
    history.reset(1, clock.now());
    WorkspaceClass ws;
    ws.Items.assign(1, ItemClass {});
    QTemporaryDir dir;
    ChartWindows windows(owner, history, ws, clock, [&dir] { return dir.path().toStdString(); });
    windows.showTrends();
    ASSERT_TRUE(windows.trends());
    EXPECT_TRUE(windows.trends()->isVisible());

    const std::string log = dir.filePath("run.csv").toStdString();
    writeFile(log, "Date,Time,Elapsed mS,Load\r\n24/11/2026,07:00:00,1000,1.5\r\n");
    ReviewWindow *review = windows.review(QString::fromStdString(log));
    ASSERT_TRUE(review);
    EXPECT_TRUE(review->testAttribute(Qt::WA_DeleteOnClose)) << "closing frees what it read";

    const std::string manual = fileText(CORVALOG_MANUAL);
    for (const QWidget *window :
        { static_cast<QWidget *>(windows.trends()), static_cast<QWidget *>(review) }) {
        const std::string topic = helpTopicOf(window).toStdString();
        EXPECT_NE(topic, kHelpContents);
        EXPECT_NE(manual.find("id=\"" + topic + "\""), std::string::npos) << topic;
    }
}

} // namespace
} // namespace corvalog
