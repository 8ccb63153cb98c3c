#include "runtime/SystemLocale.h"

#include <QLocale>
#include <gtest/gtest.h>

using namespace corvalog;

namespace {

TEST(SystemLocale, SeparatorsComeFromTheLocalesOwnData)
{
    const struct {
        const char *name;
        char decimal;
        const char *thousands;
        char date;
        char time;
    } cases[] = {
        { "C", '.', ",", '/', ':' },
        { "en_US", '.', ",", '/', ':' },
        { "en_GB", '.', ",", '/', ':' },
        { "de_DE", ',', ".", '.', ':' },
        { "fr_FR", ',', "\xE2\x80\xAF", '/', ':' },
        { "fi_FI", ',', "\xC2\xA0", '.', '.' },
        { "sv_SE", ',', "\xC2\xA0", '-', ':' },
        { "de_CH", '.', "\xE2\x80\x99", '.', ':' },
    };
    for (const auto &c : cases) {
        const NumberLocale locale = numberLocaleOf(QLocale(QString::fromLatin1(c.name)));
        EXPECT_EQ(locale.decimal, c.decimal) << c.name;
        EXPECT_EQ(locale.thousands, c.thousands) << c.name;
        EXPECT_EQ(locale.dateSeparator, c.date) << c.name;
        EXPECT_EQ(locale.timeSeparator, c.time) << c.name;
    }
}

} // namespace
