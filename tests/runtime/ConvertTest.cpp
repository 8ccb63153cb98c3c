#include "runtime/Convert.h"

#include "runtime/NumberText.h"
#include "runtime/VbError.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

using namespace corvalog;

namespace {

int errorOf(void (*f)())
{
    try {
        f();
    } catch (const VbError &e) {
        return e.number();
    }
    return 0;
}

TEST(Convert, WholeNumbersRoundHalfToEvenAndOverflowAtTheirLimits)
{
    const struct {
        double in;
        double integer; // NAN: overflow
        double byte;
    } cases[] = {
        { 2.5, 2, 2 },
        { -2.5, -2, NAN },
        { -0.5, 0, 0 },
        { 255.49, 255, 255 },
        { 255.5, 256, NAN },
        { 32767.49, 32767, NAN },
        { 32767.5, NAN, NAN },
        { -32768.5, -32768, NAN },
        { -32768.51, NAN, NAN },
        { NAN, NAN, NAN },
    };
    for (const auto &c : cases) {
        if (std::isnan(c.integer)) {
            EXPECT_THROW(toInteger(c.in), VbError) << c.in;
        } else {
            EXPECT_EQ(toInteger(c.in), c.integer) << c.in;
        }
        if (std::isnan(c.byte)) {
            EXPECT_THROW(toByte(c.in), VbError) << c.in;
        } else {
            EXPECT_EQ(toByte(c.in), c.byte) << c.in;
        }
    }
    EXPECT_EQ(toLong(2147483647.4), 2147483647);
    EXPECT_THROW(toLong(2147483647.5), VbError);
    EXPECT_EQ(toLong(-2147483648.5), INT32_MIN);
    EXPECT_EQ(errorOf([] { toSingle(1e39); }), 6);
    EXPECT_TRUE(std::isinf(toSingle(std::numeric_limits<double>::infinity())));
}

TEST(Convert, NumericTextFollowsTheLocale)
{
    const struct {
        const char *text;
        NumberLocale locale;
        double expected; // NAN: type mismatch
    } cases[] = {
        { "  -12.5  ", NumberLocale::point(), -12.5 },
        { "3-", NumberLocale::point(), -3 },
        { "(4)", NumberLocale::point(), -4 },
        { "1,000", NumberLocale::point(), 1000 },
        { "1.5E-2", NumberLocale::point(), 0.015 },
        { ".2", NumberLocale::point(), 0.2 },
        { "&HFFFF", NumberLocale::point(), -1 },
        { "&o17", NumberLocale::point(), 15 },
        { "1.000,5", NumberLocale::comma(), 1000.5 },
        { "12.5", NumberLocale::comma(), 125 }, // the point groups thousands there
        { "", NumberLocale::point(), NAN },
        { ".", NumberLocale::point(), NAN },
        { ",1", NumberLocale::point(), NAN },
        { "1e", NumberLocale::point(), NAN },
        { "0x10", NumberLocale::point(), NAN },
    };
    for (const auto &c : cases) {
        double got = 0;
        const bool ok = tryParseNumericText(c.text, c.locale, got);
        if (std::isnan(c.expected)) {
            EXPECT_FALSE(ok) << c.text;
        } else {
            EXPECT_TRUE(ok) << c.text;
            EXPECT_DOUBLE_EQ(got, c.expected) << c.text;
        }
    }
    EXPECT_EQ(errorOf([] { parseNumericText("1e400", NumberLocale::point()); }), 6);
    EXPECT_EQ(errorOf([] { parseNumericText("x", NumberLocale::point()); }), 13);
}

TEST(Convert, SingleTextIsRoundedOnceToSingle)
{
    EXPECT_EQ(parseSingleText("0.1", NumberLocale::point()), 0.1f);
    EXPECT_EQ(parseSingleText("16777217", NumberLocale::point()), 16777216.0f);
    EXPECT_EQ(parseSingleText(" 1,5 ", NumberLocale::comma()), 1.5f);
    EXPECT_EQ(errorOf([] { parseSingleText("1e39", NumberLocale::point()); }), 6);
    EXPECT_EQ(errorOf([] { parseSingleText("-", NumberLocale::point()); }), 13);
}

TEST(Convert, VariantConversions)
{
    EXPECT_EQ(CInt(Variant::boolean(true)), -1);
    EXPECT_EQ(errorOf([] { CByte(Variant::integer(-1)); }), 6);
    EXPECT_EQ(errorOf([] { CDbl(Variant::null()); }), 94);
    EXPECT_EQ(errorOf([] { CInt(Variant::string("TRUE")); }), 13);
    EXPECT_TRUE(CBool(Variant::string(" true ")));
    EXPECT_FALSE(CBool(Variant::string("0")));
    EXPECT_EQ(errorOf([] { CBool(Variant::string("")); }), 13);
    EXPECT_EQ(errorOf([] { CSng(Variant::dbl(1e300)); }), 6);
}

TEST(NumberText, SignificantDigitsAndExponentFormLikeCStr)
{
    const struct {
        double value;
        bool single;
        const char *text;
    } cases[] = {
        { 5.6789e-11, false, "0.000000000056789" },
        { 5.6789e-12, false, "5.6789E-12" },
        { 999999999999999, false, "999999999999999" },
        { 1e15, false, "1E+15" },
        { 3.14159265358979323846, false, "3.14159265358979" },
        { -0.0, false, "0" },
        { 654322.23456, true, "654322.3" },
        { 1e8, true, "1E+08" },
        { 3.14159265358979323846, true, "3.141593" },
        { 0.1, true, "0.1" },
        { 16777216, true, "1.677722E+07" },
    };
    for (const auto &c : cases) {
        const std::string got
            = c.single ? singleText(static_cast<float>(c.value), '.') : doubleText(c.value, '.');
        EXPECT_EQ(got, c.text) << c.value;
    }
    EXPECT_EQ(doubleText(0.25, ','), "0,25");
    EXPECT_EQ(doubleText(std::numeric_limits<double>::quiet_NaN(), '.'), "NaN");
    EXPECT_EQ(singleText(-std::numeric_limits<float>::infinity(), '.'), "-Inf");
}

TEST(NumberText, RoundedDigitsBreakOnlyExactTiesAwayFromZero)
{
    const struct {
        double value;
        int significant;
        const char *digits;
        int exponent;
    } cases[] = {
        { 0.125, 2, "13", -1 }, // exactly half: away from zero
        { 9.5, 1, "1", 1 }, // the carry adds a digit in front
        { 0.15, 1, "1", -1 }, // 0.1499999999999999944...: no tie at all
        { 1.2349999, 4, "1235", 0 },
    };
    for (const auto &c : cases) {
        const DecimalDigits d = roundedDigits(c.value, c.significant);
        EXPECT_EQ(d.digits, c.digits) << c.value;
        EXPECT_EQ(d.exponent, c.exponent) << c.value;
    }
}

TEST(NumberText, CStrOfEveryType)
{
    ScopedNumberLocale point(NumberLocale::point());
    EXPECT_EQ(CStr(Variant()), "");
    EXPECT_EQ(CStr(Variant::boolean(true)), "True");
    EXPECT_EQ(CStr(Variant::longValue(INT32_MIN)), "-2147483648");
    EXPECT_THROW(CStr(Variant::null()), VbError);
}

} // namespace
