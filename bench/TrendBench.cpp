#include "HourLog.h"
#include "logging/LogReview.h"
#include "values/TrendHistory.h"

#include <benchmark/benchmark.h>
#include <cstdio>

namespace {

using namespace corvalog;

// An hour of 24 channels logged every 10 ms: the largest history the trends keep.
const TrendHistory &fullHour()
{
    static const TrendHistory history = [] {
        TrendHistory h;
        h.reset(24, 0.0);
        ChannelValues values;
        for (int tick = 0; tick < 360000; ++tick) {
            for (int n = 1; n <= 24; ++n)
                values.output(n) = static_cast<float>((tick * n) % 1000);
            h.record(tick * 10.0 / 86400000.0, values);
        }
        return h;
    }();
    return history;
}

// One redraw of every channel over the whole hour at 1,000 pixels.
void BM_DecimateHour24(benchmark::State &state)
{
    const TrendHistory &history = fullHour();
    for (auto _ : state) {
        for (int n = 1; n <= 24; ++n)
            benchmark::DoNotOptimize(decimate(history.channel(n), 0, 3600000, 1000));
    }
}
BENCHMARK(BM_DecimateHour24)->Unit(benchmark::kMillisecond);

// One redraw of the last minute, as the live window draws it.
void BM_DecimateMinute24(benchmark::State &state)
{
    const TrendHistory &history = fullHour();
    for (auto _ : state) {
        for (int n = 1; n <= 24; ++n)
            benchmark::DoNotOptimize(decimate(history.channel(n), 3540000, 3600000, 1000));
    }
}
BENCHMARK(BM_DecimateMinute24)->Unit(benchmark::kMicrosecond);

// What each tick adds to the work of the refresh or the log.
void BM_RecordTick24(benchmark::State &state)
{
    TrendHistory history;
    history.reset(24, 0.0);
    ChannelValues values;
    double date = 0;
    for (auto _ : state) {
        date += 10.0 / 86400000.0;
        history.record(date, values);
    }
}
BENCHMARK(BM_RecordTick24);

} // namespace

namespace {

// An hour of 24 channels logged every 10 ms (360,000 rows), read back for review.
void BM_ReviewOpenHour24(benchmark::State &state)
{
    static const std::string path = writeHourLog();
    for (auto _ : state) {
        std::string error;
        const std::optional<corvalog::ReviewData> data = corvalog::readForReview(path, error);
        if (!data || data->rows != 360000)
            state.SkipWithError("the log did not read whole");
    }
}
BENCHMARK(BM_ReviewOpenHour24)->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace
