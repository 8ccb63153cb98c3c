#include "runtime/SystemLocale.h"

#include <QLocale>
#include <gtest/gtest.h>

using namespace corvalog;

namespace {

// "decimal thousands date time" of a locale's separators.
std::string separatorsOf(const char *name)
{
    const NumberLocale l = numberLocaleOf(QLocale(QString::fromLatin1(name)));
    return std::string { l.decimal, ' ' } + l.thousands + ' ' + l.dateSeparator + ' '
        + l.timeSeparator;
}

TEST(SystemLocale, SeparatorsComeFromTheLocalesOwnData)
{
    EXPECT_EQ(separatorsOf("C"), ". , / :");
    EXPECT_EQ(separatorsOf("de_DE"), ", . . :");
    EXPECT_EQ(separatorsOf("fr_FR"), ", \xE2\x80\xAF / :");
    EXPECT_EQ(separatorsOf("fi_FI"), ", \xC2\xA0 . .");
    EXPECT_EQ(separatorsOf("sv_SE"), ", \xC2\xA0 - :");
    EXPECT_EQ(separatorsOf("de_CH"), ". \xE2\x80\x99 . :");
}

} // namespace
