#pragma once

namespace corvalog {

// The decimal and thousands separators that number text uses: point and comma by default,
// comma and point in a comma-decimal locale. One setting for the process, as the system's
// regional settings are; it is chosen at start-up (or by --comma-decimal) and read everywhere
// numbers become text or text becomes numbers.
struct NumberLocale {
    char decimal = '.';
    char thousands = ',';

    bool commaDecimal() const { return decimal == ','; }
    static NumberLocale point() { return { '.', ',' }; }
    static NumberLocale comma() { return { ',', '.' }; }
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
