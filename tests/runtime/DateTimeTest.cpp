#include "runtime/DateTime.h"

#include <gtest/gtest.h>
#include <tuple>

using namespace corvalog;

namespace {

TEST(DateTime, CivilDatesRoundTrip)
{
    const struct {
        CivilDateTime civil;
        double date;
    } cases[] = {
        { { 1899, 12, 30, 0, 0, 0 }, 0.0 },
        { { 1900, 1, 1, 0, 0, 0 }, 2.0 },
        { { 1899, 12, 29, 6, 0, 0 }, -1.25 }, // before the zero date the time is still positive
        { { 2026, 11, 15, 14, 3, 7 }, 46341 + (14 * 3600 + 3 * 60 + 7) / 86400.0 },
    };
    for (const auto &c : cases) {
        EXPECT_NEAR(dateFromCivil(c.civil), c.date, 1e-9) << c.date;
        const CivilDateTime b = civilFromDate(c.date);
        const CivilDateTime &e = c.civil;
        EXPECT_EQ(std::tie(b.year, b.month, b.day, b.hour, b.minute, b.second),
            std::tie(e.year, e.month, e.day, e.hour, e.minute, e.second))
            << c.date;
    }
    EXPECT_EQ(weekdayOf(0.0), 7); // a Saturday
}

TEST(DateTime, SecondsCountBoundariesNotElapsedTime)
{
    const double base = dateFromCivil({ 2026, 11, 22, 10, 0, 0 });
    const double ms = 1.0 / 86400000.0;
    EXPECT_EQ(dateDiffSeconds(base + 100 * ms, base + 999 * ms), 0);
    EXPECT_EQ(dateDiffSeconds(base + 999 * ms, base + 1000 * ms), 1); // one millisecond apart
    EXPECT_EQ(dateDiffSeconds(base + 1000 * ms, base), -1);
    EXPECT_EQ(dateDiffSeconds(-1.25, 0.0), 18 * 3600); // 29 Dec 06:00 to 30 Dec 00:00
}

TEST(DateTime, DateTextLeavesOutTheZeroParts)
{
    EXPECT_EQ(dateText(dateFromCivil({ 2026, 11, 15, 14, 3, 7 })), "15/11/2026 14:03:07");
    EXPECT_EQ(dateText(dateFromCivil({ 2026, 11, 15, 0, 0, 0 })), "15/11/2026");
    EXPECT_EQ(dateText(0.25), "06:00:00");
    EXPECT_EQ(dateText(0.0), "00:00:00");
    EXPECT_EQ(dateText(1.0), "31/12/1899");
}

} // namespace
