#include "SystemLocale.h"

#include <QLocale>

namespace corvalog {

namespace {

// The one character a locale string stands for, or 0 when it is not a single ASCII mark.
char asciiMark(const QString &text)
{
    if (text.size() != 1 || text.at(0).unicode() > 0x7E || text.at(0).unicode() < 0x21
        || text.at(0).isLetterOrNumber())
        return 0;
    return static_cast<char>(text.at(0).unicode());
}

// The first separator between the fields of a date or time pattern, skipping quoted text.
char patternSeparator(const QString &pattern, char fallback)
{
    bool quoted = false;
    for (const QChar c : pattern) {
        if (c == QLatin1Char('\'')) {
            quoted = !quoted;
            continue;
        }
        if (quoted || c.isLetter() || c.isSpace())
            continue;
        const char mark = asciiMark(QString(c));
        if (mark != 0)
            return mark;
    }
    return fallback;
}

} // namespace

NumberLocale numberLocaleOf(const QLocale &locale)
{
    NumberLocale result;
    const char decimal = asciiMark(locale.decimalPoint());
    result.decimal = decimal == ',' ? ',' : '.';
    const QString group = locale.groupSeparator();
    const std::string thousands = group.toStdString();
    if (group.isEmpty() || (thousands.size() == 1 && thousands[0] == result.decimal))
        result.thousands = result.decimal == ',' ? "." : ",";
    else
        result.thousands = thousands;
    result.dateSeparator = patternSeparator(locale.dateFormat(QLocale::ShortFormat), '/');
    result.timeSeparator = patternSeparator(locale.timeFormat(QLocale::ShortFormat), ':');
    return result;
}

NumberLocale systemNumberLocale()
{
    return numberLocaleOf(QLocale::system());
}

} // namespace corvalog
