#include "values/ValidateModule.h"

#include <gtest/gtest.h>
#include <string>

using namespace corvalog;

namespace {

struct KeyCase {
    const char *text;
    int start;
    int length;
    char key;
    bool commaDecimal;
    const char *extra;
    bool allowed;
};

TEST(NumericKeyFilter, LetsThroughOnlyWhatKeepsANumber)
{
    const KeyCase cases[] = {
        // Digits go anywhere; letters, blanks, "+" and exponents nowhere.
        { "12", 2, 0, '7', false, "", true },
        { "12", 2, 0, 'a', false, "", false },
        { "12", 2, 0, ' ', false, "", false },
        // One decimal separator; replacing the one there makes room for another.
        { "12", 2, 0, '.', false, "", true },
        { "1.2", 3, 0, '.', false, "", false },
        { "1.2", 1, 1, '.', false, "", true },
        // A comma is a separator only where the locale writes decimal commas, and then either
        // mark counts as the one separator.
        { "12", 2, 0, ',', false, "", false },
        { "12", 2, 0, ',', true, "", true },
        { "1,2", 3, 0, '.', true, "", false },
        { "1.2", 3, 0, ',', true, "", false },
        { "1,2", 1, 1, '.', true, "", true },
        // A minus only in front, and only one.
        { "12", 0, 0, '-', false, "", true },
        { "12", 1, 0, '-', false, "", false },
        { "-12", 0, 0, '-', false, "", false },
        { "-12", 0, 1, '-', false, "", true },
        // Extra characters are always welcome: a format may hold several points.
        { "00.0", 4, 0, '.', false, "0.", true },
        { "00.0", 4, 0, '#', false, "0.", false },
        // A stale selection beyond the text is pinned to it, never read past.
        { "1.2", 1, 99, '.', false, "", true },
        { "12", 10, 5, '-', false, "", false },
    };
    for (const KeyCase &c : cases) {
        EXPECT_EQ(
            NumericKeyAllowed(c.text, c.start, c.length, c.key, c.commaDecimal, c.extra), c.allowed)
            << '"' << c.text << "\" [" << c.start << ',' << c.length << ") key '" << c.key
            << "' comma=" << c.commaDecimal << " extra=\"" << c.extra << '"';
    }
}

struct PasteCase {
    const char *text;
    int start;
    int length;
    const char *pasted;
    bool commaDecimal;
    const char *extra;
    const char *kept;
};

TEST(NumericKeyPaste, KeepsWhatCouldHaveBeenTypedInOrder)
{
    const PasteCase cases[] = {
        { "", 0, 0, "12abc3", false, "", "123" },
        { "1.5", 3, 0, "2.5", false, "", "25" },
        { "1.5", 0, 3, "2.7", false, "", "2.7" },
        { "", 0, 0, "-1-2", false, "", "-12" },
        { "5", 1, 0, "-3", false, "", "3" },
        { "", 0, 0, "1,5", false, "", "15" },
        { "", 0, 0, "1,5", true, "", "1,5" },
        { "", 0, 0, "00.0.0x", false, "0.", "00.0.0" },
    };
    for (const PasteCase &c : cases) {
        EXPECT_EQ(NumericPasteFilter(c.text, c.start, c.length, c.pasted, c.commaDecimal, c.extra),
            c.kept)
            << '"' << c.pasted << "\" into \"" << c.text << "\" at " << c.start;
    }
}

} // namespace
