#pragma once

#include <string>

namespace corvalog {

// The separators that number and date text use: the decimal mark, the thousands separator
// (UTF-8, so a locale's narrow no-break space stays what it is) and the date and time
// separators that "/" and ":" stand for in a format. One setting for the process, as the
// system's regional settings are: the program reads it from the system at start-up, the
// command-line tool keeps the point unless told otherwise; it is read everywhere numbers
// become text or text becomes numbers.
struct NumberLocale {
    char decimal = '.';
    std::string thousands = ",";
    char dateSeparator = '/';
    char timeSeparator = ':';

    bool commaDecimal() const { return decimal == ','; }
    static NumberLocale point() { return {}; }
    static NumberLocale comma() { return { ',', ".", '/', ':' }; }
};

const NumberLocale &numberLocale();
void setNumberLocale(const NumberLocale &locale);

// Sets the process locale for a scope and restores the previous one (tests, CLI commands).
class ScopedNumberLocale
{
public:
    explicit ScopedNumberLocale(const NumberLocale &locale);
    ~ScopedNumberLocale();
    ScopedNumberLocale(const ScopedNumberLocale &) = delete;
    ScopedNumberLocale &operator=(const ScopedNumberLocale &) = delete;

private:
    NumberLocale m_previous;
};

} // namespace corvalog
