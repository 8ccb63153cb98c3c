#include "FormatDate.h"

#include "Convert.h"
#include "DateTime.h"
#include "NumberLocale.h"

#include <charconv>

namespace corvalog::formatting {

namespace {

constexpr const char *kMonthNames[] = { "January", "February", "March", "April", "May", "June",
    "July", "August", "September", "October", "November", "December" };
constexpr const char *kDayNames[]
    = { "Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday" };

// The script's date range, 1 January 100 to 31 December 9999.
constexpr double kFirstDate = -657434.0;
constexpr double kDateEnd = 2958466.0;

void appendNumber(std::string &out, int v, int width)
{
    char buf[16];
    const auto res = std::to_chars(buf, buf + sizeof buf, v);
    for (auto len = res.ptr - buf; len < width; ++len)
        out += '0';
    out.append(buf, res.ptr);
}

void appendShortDate(std::string &out, const CivilDateTime &dt)
{
    const char separator = numberLocale().dateSeparator;
    appendNumber(out, dt.day, 2);
    out += separator;
    appendNumber(out, dt.month, 2);
    out += separator;
    appendNumber(out, dt.year, 4);
}

void appendLongDate(std::string &out, const CivilDateTime &dt, double date)
{
    out += kDayNames[weekdayOf(date) - 1];
    out += ", ";
    appendNumber(out, dt.day, 1);
    out += ' ';
    out += kMonthNames[dt.month - 1];
    out += ' ';
    appendNumber(out, dt.year, 1);
}

void appendLongTime(std::string &out, const CivilDateTime &dt)
{
    const char separator = numberLocale().timeSeparator;
    appendNumber(out, dt.hour, 2);
    out += separator;
    appendNumber(out, dt.minute, 2);
    out += separator;
    appendNumber(out, dt.second, 2);
}

} // namespace

void appendDate(std::string &out, const CompiledFormat &fmt, const Section &sec, double date)
{
    const CivilDateTime dt = civilFromDate(date);
    const int hour12 = dt.hour % 12 == 0 ? 12 : dt.hour % 12;
    const int hour = sec.twelveHour ? hour12 : dt.hour;
    for (const Token &t : sec.tokens) {
        switch (t.op) {
        case Op::Literal:
            out.append(fmt.pool, t.a, t.b);
            break;
        case Op::Day:
        case Op::DayZero:
            appendNumber(out, dt.day, t.op == Op::DayZero ? 2 : 1);
            break;
        case Op::DayShort:
            out.append(kDayNames[weekdayOf(date) - 1], 3);
            break;
        case Op::DayLong:
            out += kDayNames[weekdayOf(date) - 1];
            break;
        case Op::ShortDate:
            appendShortDate(out, dt);
            break;
        case Op::LongDate:
            appendLongDate(out, dt, date);
            break;
        case Op::Month:
        case Op::MonthZero:
            appendNumber(out, dt.month, t.op == Op::MonthZero ? 2 : 1);
            break;
        case Op::MonthShort:
            out.append(kMonthNames[dt.month - 1], 3);
            break;
        case Op::MonthLong:
            out += kMonthNames[dt.month - 1];
            break;
        case Op::Minute:
        case Op::MinuteZero:
            appendNumber(out, dt.minute, t.op == Op::MinuteZero ? 2 : 1);
            break;
        case Op::Second:
        case Op::SecondZero:
            appendNumber(out, dt.second, t.op == Op::SecondZero ? 2 : 1);
            break;
        case Op::Hour:
        case Op::HourZero:
            appendNumber(out, hour, t.op == Op::HourZero ? 2 : 1);
            break;
        case Op::Weekday:
            appendNumber(out, weekdayOf(date), 1);
            break;
        case Op::WeekOfYear: {
            // Weeks start on Sunday and the first week holds 1 January.
            const double jan1 = dateFromCivil({ dt.year, 1, 1, 0, 0, 0 });
            appendNumber(out, (dayOfYear(dt) - 1 + weekdayOf(jan1) - 1) / 7 + 1, 1);
            break;
        }
        case Op::Quarter:
            appendNumber(out, (dt.month - 1) / 3 + 1, 1);
            break;
        case Op::DayOfYear:
            appendNumber(out, dayOfYear(dt), 1);
            break;
        case Op::Year2:
            appendNumber(out, dt.year % 100, 2);
            break;
        case Op::Year4:
            appendNumber(out, dt.year, 1);
            break;
        case Op::AmPm: {
            const bool am = dt.hour < 12;
            switch (t.a) {
            case 0:
                out += am ? "AM" : "PM";
                break;
            case 1:
                out += am ? "am" : "pm";
                break;
            case 2:
                out += am ? 'A' : 'P';
                break;
            default:
                out += am ? 'a' : 'p';
                break;
            }
            break;
        }
        case Op::DateSep:
            out += numberLocale().dateSeparator;
            break;
        case Op::TimeSep:
            out += numberLocale().timeSeparator;
            break;
        case Op::GeneralDate:
            out += dateText(date, numberLocale().dateSeparator, numberLocale().timeSeparator);
            break;
        case Op::LongTime:
            appendLongTime(out, dt);
            break;
        default:
            break;
        }
    }
}

bool dateOf(const Variant &value, double &date)
{
    if (value.isString()) {
        if (!tryParseNumericText(value.rawString(), numberLocale(), date))
            return false;
    } else {
        date = value.numberValue();
    }
    return date >= kFirstDate && date < kDateEnd;
}

} // namespace corvalog::formatting
