#include "runtime/Convert.h"

#include "runtime/NumberText.h"
#include "runtime/Val.h"
#include "runtime/VbError.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <limits>

using namespace corvalog;

namespace {

// What a conversion gives, as text to compare: "2", "0.015", "abc" or "error 6" (true is "1").
std::string show(double v)
{
    char buf[40];
    std::snprintf(buf, sizeof buf, "%.15g", v);
    return buf;
}

std::string show(const std::string &v)
{
    return v;
}

template <typename F> std::string outcome(F f)
{
    try {
        return show(f());
    } catch (const VbError &e) {
        return "error " + std::to_string(e.number());
    }
}

#define EXPECT_GIVES(expression, expected)                                                         \
    EXPECT_EQ(outcome([&] { return expression; }), expected) << #expression

std::string parsed(const char *text, const NumberLocale &locale)
{
    double v = 0;
    return tryParseNumericText(text, locale, v) ? show(v) : "no number";
}

TEST(Convert, WholeNumbersRoundHalfToEvenAndOverflowAtTheirLimits)
{
    const struct {
        double in;
        const char *integer, *byte;
    } cases[] = {
        { 2.5, "2", "2" },
        { -2.5, "-2", "error 6" },
        { -0.5, "0", "0" },
        { 255.49, "255", "255" },
        { 255.5, "256", "error 6" },
        { 32767.5, "error 6", "error 6" },
        { -32768.5, "-32768", "error 6" },
        { -32768.51, "error 6", "error 6" },
        { std::numeric_limits<double>::quiet_NaN(), "error 6", "error 6" },
    };
    for (const auto &c : cases) {
        EXPECT_EQ(outcome([&] { return toInteger(c.in); }), c.integer) << c.in;
        EXPECT_EQ(outcome([&] { return toByte(c.in); }), c.byte) << c.in;
    }
    EXPECT_GIVES(toLong(2147483647.4), "2147483647");
    EXPECT_GIVES(toLong(2147483647.5), "error 6");
    EXPECT_GIVES(toLong(-2147483648.5), "-2147483648");
    EXPECT_GIVES(toSingle(1e39), "error 6");
    EXPECT_GIVES(toSingle(std::numeric_limits<double>::infinity()), "inf");
}

TEST(Convert, NumericTextFollowsTheLocale)
{
    const NumberLocale point = NumberLocale::point();
    const NumberLocale comma = NumberLocale::comma();
    EXPECT_EQ(parsed("  -12.5  ", point), "-12.5");
    EXPECT_EQ(parsed("3-", point), "-3");
    EXPECT_EQ(parsed("(4)", point), "-4");
    EXPECT_EQ(parsed("1,000", point), "1000");
    EXPECT_EQ(parsed("1.5E-2", point), "0.015");
    EXPECT_EQ(parsed(".2", point), "0.2");
    EXPECT_EQ(parsed("&HFFFF", point), "-1");
    EXPECT_EQ(parsed("1.000,5", comma), "1000.5");
    EXPECT_EQ(parsed("12.5", comma), "125"); // the point groups thousands there
    for (const char *bad : { "", ".", ",1", "1e", "0x10" })
        EXPECT_EQ(parsed(bad, point), "no number") << '"' << bad << '"';
    EXPECT_GIVES(parseNumericText("1e400", point), "error 6");
    EXPECT_GIVES(parseNumericText("x", point), "error 13");
    // Single text is rounded once, straight to Single.
    EXPECT_GIVES(parseSingleText("0.1", point), show(0.1f));
    EXPECT_GIVES(parseSingleText("16777217", point), "16777216");
    EXPECT_GIVES(parseSingleText(" 1,5 ", comma), "1.5");
    EXPECT_GIVES(parseSingleText("1e39", point), "error 6");
    EXPECT_GIVES(parseSingleText("-", point), "error 13");
}

TEST(Convert, VariantConversions)
{
    ScopedNumberLocale point(NumberLocale::point());
    EXPECT_GIVES(CInt(Variant::boolean(true)), "-1");
    EXPECT_GIVES(CByte(Variant::integer(-1)), "error 6");
    EXPECT_GIVES(CInt(Variant::string("TRUE")), "error 13");
    EXPECT_GIVES(CBool(Variant::string(" true ")), "1");
    EXPECT_GIVES(CBool(Variant::string("0")), "0");
    EXPECT_GIVES(CBool(Variant::string("")), "error 13");
    EXPECT_GIVES(CStr(Variant()), "");
    EXPECT_GIVES(CStr(Variant::boolean(true)), "True");
    EXPECT_GIVES(CStr(Variant::null()), "error 94");
}

TEST(Val, TakesTheLongestLeadingNumber)
{
    EXPECT_GIVES(Val("  42abc"), "42");
    EXPECT_GIVES(Val("1 2 3"), "123");
    EXPECT_GIVES(Val("\t-1.5e2x"), "-150");
    EXPECT_GIVES(Val("1,5"), "1"); // "." is the only decimal separator
    EXPECT_GIVES(Val(".5"), "0.5");
    EXPECT_GIVES(Val("1e"), "1");
    EXPECT_GIVES(Val("1d2"), "100");
    EXPECT_GIVES(Val("&HFFFF"), "-1");
    EXPECT_GIVES(Val("1e-999"), "0");
    EXPECT_GIVES(Val("1e999"), "error 6");
}

// CStr's number text: 15 significant digits for a Double and 7 for a Single, plain while the
// digits fit and exponent form beyond.
TEST(NumberText, SignificantDigitsAndExponentFormLikeCStr)
{
    EXPECT_EQ(doubleText(5.6789e-11, '.'), "0.000000000056789");
    EXPECT_EQ(doubleText(5.6789e-12, '.'), "5.6789E-12");
    EXPECT_EQ(doubleText(999999999999999, '.'), "999999999999999");
    EXPECT_EQ(doubleText(1e14, '.'), "100000000000000");
    EXPECT_EQ(doubleText(-1e15, '.'), "-1E+15");
    EXPECT_EQ(doubleText(-1.5e-300, '.'), "-1.5E-300");
    EXPECT_EQ(doubleText(std::numeric_limits<double>::max(), '.'), "1.79769313486232E+308");
    EXPECT_EQ(doubleText(std::numeric_limits<double>::denorm_min(), '.'), "4.94065645841247E-324");
    EXPECT_EQ(doubleText(-0.0, '.'), "0");
    EXPECT_EQ(doubleText(-0.25, ','), "-0,25");
    EXPECT_EQ(doubleText(std::numeric_limits<double>::quiet_NaN(), '.'), "NaN");
    EXPECT_EQ(singleText(654322.23456f, '.'), "654322.3");
    EXPECT_EQ(singleText(1234567.5f, '.'), "1234568"); // an exact tie: away from zero
    EXPECT_EQ(singleText(1e-6f, '.'), "0.000001");
    EXPECT_EQ(singleText(1e-7f, '.'), "1E-07");
    EXPECT_EQ(singleText(16777216.0f, '.'), "1.677722E+07");
    EXPECT_EQ(singleText(-std::numeric_limits<float>::infinity(), '.'), "-Inf");
}

std::string rounded(double value, int significant)
{
    const DecimalDigits d = roundedDigits(value, significant);
    return d.digits + "E" + std::to_string(d.exponent);
}

TEST(NumberText, RoundedDigitsBreakOnlyExactTiesAwayFromZero)
{
    EXPECT_EQ(rounded(0.125, 2), "13E-1"); // exactly half: away from zero
    EXPECT_EQ(rounded(9.5, 1), "1E1"); // the carry adds a digit in front
    EXPECT_EQ(rounded(0.15, 1), "1E-1"); // 0.1499999999999999944...: no tie at all
    EXPECT_EQ(rounded(1.2349999, 4), "1235E0");
}

} // namespace
