#pragma once

#include <string>

namespace corvalog {

// The leading significant digits of a number's magnitude, rounded to nearest with exact ties
// away from zero (as the platform's number text rounds: a Single 654322.25 reads 654322.3).
// The value is d1.d2d3... x 10^exponent; zero gives "000..." and exponent 0.
struct DecimalDigits {
    std::string digits;
    int exponent = 0;
};
DecimalDigits roundedDigits(double value, int significant);

// Number text as the script's CStr writes it: Single with 7 and Double with 15 significant
// digits, no trailing zeros, exponent form "1E+20" / "1E-12" outside the plain range (small
// numbers whose digits fit are written out: "0.00001"), and the given decimal separator.
// Infinities and NaN (which the packet decoder passes through) read "Inf", "-Inf" and "NaN".
std::string singleText(float value, char decimal);
std::string doubleText(double value, char decimal);

// The same with the process locale's decimal separator.
std::string singleText(float value);
std::string doubleText(double value);

} // namespace corvalog
