#pragma once

#include <cstdint>
#include <string>

namespace corvalog {

// A calendar date and time of day, to the second.
struct CivilDateTime {
    int year = 1899;
    int month = 12;
    int day = 30;
    int hour = 0;
    int minute = 0;
    int second = 0;
};

// Milliseconds since the zero date (30 December 1899 00:00), on a straight time line: script
// dates before the zero date keep a positive time-of-day fraction, which this unfolds.
std::int64_t dateToMilliseconds(double date);
double dateFromMilliseconds(std::int64_t ms);

// The date-time a script date stands for, its seconds truncated (a date has no fraction of a
// second that anybody reads).
CivilDateTime civilFromDate(double date);
double dateFromCivil(const CivilDateTime &dt);

// Weekday of a date, 1 = Sunday to 7 = Saturday.
int weekdayOf(double date);

// The Gregorian calendar's leap years, and the day of the year of a date (1 January is 1).
bool isLeapYear(int year);
int dayOfYear(const CivilDateTime &dt);

// Number of one-second boundaries crossed from `from` to `to` (negative when `to` is earlier).
std::int64_t dateDiffSeconds(double from, double to);

// Text of a date value: "DD/MM/YYYY", "HH:MM:SS" or both, leaving out a zero date (its time
// is always shown) or a midnight time, with the given date and time separators.
std::string dateText(double date, char dateSeparator = '/', char timeSeparator = ':');

} // namespace corvalog
