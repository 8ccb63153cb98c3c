#include "trends/TrendTrace.h"

#include "trends/TrendCsv.h"

#include <gtest/gtest.h>

namespace corvalog {
namespace {

// Columns 100 ms wide from a picture: 'v' a value (1), 'r' a range (0 to 2), 'e' only an
// error, '.' nothing.
std::vector<PixelColumn> columnsOf(const std::string &picture)
{
    std::vector<PixelColumn> columns;
    for (std::size_t i = 0; i < picture.size(); ++i) {
        PixelColumn c;
        c.timeMs = 100.0 * static_cast<double>(i);
        c.error = picture[i] == 'e';
        c.empty = picture[i] == '.' || picture[i] == 'e';
        c.min = picture[i] == 'r' ? 0.0f : 1.0f;
        c.max = picture[i] == 'r' ? 2.0f : 1.0f;
        columns.push_back(c);
    }
    return columns;
}

// Short silences are joined, long ones and errors break the trace, a lone point still shows.
TEST(TrendTrace, RunsBreakOnlyAtLongSilencesAndErrors)
{
    const struct Case {
        const char *picture;
        std::vector<int> pointsPerRun;
    } cases[] = {
        { "vv", { 2 } },
        { "v..v", { 2 } }, // 200 ms of nothing: the columns are narrower than the sampling
        { "v...v", { 2, 2 } }, // 300 ms: a gap; each lone point widened to a dash
        { "vev", { 2, 2 } },
        { "rvr", { 5 } },
        { "....", {} },
    };
    for (const Case &c : cases) {
        const auto columns = columnsOf(c.picture);
        const auto runs = traceLines(columns, 0, 100.0 * columns.size(), 250.0);
        std::vector<int> sizes;
        for (const Polyline &run : runs)
            sizes.push_back(static_cast<int>(run.size()));
        EXPECT_EQ(sizes, c.pointsPerRun) << c.picture;
    }
    // Strokes sit mid-column, in seconds.
    EXPECT_EQ(traceLines(columnsOf("rv"), 0, 200, 250)[0],
        (Polyline { { 0.05, 0 }, { 0.05, 2 }, { 0.15, 1 } }));
}

// A line crossing an edge of the view reaches it: the runs take the samples just outside, when
// they are close enough and not in error.
TEST(TrendTrace, RunsReachTheSamplesJustOutsideTheView)
{
    ChannelHistory history(64); // 0, 10, 20 at 0 s, 1 s, 2 s; an error at 3 s; 40 at 4 s
    for (int s = 0; s <= 4; ++s)
        history.add(s * 1000.0, s * 10.0f, s == 3);
    const Polyline inside { { 1, 10 }, { 2, 20 } };
    const struct Case {
        double from, to, join;
        std::vector<Polyline> runs;
        std::vector<Polyline> extended;
    } cases[] = {
        { 500, 2500, 1500, { inside }, { { { 0, 0 }, { 1, 10 }, { 2, 20 } } } }, // 3 s: error
        { 500, 2500, 900, { inside }, { inside } }, // too far to join
        { 1200, 1800, 1500, {}, { { { 1, 10 }, { 2, 20 } } } }, // between two samples
        { 1200, 1800, 900, {}, {} }, { 3200, 3800, 1500, {}, {} }, // an error on one side
        { -500, 500, 1500, { { { 0, 0 } } }, { { { 0, 0 }, { 1, 10 } } } }, // nothing before
    };
    for (const Case &c : cases) {
        std::vector<Polyline> runs = c.runs;
        extendToNeighbours(runs, history, c.from, c.to, c.join);
        EXPECT_EQ(runs, c.extended) << c.from << ".." << c.to << " joining " << c.join;
    }
}

TEST(TrendTrace, PartsBeyondLimitsAreCutAtTheLimit)
{
    const std::vector<Polyline> peak { { { 0, 0 }, { 1, 10 }, { 2, 0 } } };
    const struct Case {
        std::optional<double> under;
        std::optional<double> over;
        std::vector<Polyline> parts;
    } cases[] = {
        { std::nullopt, std::nullopt, {} },
        { std::nullopt, 5.0, { { { 0.5, 5 }, { 1, 10 }, { 1.5, 5 } } } },
        { 2.0, 10.0, { { { 0, 0 }, { 0.2, 2 } }, { { 1.8, 2 }, { 2, 0 } } } },
    };
    for (const Case &c : cases)
        EXPECT_EQ(partsBeyond(peak, c.under, c.over), c.parts);
}

// Error columns are joined as the trace is: across short silences, never across values.
TEST(TrendTrace, ErrorColumnsMergeIntoSpans)
{
    using Spans = std::vector<std::pair<double, double>>;
    const std::pair<const char *, Spans> cases[] = {
        { "..ee.e", { { 0.2, 0.6 } } },
        { "e...e", { { 0.0, 0.1 }, { 0.4, 0.5 } } },
        { "eve", { { 0.0, 0.1 }, { 0.2, 0.3 } } },
    };
    for (const auto &[picture, spans] : cases) {
        const auto columns = columnsOf(picture);
        EXPECT_EQ(errorSpans(columns, 0, 100.0 * columns.size(), 250.0), spans) << picture;
    }
    auto partly = columnsOf("vv");
    partly[1].error = true; // values and an error in one column
    EXPECT_EQ(errorSpans(partly, 0, 200), (Spans { { 0.1, 0.2 } }));
}

// One number a channel and column: the samples' mean, "error" for errors alone, empty for none.
TEST(TrendCsv, OneRowPerColumnWithEachChannelsMean)
{
    TrendHistory history(64);
    history.reset(2, 0);
    history.add(1, 0, 1, false);
    history.add(1, 500, 4, false);
    history.add(1, 1500, 0, true);
    history.add(1, 3200, 2.5f, false);
    history.add(2, 100, 10, false);
    history.add(2, 2100, -7, false);
    history.add(2, 2200, 0, true);
    EXPECT_EQ(trendCsv(history, { "Temp", "Flow, \"in\"" }, 0, 4000, 4),
        "Time ms,Temp,\"Flow, \"\"in\"\"\"\r\n"
        "0,2.5,10\r\n"
        "1000,error,\r\n"
        "2000,,-7\r\n"
        "3000,2.5,\r\n");
}

} // namespace
} // namespace corvalog
