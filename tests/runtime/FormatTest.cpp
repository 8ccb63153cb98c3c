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

TEST(Format, OneAndZeroOfEveryNumberType)
{
    const struct {
        const char *pattern, *one, *zero;
    } rows[] = {
        { "", "1", "0" },
        { "Percent", "100.00%", "0.00%" },
        { "Scientific", "1.00E+00", "0.00E+00" },
        { "True/False", "True", "False" },
        { "On/Off", "On", "Off" },
        { "#.#", "1.", "." },
        { "00\\c\\o\\p\\y", "01copy", "00copy" },
        { "\"pos\";\"neg\"", "pos", "pos" },
        { "\"pos\";\"neg\";\"zero\"", "pos", "zero" },
    };
    for (const auto &r : rows) {
        for (const Variant &one : { L(1), Variant::byte(1), Variant::integer(1), S(1), D(1) })
            EXPECT_EQ(Format(one, r.pattern), r.one) << r.pattern << " " << typeName(one.type());
        for (const Variant &zero : { L(0), Variant::byte(0), S(0), D(0) })
            EXPECT_EQ(Format(zero, r.pattern), r.zero) << r.pattern << " " << typeName(zero.type());
    }
}

TEST(Format, DigitPlaceholdersGroupingAndRounding)
{
    expectAll({
        { L(1), "1#####0000", "10001" }, // a digit before any placeholder is literal
        { D(0.00000008), "#0.#0#0#0#0#0", "0.0000000800" },
        { D(12.5), ".00", "12.50" }, // with no whole-part placeholder the whole part still shows
        { L(100000), "#,###,###,###", "100,000" },
        { L(1), "0,000,000,000", "0,000,000,001" },
        // Commas with no placeholder after them in the whole part divide by a thousand.
        { L(1234567), "#,##0,", "1,235" },
        { L(1234567), "0,,.00", "1.23" },
        { L(5), ",0", ",5" }, // a comma before any placeholder is literal text
        // Half away from zero, within the 7 significant digits of a Single and 15 of a Double.
        { D(0.5), "0", "1" },
        { D(1.005), "0.00", "1.01" }, // 1.00499999999999989 in binary
        { S(1.15f), "0.0", "1.2" }, // 1.14999997615814 as a Single
        { D(999.96), "#,##0.0", "1,000.0" },
        { D(0.1), "0.00000000000000000000", "0.10000000000000000000" },
        { S(16777216.0f), "0", "16777220" },
        // A negative number keeps its sign (and section) when it rounds to zero; -0 is zero.
        { D(-0.001), "0.00", "-0.00" },
        { D(-0.001), "0.00;(0.00);\"zero\"", "(0.00)" },
        { D(-0.0), "0;(0);\"zero\"", "zero" },
        { D(-0.1), ".#", "-.1" },
    });
}

TEST(Format, SectionsLiteralsAndEscapes)
{
    const std::string degrees = "\xC2\xB0"; // UTF-8 text passes through whole
    expectAll({
        { L(-5), "0;(0)", "(5)" },
        { L(-5), "0;", "-5" }, // an empty section is printed with the first
        { L(0), "0;;\\Z\\e\\r\\o", "Zero" }, { L(5), ";0", "" },
        { Variant::null(), "#,##0.00;;;Nil", "Nil" }, { Variant::null(), "0.00", "" },
        { L(7), "0;1;2;3;4;5", "7" }, // sections past the fourth are ignored
        { L(5), "0.0\" " + degrees + "C\"", "5.0 " + degrees + "C" },
        { L(1), "##abcdefghijklmnopqrstuvwxyz", "1abcdefghijklmnopqrstuvwxyz" },
        { L(5), "0\"abc", "5abc" }, // an unterminated quote runs to the end
        { L(25), "0\";\"0", "2;5" }, { L(5), "0.0.0", "5.0.0" }, // a second point is literal
    });
}

TEST(Format, PercentExponentsNamedFormatsAndValueKinds)
{
    expectAll({
        { D(0.1234), "0.0%", "12.3%" },
        { D(-0.5), "0%;(0%)", "(50%)" },
        { D(-1234.5), "0.00E+00", "-1.23E+03" },
        { D(0.00012345), "0.00E+00", "1.23E-04" },
        { D(1.7), "0.0000E-000", "1.7000E000" },
        { D(9.999), "0.00E+00", "1.00E+01" },
        { L(123456), "##0.0E+0", "123.5E+3" },
        { D(47.11), ".0000E+0", ".4711E+2" },
        { D(3.0401e-13), "#####.####e-0%", "30401.e-15%" },
        { D(1.7), "0.0000e+0#", "1.7000e+0" }, // "#" is an exponent digit shown only if needed
        { L(5), "E+0", "E+5" }, // before any placeholder "E+" is literal text
        { D(1234.567), "Fixed", "1234.57" },
        { D(1234567.891), "STANDARD", "1,234,567.89" },
        { D(-1234.5), "Currency", "($1,234.50)" },
        { T("0"), "YES/NO", "No" },
        { Variant(), "0;-0;\"zero\"", "zero" },
        { Variant::boolean(true), "0", "-1" },
        { L(-2147483647 - 1), "0", "-2147483648" },
        { T("12.5"), "0.00", "12.50" },
        { Variant::date(45000.5), "0.00", "45000.50" },
        { D(std::nan("")), "0.00", "NaN" },
        { D(-std::numeric_limits<double>::infinity()), "hh:nn", "-Inf" },
    });
}

