#pragma once

#include "FormatPattern.h"

namespace corvalog::formatting {

// A number as decimal digits: value = 0.d1 d2 ... dn x 10^point, sign aside. No trailing zero
// digits are kept; zero has n == 0.
struct Decimal {
    char digits[24];
    int n = 0;
    int point = 0;
    bool negative = false;

    char at(int i) const { return i >= 0 && i < n ? digits[i] : '0'; }

    void trim()
    {
        while (n > 0 && digits[n - 1] == '0')
            --n;
        if (n == 0)
            point = 0;
    }

    // Rounds half away from zero to `places` digits after the point.
    void round(int places)
    {
        const int cut = point + places;
        if (n == 0 || cut >= n)
            return;
        if (cut < 0) {
            n = 0;
            point = 0;
            return;
        }
        const bool up = digits[cut] >= '5';
        n = cut;
        if (up) {
            int i = n - 1;
            while (i >= 0 && digits[i] == '9')
                --i;
            if (i < 0) {
                digits[0] = '1';
                n = 1;
                ++point;
            } else {
                ++digits[i];
                n = i + 1;
            }
        }
        trim();
    }
};

// The decimal digits of a number value (or of numeric text); false when the value is no number.
bool decimalOf(const Variant &value, Decimal &d);

// A number through a number pattern's sections (positive, negative, zero, Null), with the
// locale's decimal and group separators.
std::string formatNumber(const CompiledFormat &fmt, Decimal d, bool isNull);

} // namespace corvalog::formatting
