#include "DateTime.h"

#include <cmath>
#include <cstdio>

namespace corvalog {

namespace {

constexpr std::int64_t kMsPerDay = 86400000;

// Days since 1970-01-01 of a proleptic Gregorian date (H. Hinnant's algorithm).
constexpr std::int64_t daysFromCivil(std::int64_t y, unsigned m, unsigned d)
{
    y -= m <= 2;
    const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
    const unsigned yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<std::int64_t>(doe) - 719468;
}

void civilFromDays(std::int64_t z, int &year, int &month, int &day)
{
    z += 719468;
    const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const unsigned doe = static_cast<unsigned>(z - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const std::int64_t y = static_cast<std::int64_t>(yoe) + era * 400;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
    month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    year = static_cast<int>(y + (month <= 2));
}

// A compile-time constant, so dates made while other files initialise their statics are right.
constexpr std::int64_t kZeroDateDays = daysFromCivil(1899, 12, 30); // relative to 1970

std::int64_t floorDiv(std::int64_t a, std::int64_t b)
{
    std::int64_t q = a / b;
    if ((a % b != 0) && ((a < 0) != (b < 0)))
        --q;
    return q;
}

} // namespace

std::int64_t dateToMilliseconds(double date)
{
    if (!std::isfinite(date) || std::fabs(date) > 1e9)
        return 0;
    const double whole = std::trunc(date);
    const double linear = whole + std::fabs(date - whole);
    // Rounded to the millisecond so that representation error never moves a second boundary.
    return static_cast<std::int64_t>(std::llround(linear * static_cast<double>(kMsPerDay)));
}

double dateFromMilliseconds(std::int64_t ms)
{
    const std::int64_t day = floorDiv(ms, kMsPerDay);
    const double fraction = static_cast<double>(ms - day * kMsPerDay) / kMsPerDay;
    return day >= 0 ? static_cast<double>(day) + fraction : static_cast<double>(day) - fraction;
}

CivilDateTime civilFromDate(double date)
{
    const std::int64_t ms = dateToMilliseconds(date);
    const std::int64_t day = floorDiv(ms, kMsPerDay);
    const std::int64_t secondsOfDay = (ms - day * kMsPerDay) / 1000;
    CivilDateTime dt;
    civilFromDays(day + kZeroDateDays, dt.year, dt.month, dt.day);
    dt.hour = static_cast<int>(secondsOfDay / 3600);
    dt.minute = static_cast<int>(secondsOfDay / 60 % 60);
    dt.second = static_cast<int>(secondsOfDay % 60);
    return dt;
}

double dateFromCivil(const CivilDateTime &dt)
{
    const std::int64_t day
        = daysFromCivil(dt.year, static_cast<unsigned>(dt.month), static_cast<unsigned>(dt.day))
        - kZeroDateDays;
    const std::int64_t ms
        = day * kMsPerDay + (dt.hour * 3600LL + dt.minute * 60LL + dt.second) * 1000;
    return dateFromMilliseconds(ms);
}

int weekdayOf(double date)
{
    const std::int64_t day = floorDiv(dateToMilliseconds(date), kMsPerDay);
    // The zero date, 30 December 1899, was a Saturday.
    return static_cast<int>(((day + 6) % 7 + 7) % 7) + 1;
}

bool isLeapYear(int year)
{
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int dayOfYear(const CivilDateTime &dt)
{
    static constexpr int before[] = { 0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334 };
    return before[dt.month - 1] + dt.day + (dt.month > 2 && isLeapYear(dt.year) ? 1 : 0);
}

std::int64_t dateDiffSeconds(double from, double to)
{
    return floorDiv(dateToMilliseconds(to), 1000) - floorDiv(dateToMilliseconds(from), 1000);
}

std::string dateText(double date, char dateSeparator, char timeSeparator)
{
    const CivilDateTime dt = civilFromDate(date);
    const std::int64_t ms = dateToMilliseconds(date);
    // The zero date stands for a time of day alone, so it shows as one ("00:00:00").
    const bool hasDate = floorDiv(ms, kMsPerDay) != 0;
    const bool hasTime = dt.hour != 0 || dt.minute != 0 || dt.second != 0 || !hasDate;
    char buf[64];
    std::string out;
    if (hasDate) {
        std::snprintf(buf, sizeof buf, "%02d%c%02d%c%04d", dt.day, dateSeparator, dt.month,
            dateSeparator, dt.year);
        out = buf;
    }
    if (hasTime) {
        std::snprintf(buf, sizeof buf, "%02d%c%02d%c%02d", dt.hour, timeSeparator, dt.minute,
            timeSeparator, dt.second);
        if (!out.empty())
            out += ' ';
        out += buf;
    }
    return out;
}

} // namespace corvalog