TEST(Format, DatesAndTimes)
{
    const Variant v = Variant::date(dateFromCivil({ 2024, 3, 7, 14, 5, 9 })); // a Thursday
    const Variant sample = Variant::date(2.525); // Monday 1 January 1900 12:36
    const Variant evening = Variant::date(2.725); // 17:24
    expectAll({
        { v, "DD/MM/YYYY", "07/03/2024" },
        { v, "ddd dddd mmm mmmm", "Thu Thursday Mar March" },
        { v, "q y w ww", "1 67 5 10" },
        { v, "Short Date", "07/03/2024" },
        { v, "Long Date", "Thursday, 7 March 2024" },
        { v, "Medium Date", "07-Mar-24" },
        { v, "General Date", "07/03/2024 14:05:09" },
        { evening, "Long Time", "17:24:00" },
        { evening, "Medium Time", "05:24 PM" },
        { evening, "Short Time", "17:24" },
        { evening, "hh:nn:ss A/P am/pm a/p", "05:24:00 P pm p" },
        { Variant::date(dateFromCivil({ 2024, 3, 7, 0, 30, 0 })), "h:m AM/PM", "12:30 AM" },
        { Variant::date(dateFromCivil({ 2024, 3, 7, 12, 0, 0 })), "h:nn AM/PM", "12:00 PM" },
        { Variant::date(dateFromCivil({ 2005, 12, 31, 0, 0, 0 })), "ww w", "53 7" },
        { Variant::date(dateFromCivil({ 2024, 1, 1, 0, 0, 0 })), "ww w", "1 2" },
        { Variant::date(-1.75), "dd/mm/yyyy hh:nn", "29/12/1899 18:00" }, // time stays positive
        // "m" after an hour is minutes, once; a day in between makes it a month again.
        { sample, "yy yyy", "00 001" },
        { sample, "hh:mm :ss:mm", "12:36 :00:01" },
        { sample, "hh:dd :mm:mm", "12:01 :01:01" },
        // Numbers and numeric text are taken as dates by a date pattern.
        { T("39697.11"), "hh:mm mm-dd-yy", "02:38 09-06-08" },
        { Variant::null(), "dd/mm/yyyy", "" },
        { D(1e7), "dd/mm/yyyy", "10000000" },
        { T("tomorrow"), "dd/mm/yyyy", "tomorrow" },
    });
}

// The decimal and group separators come from the locale, and "/" and ":" stand for its date and
// time separators, in patterns and in the named formats alike.
TEST(Format, SeparatorsComeFromTheLocale)
{
    const std::string group = "\xE2\x80\xAF"; // a narrow no-break space: more than one byte
    NumberLocale locale = NumberLocale::comma();
    locale.dateSeparator = '.';
    locale.timeSeparator = '.';
    locale.thousands = group;
    ScopedNumberLocale scoped(locale);
    const Variant v = Variant::date(dateFromCivil({ 2026, 11, 23, 14, 5, 9 }));
    expectAll({
        { D(1234567.5), "#,##0.0", "1" + group + "234" + group + "567,5" },
        { T("1" + group + "234,5"), "0.00", "1234,50" }, { D(1234.5), "0.00E+00", "1,23E+03" },
        { D(0.5), "Percent", "50,00%" }, { v, "DD/MM/YYYY", "23.11.2026" },
        { v, "hh:nn:ss", "14.05.09" }, { v, "Short Date", "23.11.2026" },
        { v, "General Date", "23.11.2026 14.05.09" },
        { v, "d\\/m", "23/11" }, // an escaped slash is a slash
    });
}

TEST(Format, TextPatterns)
{
    const Variant testing = T("testing");
    expectAll({
        { testing, "@\\x", "txesting" }, // characters left over follow everything
        { testing, "@\\x@@@@@@@", " xtesting" },
        { testing, ">&&", "TESTING" },
        { T("MiXed"), "<>@", "mixed" },
        { L(1), "<&>&", "1" },
        { T("abc"), "!@@@@@@@@", "abc     " },
        { T("\xC3\xA9"), "@@@", "  \xC3\xA9" },
        { T(""), "@;\"(none)\"", "(none)" },
    });
}

TEST(Format, ExtremeValuesAndManyPatternsStayBounded)
{
    EXPECT_EQ(Format(D(1e300), "0"), "1" + std::string(300, '0'));
    EXPECT_EQ(Format(D(1e-300), "0.00"), "0.00");
    const std::string biggest = Format(D(std::numeric_limits<double>::max()), "#,##0.00");
    EXPECT_EQ(biggest.substr(0, 8) + " " + std::to_string(biggest.size()), "179,769, 414");
    EXPECT_EQ(Format(D(std::numeric_limits<double>::denorm_min()), "0.0E+000"), "4.9E-324");
    // More patterns than are kept compiled, twice over, and one too long to keep.
    for (int pass = 0; pass < 2; ++pass) {
        for (int n = 1; n <= 40; ++n)
            ASSERT_EQ(Format(L(5), std::string(n, '0')), std::string(n - 1, '0') + "5") << n;
    }
    EXPECT_EQ(Format(L(5), std::string(1000, '0')), std::string(999, '0') + "5");
}

} // namespace
} // namespace corvalog
