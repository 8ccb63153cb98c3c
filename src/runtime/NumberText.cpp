#include "NumberText.h"

#include "NumberLocale.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace corvalog {

namespace {

// Splits "d.ddde+XX" (to_chars scientific) into its digits and exponent.
DecimalDigits splitScientific(const char *first, const char *last)
{
    DecimalDigits d;
    // "d.ddd" or "d": the point only ever follows the first digit. Appended in two pieces, as
    // this runs for every number a panel or a log writes.
    const char *p = std::find(first, last, 'e');
    if (p - first >= 2 && first[1] == '.') {
        d.digits.reserve(static_cast<std::size_t>(p - first - 1));
        d.digits.append(first, 1).append(first + 2, p);
    } else {
        d.digits.assign(first, p);
    }
    if (p != last) {
        ++p;
        const bool negative = *p == '-';
        if (*p == '-' || *p == '+')
            ++p;
        std::from_chars(p, last, d.exponent);
        if (negative)
            d.exponent = -d.exponent;
    }
    return d;
}

// Rounds the digit string up by one unit in its last place.
void roundUp(DecimalDigits &d)
{
    for (std::size_t i = d.digits.size(); i-- > 0;) {
        if (d.digits[i] != '9') {
            ++d.digits[i];
            return;
        }
        d.digits[i] = '0';
    }
    d.digits.insert(d.digits.begin(), '1');
    d.digits.pop_back();
    ++d.exponent;
}

} // namespace

DecimalDigits roundedDigits(double value, int significant)
{
    const double magnitude = std::fabs(value);
    if (magnitude == 0 || !std::isfinite(magnitude))
        return { std::string(static_cast<std::size_t>(significant), '0'), 0 };
    // One digit more than wanted, correctly rounded. Unless that digit is a 5, dropping it
    // (rounding up from 6) gives the correctly rounded digits; a 5 may be an exact tie, which
    // the full expansion settles.
    char buf[48];
    auto res = std::to_chars(
        buf, buf + sizeof buf, magnitude, std::chars_format::scientific, significant);
    DecimalDigits d = splitScientific(buf, res.ptr);
    const char extra = d.digits.back();
    d.digits.pop_back();
    if (extra > '5') {
        roundUp(d);
    } else if (extra == '5') {
        static thread_local char exact[1200]; // a double's full expansion has at most 767 digits
        res = std::to_chars(
            exact, exact + sizeof exact, magnitude, std::chars_format::scientific, 1100);
        const DecimalDigits full = splitScientific(exact, res.ptr);
        d.digits = full.digits.substr(0, static_cast<std::size_t>(significant));
        d.exponent = full.exponent;
        const bool belowHalf = full.digits[static_cast<std::size_t>(significant)] < '5';
        if (!belowHalf)
            roundUp(d); // a tie, or above it
    }
    return d;
}

namespace {

std::string generalText(double value, int precision, char decimal)
{
    if (std::isnan(value))
        return "NaN";
    if (std::isinf(value))
        return value < 0 ? "-Inf" : "Inf";
    if (value == 0)
        return "0"; // also for negative zero
    DecimalDigits d = roundedDigits(value, precision);
    const std::size_t last = d.digits.find_last_not_of('0');
    d.digits.erase(last + 1);
    const int after = static_cast<int>(d.digits.size()) - 1; // digits after the point in d.ddd form
    std::string out = value < 0 ? "-" : "";
    // Plain form inside the precision; small numbers also when all their digits fit in it.
    const bool plain = (d.exponent >= 0 && d.exponent < precision)
        || (d.exponent < 0 && -d.exponent + (after > 0 ? after - 1 : 0) < precision);
    if (plain) {
        if (d.exponent < 0) {
            out += "0";
            out += decimal;
            out.append(static_cast<std::size_t>(-d.exponent - 1), '0');
            out += d.digits;
        } else {
            const std::size_t whole = static_cast<std::size_t>(d.exponent) + 1;
            if (d.digits.size() <= whole) {
                out += d.digits;
                out.append(whole - d.digits.size(), '0');
            } else {
                out += d.digits.substr(0, whole);
                out += decimal;
                out += d.digits.substr(whole);
            }
        }
        return out;
    }
    out += d.digits[0];
    if (d.digits.size() > 1) {
        out += decimal;
        out += d.digits.substr(1);
    }
    char exponent[8];
    const int e = std::abs(d.exponent);
    out += d.exponent < 0 ? "E-" : "E+";
    auto res = std::to_chars(exponent, exponent + sizeof exponent, e);
    if (e < 10)
        out += '0';
    out.append(exponent, res.ptr);
    return out;
}

} // namespace

std::string singleText(float value, char decimal)
{
    return generalText(value, 7, decimal);
}

std::string doubleText(double value, char decimal)
{
    return generalText(value, 15, decimal);
}

std::string singleText(float value)
{
    return singleText(value, numberLocale().decimal);
}

std::string doubleText(double value)
{
    return doubleText(value, numberLocale().decimal);
}

} // namespace corvalog
