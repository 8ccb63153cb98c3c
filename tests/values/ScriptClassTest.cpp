#include "values/ScriptClass.h"

#include "runtime/Clock.h"
#include "runtime/NumberLocale.h"
#include "runtime/VbError.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace corvalog {
namespace {

constexpr double kNoon = 45000.5; // a whole second, so offsets below land where intended

class ScriptClassTest : public ::testing::Test
{
protected:
    ManualClock clock { kNoon };
    ScriptClass sc { clock };
};

int errorNumberOf(const std::function<void()> &call)
{
    try {
        call();
    } catch (const VbError &e) {
        return e.number();
    }
    return 0;
}

TEST_F(ScriptClassTest, NeverWrittenTagReadsZeroAndIsTimedOut)
{
    EXPECT_EQ(sc.T(0x1234), 0.0f);
    sc.SetTimeout(32767); // the zero date is long past whatever the timeout
    EXPECT_TRUE(sc.TT(0x1234));
}

struct IndexCase {
    const char *member;
    bool channel; // indexed by channel (0..24) rather than Data Tag (0..65535)
    std::function<void(ScriptClass &, std::int32_t)> call;
};

TEST_F(ScriptClassTest, IndexedMembersCheckTheirBounds)
{
    const std::vector<IndexCase> members {
        { "TT", false, [](ScriptClass &s, std::int32_t i) { s.TT(i); } },
        { "T", false, [](ScriptClass &s, std::int32_t i) { s.T(i); } },
        { "setTL", false, [](ScriptClass &s, std::int32_t i) { s.setTL(i, 1); } },
        { "C", true, [](ScriptClass &s, std::int32_t i) { s.C(i); } },
        { "setCT", true, [](ScriptClass &s, std::int32_t i) { s.setCT(i, 1); } },
        { "CL", true, [](ScriptClass &s, std::int32_t i) { s.CL(i); } },
    };
    for (const IndexCase &m : members) {
        const std::int32_t last = m.channel ? 24 : 65535;
        for (const std::int32_t ok : { 0, last })
            EXPECT_EQ(errorNumberOf([&] { m.call(sc, ok); }), 0) << m.member << "(" << ok << ")";
        for (const std::int32_t bad : { -1, last + 1, INT32_MIN, INT32_MAX })
            EXPECT_EQ(errorNumberOf([&] { m.call(sc, bad); }), vberr::SubscriptOutOfRange)
                << m.member << "(" << bad << ")";
    }
}

TEST_F(ScriptClassTest, OnlyValueWritesRefreshTheArrivalTime)
{
    sc.setTE(9, 1);
    sc.setTB(9, 1);
    sc.setTL(9, 100);
    EXPECT_TRUE(sc.TT(9));
    sc.setT(9, 1.0f);
    EXPECT_FALSE(sc.TT(9));
    EXPECT_EQ(sc.arrivalTime(9), kNoon);
}

struct TimeoutCase {
    std::int16_t timeout;
    double arrivalOffset; // seconds after noon, within or across second boundaries
    double elapsed; // seconds from arrival to the TT call
    bool timedOut;
};

TEST_F(ScriptClassTest, TimedOutCountsSecondBoundaries)
{
    const TimeoutCase cases[] = {
        { 0, 0.0, 0.0, false }, { 0, 0.1, 0.8, false }, // same second
        { 0, 0.9, 0.2, true }, // 0.2 s later, but across a boundary
        { 0, 0.0, 1.0, true }, { 5, 0.0, 5.0, false }, // count equal to the timeout
        { 5, 0.9, 4.2, false }, // 5 boundaries
        { 5, 0.9, 5.2, true }, // 6 boundaries
        { 5, 0.0, 6.0, true }, { -1, 0.0, 0.0, true }, // a negative timeout: even "now" is too old
    };
    for (const TimeoutCase &c : cases) {
        clock.set(kNoon);
        clock.advanceSeconds(c.arrivalOffset);
        sc.setT(1, 1.0f);
        clock.advanceSeconds(c.elapsed);
        sc.SetTimeout(c.timeout);
        EXPECT_EQ(sc.TT(1), c.timedOut) << "timeout " << c.timeout << " arrival +"
                                        << c.arrivalOffset << " s, elapsed " << c.elapsed << " s";
    }
}

TEST_F(ScriptClassTest, MinTakesEachArgumentByItsLocaleText)
{
    EXPECT_EQ(sc.Min(nullptr, 0), 9999999999.0);
    const Variant textFive[] = { Variant::string("abc"), Variant::integer(5) };
    EXPECT_EQ(sc.Min(textFive, 2), 0.0);
    const Variant negative[] = { Variant::dbl(-2.5), Variant::string(" 7") };
    EXPECT_EQ(sc.Min(negative, 2), -2.5);
    // With a comma locale the text of 1.5 is "1,5", and Val knows only "." as a decimal point.
    // Link qualities are whole numbers, so the quirk never shows in the link-quality scripts.
    ScopedNumberLocale comma(NumberLocale::comma());
    const Variant single[] = { Variant::single(1.5f) };
    EXPECT_EQ(sc.Min(single, 1), 1.0);
}

} // namespace
} // namespace corvalog
