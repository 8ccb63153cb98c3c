#include "logging/IntervalTimer.h"

#include "GuiThread.h"

#include <QElapsedTimer>
#include <gtest/gtest.h>
#include <numeric>
#include <thread>

using namespace corvalog;

namespace {

// A thread that stalls for 32 ms still gets a tick for every 5 ms period, and the reports add
// up to the time that passed.
TEST(IntervalTimer, EveryPeriodGetsATickAndTheReportsAddUp)
{
    GuiThread gui;
    QElapsedTimer since;
    std::vector<std::int32_t> reports;
    qint64 lastTickNs = 0;
    IntervalTimer timer([&](std::int32_t ms) {
        reports.push_back(ms);
        lastTickNs = since.nsecsElapsed();
        if (reports.size() == 2)
            std::this_thread::sleep_for(std::chrono::milliseconds(32));
        if (reports.size() == 40)
            timer.stop();
    });
    since.start();
    timer.start(5);
    ASSERT_TRUE(gui.runUntil([&] { return !timer.isActive(); }, std::chrono::seconds(5)));
    gui.runUntil([] { return false; }, std::chrono::milliseconds(20)); // nothing after stop

    ASSERT_EQ(reports.size(), 40u);
    EXPECT_GE(lastTickNs, 40 * 5'000'000); // never early...
    EXPECT_LT(lastTickNs, 40 * 5'000'000 + 50'000'000); // ...and caught up after the stall
    const double sum = std::accumulate(reports.begin(), reports.end(), 0.0);
    EXPECT_NEAR(sum, static_cast<double>(lastTickNs) / 1e6, 1.0);
    EXPECT_GE(reports[2], 30); // the stall shows in the interval after it
}

} // namespace
