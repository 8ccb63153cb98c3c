#include "values/ValidateModule.h"

#include <gtest/gtest.h>
#include <string>

using namespace corvalog;

namespace {

// A key is a paste of one character: both must let through exactly what keeps a number.
TEST(NumericKeyFilter, KeysAndPastesKeepOnlyWhatKeepsANumber)
{
    const struct {
        const char *text;
        int start;
        int length; // the selection the keys replace
        const char *pasted;
        bool commaDecimal;
        const char *extra;
        const char *kept;
    } cases[] = {
        { "12", 2, 0, "a +e", false, "", "" }, // letters, blanks, "+" and exponents nowhere
        { "", 0, 0, "12abc3", false, "", "123" },
        // One decimal separator; replacing the one there makes room for another.
        { "1.2", 3, 0, ".", false, "", "" },
        { "1.2", 1, 1, ".", false, "", "." },
        // A comma is a separator only where the locale writes decimal commas, and then either
        // mark counts as the one separator.
        { "", 0, 0, "1,5", false, "", "15" },
        { "", 0, 0, "1,5", true, "", "1,5" },
        { "1.2", 3, 0, ",", true, "", "" },
        // A minus only in front, and only one.
        { "-12", 0, 0, "-", false, "", "" },
        { "", 0, 0, "-1-2", false, "", "-12" },
        // Extra characters are always welcome: a format may hold several points.
        { "", 0, 0, "00.0.0x", false, "0.", "00.0.0" },
        // A stale selection beyond the text is pinned to it, never read past.
        { "1.2", 1, 99, ".", false, "", "." },
        { "12", 10, 5, "-", false, "", "" },
    };
    for (const auto &c : cases) {
        EXPECT_EQ(NumericPasteFilter(c.text, c.start, c.length, c.pasted, c.commaDecimal, c.extra),
            c.kept)
            << '"' << c.pasted << "\" into \"" << c.text << "\" [" << c.start << ',' << c.length
            << ") comma=" << c.commaDecimal << " extra=\"" << c.extra << '"';
        if (std::char_traits<char>::length(c.pasted) == 1) {
            EXPECT_EQ(
                NumericKeyAllowed(c.text, c.start, c.length, c.pasted[0], c.commaDecimal, c.extra),
                *c.kept != '\0')
                << "key '" << c.pasted << "' into \"" << c.text << '"';
        }
    }
}

// What a number box holds, as each property reads it: "" when the setting must stay as it was.
TEST(NumberBox, ReadsTheWholeTextOrNothingAndNarrowsToTheProperty)
{
    const auto shown = [](auto value) {
        return value ? std::to_string(static_cast<double>(*value)) : std::string();
    };
    const struct {
        const char *text;
        bool commaDecimal;
        const char *single, *integer, *longValue;
    } cases[] = {
        { " 12.5 ", false, "12.500000", "12.000000", "12.000000" }, // half to even
        { "13,5", true, "13.500000", "14.000000", "14.000000" },
        { "13.5", true, "13.500000", "14.000000", "14.000000" }, // the point reads anywhere
        { "1,5", false, "", "", "" },
        { "1,234.5", true, "", "", "" }, // no thousands separators
        { "-32768.5", false, "-32768.500000", "-32768.000000", "-32768.000000" },
        { "32767.5", false, "32767.500000", "", "32768.000000" },
        { "1e3", false, "1000.000000", "1000.000000", "1000.000000" },
        { "4e38", false, "", "", "" }, // beyond a Single
        { "1e999", false, "", "", "" },
        { "", false, "", "", "" },
        { "-", false, "", "", "" },
        { "12kg", false, "", "", "" },
    };
    for (const auto &c : cases) {
        EXPECT_EQ(shown(numberBoxSingle(c.text, c.commaDecimal)), c.single) << c.text;
        EXPECT_EQ(shown(numberBoxInteger(c.text, c.commaDecimal)), c.integer) << c.text;
        EXPECT_EQ(shown(numberBoxLong(c.text, c.commaDecimal)), c.longValue) << c.text;
    }
}

} // namespace
