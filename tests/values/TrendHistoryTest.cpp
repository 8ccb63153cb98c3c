#include "values/TrendHistory.h"

#include <cmath>
#include <random>
#include <gtest/gtest.h>

namespace corvalog {
namespace {

std::string samples(const ChannelHistory &h)
{
    std::string text;
    for (std::size_t i = 0; i < h.size(); ++i) {
        const HistorySample s = h.at(i);
        char one[64];
        if (s.error())
            std::snprintf(one, sizeof one, "%g:err ", s.timeMs);
        else
            std::snprintf(one, sizeof one, "%g:%g..%g ", s.timeMs, s.min, s.max);
        text += one;
    }
    return text;
}

// Evaluations within 10 ms share a sample with their extremes; an error anywhere in it marks
// the sample; a full ring drops its oldest.
TEST(TrendHistory, SamplesKeepEveryExtremeInBoundedMemory)
{
    struct Add {
        double t;
        float v;
        bool error;
    };
    const struct Case {
        const char *name;
        std::size_t capacity;
        std::vector<Add> adds;
        const char *kept;
    } cases[] = {
        { "one a tick", 10, { { 0, 1, false }, { 333, 2, false }, { 666, 3, false } },
            "0:1..1 333:2..2 666:3..3 " },
        { "a fast log folds into 10 ms", 10,
            { { 0, 5, false }, { 1, 9, false }, { 2, -3, false }, { 9.9, 4, false },
                { 10, 7, false } },
            "0:-3..9 10:7..7 " },
        { "an error in a bucket", 10, { { 0, 5, false }, { 3, 6, true }, { 6, 7, false } },
            "0:err " },
    };
    for (const Case &c : cases) {
        ChannelHistory h(c.capacity);
        for (const Add &a : c.adds)
            h.add(a.t, a.v, a.error);
        EXPECT_EQ(samples(h), c.kept) << c.name;
    }

    // A full ring (whole blocks of samples: 3 places become 64) drops its oldest.
    ChannelHistory ring(3);
    ASSERT_EQ(ring.capacity(), ChannelHistory::kBlock);
    for (int i = 0; i < 70; ++i)
        ring.add(20.0 * i, static_cast<float>(i), false);
    EXPECT_EQ(ring.size(), 64u);
    EXPECT_EQ(ring.at(0).timeMs, 120);
    EXPECT_EQ(ring.at(63).max, 69.0f);
}

// Folding whole blocks gives what folding every sample gives, also in a ring that has wrapped
// and with errors and fast buckets mixed in.
TEST(TrendHistory, DecimationByBlocksMatchesSampleBySample)
{
    std::mt19937 rng(7);
    for (int round = 0; round < 40; ++round) {
        ChannelHistory h(64 * (1 + round % 4));
        double t = 0;
        const int adds = 50 + static_cast<int>(rng() % 600);
        for (int i = 0; i < adds; ++i) {
            t += (rng() % 4 == 0) ? 3 : 10 + rng() % 50;
            h.add(t, static_cast<float>(rng() % 1000) - 500, rng() % 53 == 0);
        }
        const double from = h.at(0).timeMs + rng() % 200;
        const double to = t + 1 - rng() % 300;
        const int pixels = 1 + static_cast<int>(rng() % 40);
        const std::vector<PixelColumn> got = decimate(h, from, to, pixels);
        std::vector<PixelColumn> want(static_cast<std::size_t>(std::max(pixels, 0)));
        const double width = (to - from) / pixels;
        for (std::size_t i = 0; i < h.size() && to > from; ++i) {
            const HistorySample s = h.at(i);
            if (s.timeMs < from || s.timeMs >= to)
                continue;
            PixelColumn &c = want[std::min<std::size_t>(
                static_cast<std::size_t>((s.timeMs - from) / width), want.size() - 1)];
            if (s.error())
                c.error = true;
            else if (c.empty)
                c = { 0, s.min, s.max, c.error, false };
            else
                c.min = std::min(c.min, s.min), c.max = std::max(c.max, s.max);
        }
        ASSERT_EQ(got.size(), to > from ? want.size() : 0u);
        for (std::size_t p = 0; p < got.size(); ++p) {
            EXPECT_EQ(got[p].empty, want[p].empty) << round << " column " << p;
            EXPECT_EQ(got[p].error, want[p].error) << round << " column " << p;
            if (!want[p].empty) {
                EXPECT_EQ(got[p].min, want[p].min) << round << " column " << p;
                EXPECT_EQ(got[p].max, want[p].max) << round << " column " << p;
            }
        }
    }
}

// Per-pixel decimation keeps every spike however many samples fall in a column, leaves gaps
// empty and marks errors; the time range is half-open.
TEST(TrendHistory, DecimationKeepsSpikesAndGaps)
{
    ChannelHistory h(100000);
    for (int i = 0; i < 60000; ++i) // one minute at 1 ms: folded to 10 ms buckets
        h.add(i, i == 31234 ? 100.0f : static_cast<float>(i % 7), false);
    h.add(70000, 1, true);
    const std::vector<PixelColumn> columns = decimate(h, 0, 80000, 8);
    ASSERT_EQ(columns.size(), 8u);
    EXPECT_EQ(columns[0].min, 0.0f);
    EXPECT_EQ(columns[0].max, 6.0f);
    EXPECT_EQ(columns[3].max, 100.0f) << "the spike at 31.234 s";
    EXPECT_EQ(columns[2].max, 6.0f);
    EXPECT_TRUE(columns[6].empty);
    EXPECT_FALSE(columns[6].error);
    EXPECT_TRUE(columns[7].error);
    EXPECT_DOUBLE_EQ(columns[7].timeMs, 70000);

    EXPECT_TRUE(decimate(h, 100, 100, 5).empty());
    EXPECT_TRUE(decimate(h, 0, 100, 0).empty());
    ChannelHistory steps(10);
    for (int i = 0; i < 3; ++i)
        steps.add(10.0 * i, static_cast<float>(i), false);
    const std::vector<PixelColumn> edge = decimate(steps, 10, 20, 1);
    EXPECT_EQ(edge[0].min, 1.0f) << "the sample at 10 ms belongs to [10, 20), 20 ms does not";
    EXPECT_EQ(edge[0].max, 1.0f);
}

TEST(TrendHistory, ActivationBeginsANewHistory)
{
    TrendHistory history(1000);
    ChannelValues values;
    values.output(1) = 4;
    values.output(2) = 8;
    const double day = 46000.0;
    history.reset(2, day);
    history.record(day + 1.5 / 86400.0, values);
    ASSERT_EQ(history.channels(), 2);
    ASSERT_EQ(history.channel(2).size(), 1u);
    EXPECT_NEAR(history.channel(2).at(0).timeMs, 1500, 0.1);
    EXPECT_EQ(history.channel(2).at(0).max, 8.0f);
    const auto generation = history.generation();
    history.reset(3, day + 1);
    EXPECT_EQ(history.channels(), 3);
    EXPECT_EQ(history.channel(1).size(), 0u);
    EXPECT_NE(history.generation(), generation);
}

} // namespace
} // namespace corvalog
