#include "runtime/DateTime.h"
#include "runtime/Val.h"
#include "runtime/VbError.h"

#include <gtest/gtest.h>
#include <tuple>

using namespace corvalog;

namespace {

TEST(Val, TakesTheLongestLeadingNumber)
{
    const struct {
        const char *text;
        double value;
    } cases[] = {
        { "  42abc", 42 },
        { "1 2 3", 123 },
        { "\t-1.5e2x", -150 },
        { "1,5", 1 }, // "." is the only decimal separator
        { ".5", 0.5 },
        { "1e", 1 },
        { "1d2", 100 },
        { "&HFFFF", -1 },
        { "&H10000", 65536 },
        { "&O17", 15 },
        { "abc", 0 },
        { "True", 0 },
        { "1e-999", 0 },
    };
    for (const auto &c : cases)
        EXPECT_DOUBLE_EQ(Val(c.text), c.value) << c.text;
    EXPECT_THROW(Val("1e999"), VbError);
}

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
    EXPECT_EQ(weekdayOf(dateFromCivil({ 2026, 11, 22, 0, 0, 0 })), 1);
}

TEST(DateTime, SecondsCountBoundariesNotElapsedTime)
{
    const double base = dateFromCivil({ 2026, 11, 22, 10, 0, 0 });
    const double ms = 1.0 / 86400000.0;
    EXPECT_EQ(dateDiffSeconds(base + 100 * ms, base + 999 * ms), 0);
    EXPECT_EQ(dateDiffSeconds(base + 999 * ms, base + 1000 * ms), 1); // one millisecond apart
    EXPECT_EQ(dateDiffSeconds(base, base + 1999 * ms), 1);
    EXPECT_EQ(dateDiffSeconds(base + 1000 * ms, base), -1);
    EXPECT_EQ(dateDiffSeconds(0.0, base), static_cast<long long>(46348) * 86400 + 36000);
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
