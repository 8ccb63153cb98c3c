#include "runtime/Format.h"

#include "runtime/DateTime.h"
#include "runtime/NumberLocale.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

namespace corvalog {
namespace {

struct Case {
    Variant value;
    std::string pattern;
    std::string expected;
};

constexpr auto L = &Variant::longValue;
constexpr auto D = &Variant::dbl;
constexpr auto S = &Variant::single;
constexpr auto T = &Variant::string;

void expectAll(const std::vector<Case> &cases)
{
    for (const Case &c : cases) {
        EXPECT_EQ(Format(c.value, c.pattern), c.expected)
            << "value " << typeName(c.value.type()) << " " << c.value.numberValue()
            << (c.value.isString() ? " \"" + c.value.rawString() + "\"" : "") << ", pattern \""
            << c.pattern << "\"";
    }
}

TEST(Format, OneAndZeroThroughCommonPatterns)
{
    struct Row {
        const char *pattern, *one, *zero;
    };
    const Row rows[] = {
        { "", "1", "0" },
        { "#.#", "1.", "." },
        { "\"pos\";\"neg\"", "pos", "pos" },
        { "\"pos\";\"neg\";\"zero\"", "pos", "zero" },
    };
    for (const Row &r : rows) {
        for (const Variant &one : { L(1), Variant::byte(1), Variant::integer(1), S(1), D(1) })
            EXPECT_EQ(Format(one, r.pattern), r.one) << r.pattern << " " << typeName(one.type());
        for (const Variant &zero : { L(0), Variant::byte(0), S(0), D(0) })
            EXPECT_EQ(Format(zero, r.pattern), r.zero) << r.pattern << " " << typeName(zero.type());
    }
}

TEST(Format, DigitPlaceholdersThousandsAndScaling)
{
    expectAll({
        { L(1), "000###", "000001" },
        { D(.17), "#.00", ".17" },
        { D(1.7), "#.33", "2.33" },
        { D(0.00000008), "#0.#0#0#0#0#0", "0.0000000800" },
        { L(123), "#-#", "12-3" },
        // With no whole-part placeholder the whole part is still shown.
        { D(12.5), ".00", "12.50" },
        { L(123456789), "#,#.#", "123,456,789." },
        // Commas with no placeholder after them in the whole part divide by a thousand.
        { L(1234567), "#,##0,", "1,235" },
        { L(1234567), "0,,.00", "1.23" },
        // A comma before any placeholder is literal text.
        { L(5), ",0", ",5" },
    });
}

TEST(Format, RoundsHalfAwayFromZeroWithinEachTypesDigits)
{
    expectAll({
        { D(1.005), "0.00", "1.01" }, // 1.00499999999999989 in binary
        { D(2.5), "0", "3" },
        { S(1.15f), "0.0", "1.2" }, // 1.14999997615814 as a Single
        { D(9.9999999), "#0.000000", "10.000000" },
        { D(999.96), "#,##0.0", "1,000.0" },
        // A negative number keeps its sign (and section) when it rounds to zero.
        { D(-0.001), "0.00", "-0.00" },
        { D(-0.001), "0.00;(0.00);\"zero\"", "(0.00)" },
        // Singles show seven significant digits and Doubles fifteen.
        { S(0.1f), "0.0000000000", "0.1000000000" },
        { D(0.1), "0.00000000000000000000", "0.10000000000000000000" },
        { S(16777216.0f), "0", "16777220" },
        { D(1.0 / 3), "", "0.333333333333333" },
    });
}

TEST(Format, SectionsLiteralsAndEscapes)
{
    const std::string degrees = "\xC2\xB0"; // UTF-8 text passes through whole
    expectAll({
        { L(-5), "0;(0)", "(5)" },
        { L(0), "0;(0);\"zero\"", "zero" },
        // An empty section is printed with the first.
        { L(-5), "0;", "-5" },
        { L(0), "0;;\\Z\\e\\r\\o", "Zero" },
        { L(5), ";0", "" },
        { Variant::null(), "0;-0;0;\"nothing\"", "nothing" },
        // Sections past the fourth are ignored.
        { L(7), "0;1;2;3;4;5", "7" },
        { L(5), "0.0\" " + degrees + "C\"", "5.0 " + degrees + "C" },
        // Letters after a number placeholder are literal.
        { L(5), "0.0 mm", "5.0 mm" },
        // An unterminated quote runs to the end.
        { L(5), "0\"abc", "5abc" },
        { L(25), "0\";\"0", "2;5" },
        // A second point is literal.
        { L(5), "0.0.0", "5.0.0" },
    });
}

TEST(Format, PercentAndExponents)
{
    expectAll({
        { D(0.1234), "0.0%", "12.3%" },
        { D(1234.5), "0.00E+00", "1.23E+03" },
        { D(1234.5), "0.00E-00", "1.23E03" },
        { D(9.999), "0.00E+00", "1.00E+01" },
        { L(123456), "##0.0E+0", "123.5E+3" },
        { D(47.11), ".0000E+0", ".4711E+2" },
        { D(3.0401e-13), "#####.####e-0%", "30401.e-15%" },
        // "E+" before any placeholder is literal text.
        { L(5), "E+0", "E+5" },
    });
}

TEST(Format, NamedFormatsIgnoreCase)
{
    expectAll({
        { D(1234.567), "Fixed", "1234.57" },
        { D(1234567.891), "STANDARD", "1,234,567.89" },
        { D(0.5), "percent", "50.00%" },
        { L(0), "YES/NO", "No" },
        { T("0"), "Yes/No", "No" },
        { T("maybe"), "Yes/No", "maybe" },
        { D(1234.5), "Currency", "$1,234.50" },
        { D(-1234.5), "Currency", "($1,234.50)" },
    });
}

TEST(Format, ValueKinds)
{
    const double date = dateFromCivil({ 2023, 3, 15, 12, 0, 0 });
    expectAll({
        { Variant(), "0;-0;\"zero\"", "zero" },
        { Variant::boolean(true), "0", "-1" },
        { L(-2147483647 - 1), "0", "-2147483648" },
        { T("12.5"), "0.00", "12.50" },
        { Variant::date(date), "0.00", "45000.50" },
        { D(std::nan("")), "0.00", "NaN" },
        { D(-std::numeric_limits<double>::infinity()), "hh:nn", "-Inf" },
    });
}

TEST(Format, CommaDecimalLocale)
{
    ScopedNumberLocale comma(NumberLocale::comma());
    expectAll({
        { D(1234567.891), "#,##0.00", "1.234.567,89" },
        { T("12,5"), "0.00", "12,50" },
        { D(12.5), "", "12,5" },
    });
}

TEST(Format, DatesAndTimes)
{
    const double when = dateFromCivil({ 2024, 3, 7, 14, 5, 9 }); // a Thursday
    const Variant v = Variant::date(when);
    const Variant sample = Variant::date(2.525); // 1 January 1900 12:36
    expectAll({
        { v, "DD/MM/YYYY", "07/03/2024" },
        { v, "ddd dddd", "Thu Thursday" },
        { v, "mmm mmmm", "Mar March" },
        { v, "h:mm AM/PM", "2:05 PM" },
        { v, "h A/P", "2 P" },
        { v, "q", "1" },
        { v, "y", "67" },
        { v, "w", "5" },
        { v, "ww", "10" },
        { v, "Short Date", "07/03/2024" },
        { v, "Long Date", "Thursday, 7 March 2024" },
        { v, "Medium Date", "07-Mar-24" },
        { v, "General Date", "07/03/2024 14:05:09" },
        { Variant::date(dateFromCivil({ 2024, 3, 7, 0, 30, 0 })), "h:nn AM/PM", "12:30 AM" },
        { Variant::date(dateFromCivil({ 2024, 3, 7, 12, 0, 0 })), "h:nn AM/PM", "12:00 PM" },
        { Variant::date(dateFromCivil({ 1899, 12, 29, 18, 0, 0 })), "dd/mm/yyyy hh:nn",
            "29/12/1899 18:00" },
        { sample, "mm :mm:ss", "01 :01:00" },
        { sample, "hh:mm :ss:mm", "12:36 :00:01" },
        // Numbers and numeric text are taken as dates by a date pattern.
        { T("39697.11"), "hh:mm", "02:38" },
        { Variant(), "hh:nn:ss", "00:00:00" },
        { D(1e7), "dd/mm/yyyy", "10000000" },
        { T("tomorrow"), "dd/mm/yyyy", "tomorrow" },
    });
}

// "/" and ":" stand for the locale's separators, in patterns and in the named formats alike;
// the group separator may be more than one byte.
TEST(Format, DateTimeAndGroupSeparatorsComeFromTheLocale)
{
    NumberLocale locale = NumberLocale::comma();
    locale.dateSeparator = '.';
    locale.timeSeparator = '.';
    locale.thousands = "\xE2\x80\xAF"; // a narrow no-break space
    ScopedNumberLocale scoped(locale);
    const Variant v = Variant::date(dateFromCivil({ 2026, 11, 23, 14, 5, 9 }));
    expectAll({
        { v, "DD/MM/YYYY", "23.11.2026" },
        { v, "hh:nn:ss", "14.05.09" },
        { v, "Short Date", "23.11.2026" },
        { v, "General Date", "23.11.2026 14.05.09" },
        { v, "d\\/m", "23/11" }, // an escaped slash is a slash
        { D(1234567.5), "#,##0.0",
            "1\xE2\x80\xAF"
            "234\xE2\x80\xAF"
            "567,5" },
        { T("1\xE2\x80\xAF"
            "234,5"),
            "0.00", "1234,50" },
    });
}

TEST(Format, TextPatterns)
{
    const Variant testing = T("testing");
    expectAll({
        { testing, "\\x@\\x@", "xtxesting" },
        { testing, "@@@@@@@@", " testing" },
        { testing, ">&&", "TESTING" },
        { T("MiXed"), "<@", "mixed" },
        { T("abc"), "!@@@@@@@@", "abc     " },
        { T("\xC3\xA9"), "@@@", "  \xC3\xA9" },
        { T(""), "@;\"(none)\"", "(none)" },
    });
}

TEST(Format, ExtremeValuesAndPatternsStayBounded)
{
    EXPECT_EQ(Format(D(1e300), "0"), "1" + std::string(300, '0'));
    EXPECT_EQ(Format(L(5), std::string(1000, '0')), std::string(999, '0') + "5");
    EXPECT_EQ(Format(D(1e-300), "0.00"), "0.00");
    const std::string biggest = Format(D(std::numeric_limits<double>::max()), "#,##0.00");
    EXPECT_EQ(biggest.substr(0, 8), "179,769,");
    EXPECT_EQ(biggest.size(), 309u + 102u + 3u);
    EXPECT_EQ(Format(D(std::numeric_limits<double>::denorm_min()), "0.0E+000"), "4.9E-324");
}

} // namespace
} // namespace corvalog
