#include "../HourLog.h"
#include "logging/LogReview.h"
#include "runtime/Clock.h"
#include "trends/ReviewWindow.h"
#include "trends/TrendChartView.h"
#include "trends/TrendsWindow.h"

#include <QApplication>
#include <benchmark/benchmark.h>

using namespace corvalog;

namespace {

constexpr double kMsPerDay = 86400000.0;

// One refresh tick with the trends window open on the last minute of 24 channels that have
// run for an hour: the tick's samples recorded, the chart redrawn and painted. Three of these
// a second are what the open window costs.
void BM_TrendsTick24(benchmark::State &state)
{
    const double start = 46000.0;
    ManualClock clock(start);
    TrendHistory history;
    history.reset(24, start);
    WorkspaceClass ws;
    ws.Channels = 24;
    ws.Items.assign(24, ItemClass {});
    for (int n = 1; n <= 24; ++n) {
        ws.item(n).Caption = "Channel " + std::to_string(n);
        if (n % 3 == 0) {
            ws.item(n).Underload = -40;
            ws.item(n).Overload = 40;
        }
    }
    ChannelValues values;
    double ms = 0;
    const auto tick = [&] {
        ms += 333.0;
        for (int n = 1; n <= 24; ++n) {
            values.output(n)
                = static_cast<float>((static_cast<int>(ms / 333.0) * 7 + n * 13) % 120) - 60.0f;
            values.error(n) = (static_cast<int>(ms / 1000.0) + n) % 97 == 0 ? -1 : 0;
        }
        clock.set(start + ms / kMsPerDay);
        history.record(clock.now(), values);
    };
    while (ms < 3600000.0)
        tick();
    TrendsWindow window(history, ws, clock);
    window.setSpan(TrendsWindow::Span::OneMinute);
    window.show();
    QApplication::processEvents();
    auto *view = window.findChild<TrendChartView *>();
    for (auto _ : state) {
        tick();
        window.redraw();
        benchmark::DoNotOptimize(view->grab());
    }
}
BENCHMARK(BM_TrendsTick24)->Unit(benchmark::kMillisecond);

// An hour of 24 channels at 10 ms (360,000 rows) opened for review: read, drawn and painted.
void BM_ReviewWindowHour24(benchmark::State &state)
{
    static const std::string path = writeHourLog();
    for (auto _ : state) {
        std::string error;
        std::optional<ReviewData> data = readForReview(path, error);
        if (!data) {
            state.SkipWithError("the log did not read");
            break;
        }
        ReviewWindow window(std::move(*data));
        window.show();
        window.redraw();
        benchmark::DoNotOptimize(window.findChild<TrendChartView *>()->grab());
    }
}
BENCHMARK(BM_ReviewWindowHour24)->Unit(benchmark::kMillisecond)->Iterations(1);

// A zoom in the review of that hour: the chart redrawn and painted for a new span.
void BM_ReviewZoomHour24(benchmark::State &state)
{
    static const std::string path = writeHourLog();
    std::string error;
    std::optional<ReviewData> data = readForReview(path, error);
    if (!data) {
        state.SkipWithError("the log did not read");
        return;
    }
    ReviewWindow window(std::move(*data));
    window.show();
    auto *view = window.findChild<TrendChartView *>();
    int step = 0;
    for (auto _ : state) {
        // Alternately most of the hour and a few minutes of it.
        const double from = (step++ % 7) * 300000.0;
        window.zoomTo(from, from + (step % 2 ? 2400000.0 : 180000.0));
        window.redraw();
        benchmark::DoNotOptimize(view->grab());
    }
}
BENCHMARK(BM_ReviewZoomHour24)->Unit(benchmark::kMillisecond);

} // namespace
