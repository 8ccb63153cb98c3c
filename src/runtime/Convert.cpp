#include "Convert.h"

#include "Ascii.h"
#include "DateTime.h"
#include "NumberText.h"
#include "VbError.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <limits>

namespace corvalog {

double roundHalfEven(double value)
{
    return std::nearbyint(value); // the default rounding mode is to nearest, ties to even
}

std::int16_t toInteger(double value)
{
    const double r = roundHalfEven(value);
    if (!(r >= -32768.0 && r <= 32767.0))
        throw VbError(vberr::Overflow);
    return static_cast<std::int16_t>(r);
}

std::int32_t toLong(double value)
{
    const double r = roundHalfEven(value);
    if (!(r >= -2147483648.0 && r <= 2147483647.0))
        throw VbError(vberr::Overflow);
    return static_cast<std::int32_t>(r);
}

std::uint8_t toByte(double value)
{
    const double r = roundHalfEven(value);
    if (!(r >= 0.0 && r <= 255.0))
        throw VbError(vberr::Overflow);
    return static_cast<std::uint8_t>(r);
}

float toSingle(double value)
{
    const float f = static_cast<float>(value);
    if (std::isinf(f) && std::isfinite(value))
        throw VbError(vberr::Overflow);
    return f;
}

namespace {

// from_chars reports underflow the same way as overflow; the magnitude tells them apart.
template <typename T> T plainDecimal(const std::string &plain)
{
    T value {};
    auto res = std::from_chars(plain.data(), plain.data() + plain.size(), value);
    if (res.ec == std::errc::result_out_of_range) {
        const long double wide = std::strtold(plain.c_str(), nullptr);
        if (std::fabs(wide) > static_cast<long double>(std::numeric_limits<T>::max()))
            throw VbError(vberr::Overflow);
        return !plain.empty() && plain[0] == '-' ? -T(0) : T(0);
    }
    return value;
}

} // namespace

double plainDecimalToDouble(const std::string &plain)
{
    return plainDecimal<double>(plain);
}

float plainDecimalToSingle(const std::string &plain)
{
    return plainDecimal<float>(plain);
}

double radixWholeNumber(std::string_view digits, int radix, std::size_t &used)
{
    std::uint64_t v = 0;
    for (used = 0; used < digits.size() && hexDigitValue(digits[used]) < radix; ++used) {
        v = v * static_cast<unsigned>(radix) + static_cast<unsigned>(hexDigitValue(digits[used]));
        if (v > 0xFFFFFFFFull)
            throw VbError(vberr::Overflow);
    }
    if (v <= 0xFFFF)
        return static_cast<std::int16_t>(static_cast<std::uint16_t>(v));
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(v));
}

namespace {

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f';
}

bool parseRadixNumber(std::string_view s, double &out)
{
    if (s.size() < 3 || s[0] != '&')
        return false;
    const char kind = asciiLower(s[1]);
    const int radix = kind == 'h' ? 16 : kind == 'o' ? 8 : 0;
    if (radix == 0)
        return false;
    std::size_t used = 0;
    out = radixWholeNumber(s.substr(2), radix, used);
    return used == s.size() - 2;
}

// Rewrites locale number text into the plain form "-123.45e-6" that from_chars reads.
// Returns false when the text is not a number.
bool canonicalNumber(std::string_view text, const NumberLocale &locale, std::string &out,
    double &radixValue, bool &isRadix)
{
    std::size_t b = 0, e = text.size();
    while (b < e && isBlank(text[b]))
        ++b;
    while (e > b && isBlank(text[e - 1]))
        --e;
    std::string_view s = text.substr(b, e - b);
    bool negative = false;
    if (s.size() >= 2 && s.front() == '(' && s.back() == ')') {
        negative = true;
        s = s.substr(1, s.size() - 2);
    } else if (!s.empty() && (s.front() == '-' || s.front() == '+')) {
        negative = s.front() == '-';
        s.remove_prefix(1);
    } else if (!s.empty() && (s.back() == '-' || s.back() == '+')) {
        negative = s.back() == '-';
        s.remove_suffix(1);
    }
    isRadix = parseRadixNumber(s, radixValue);
    if (isRadix) {
        if (negative)
            radixValue = -radixValue;
        return true;
    }
    out.clear();
    if (negative)
        out += '-';
    std::size_t i = 0;
    int digits = 0;
    for (; i < s.size(); ++i) {
        const char c = s[i];
        if (c >= '0' && c <= '9') {
            out += c;
            ++digits;
        } else if (digits > 0 && !locale.thousands.empty()
            && s.compare(i, locale.thousands.size(), locale.thousands) == 0
            && locale.thousands[0] != locale.decimal) {
            i += locale.thousands.size() - 1;
            continue;
        } else {
            break;
        }
    }
    if (i < s.size() && s[i] == locale.decimal) {
        out += '.';
        for (++i; i < s.size() && s[i] >= '0' && s[i] <= '9'; ++i) {
            out += s[i];
            ++digits;
        }
    }
    if (digits == 0)
        return false;
    if (i < s.size() && (s[i] == 'e' || s[i] == 'E' || s[i] == 'd' || s[i] == 'D')) {
        out += 'e';
        ++i;
        if (i < s.size() && (s[i] == '+' || s[i] == '-'))
            out += s[i++];
        int expDigits = 0;
        for (; i < s.size() && s[i] >= '0' && s[i] <= '9'; ++i, ++expDigits)
            out += s[i];
        if (expDigits == 0)
            return false;
    }
    return i == s.size();
}

} // namespace

bool tryParseNumericText(std::string_view text, const NumberLocale &locale, double &out)
{
    try {
        out = parseNumericText(text, locale);
        return true;
    } catch (const VbError &) {
        return false;
    }
}

double parseNumericText(std::string_view text, const NumberLocale &locale)
{
    std::string canonical;
    double radixValue = 0;
    bool isRadix = false;
    if (!canonicalNumber(text, locale, canonical, radixValue, isRadix))
        throw VbError(vberr::TypeMismatch);
    return isRadix ? radixValue : plainDecimalToDouble(canonical);
}

double parseNumericText(std::string_view text)
{
    return parseNumericText(text, numberLocale());
}

float parseSingleText(std::string_view text, const NumberLocale &locale)
{
    // Fast path for what packets carry: optional minus, digits, one decimal separator.
    if (!text.empty() && text.size() < 40) {
        char buf[40];
        std::size_t n = 0;
        bool simple = true, seenDecimal = false;
        int digits = 0;
        for (std::size_t i = 0; i < text.size(); ++i) {
            const char c = text[i];
            if (c >= '0' && c <= '9') {
                buf[n++] = c;
                ++digits;
            } else if (c == locale.decimal && !seenDecimal) {
                buf[n++] = '.';
                seenDecimal = true;
            } else if (c == '-' && i == 0) {
                buf[n++] = c;
            } else {
                simple = false;
                break;
            }
        }
        if (simple && digits > 0) {
            float value = 0;
            auto res = std::from_chars(buf, buf + n, value);
            if (res.ec == std::errc() && res.ptr == buf + n)
                return value;
        }
    }
    std::string canonical;
    double radixValue = 0;
    bool isRadix = false;
    if (!canonicalNumber(text, locale, canonical, radixValue, isRadix))
        throw VbError(vberr::TypeMismatch);
    return isRadix ? static_cast<float>(radixValue) : plainDecimalToSingle(canonical);
}

double CDbl(const Variant &v)
{
    switch (v.type()) {
    case VarType::Empty:
        return 0.0;
    case VarType::Null:
        throw VbError(vberr::InvalidUseOfNull);
    case VarType::String:
        return parseNumericText(v.rawString());
    default:
        return v.numberValue();
    }
}

float CSng(const Variant &v)
{
    if (v.type() == VarType::Single)
        return v.rawSingle();
    if (v.type() == VarType::String)
        return parseSingleText(v.rawString(), numberLocale());
    return toSingle(CDbl(v));
}

std::int32_t CLng(const Variant &v)
{
    return toLong(CDbl(v));
}

std::int16_t CInt(const Variant &v)
{
    return toInteger(CDbl(v));
}

std::uint8_t CByte(const Variant &v)
{
    if (v.type() == VarType::Boolean)
        return v.rawBoolean() ? 255 : 0; // True is all bits set
    return toByte(CDbl(v));
}

bool CBool(const Variant &v)
{
    switch (v.type()) {
    case VarType::Empty:
        return false;
    case VarType::Null:
        throw VbError(vberr::InvalidUseOfNull);
    case VarType::Boolean:
        return v.rawBoolean();
    case VarType::String: {
        std::string_view s = v.rawString();
        while (!s.empty() && isBlank(s.front()))
            s.remove_prefix(1);
        while (!s.empty() && isBlank(s.back()))
            s.remove_suffix(1);
        if (equalsIgnoringCase(s, "true") || equalsIgnoringCase(s, "#true#"))
            return true;
        if (equalsIgnoringCase(s, "false") || equalsIgnoringCase(s, "#false#"))
            return false;
        return parseNumericText(s) != 0.0;
    }
    default:
        return v.numberValue() != 0.0;
    }
}

std::string CStr(const Variant &v)
{
    switch (v.type()) {
    case VarType::Empty:
        return {};
    case VarType::Null:
        throw VbError(vberr::InvalidUseOfNull);
    case VarType::Boolean:
        return v.rawBoolean() ? "True" : "False";
    case VarType::Byte:
        return std::to_string(v.rawByte());
    case VarType::Integer:
        return std::to_string(v.rawInteger());
    case VarType::Long:
        return std::to_string(v.rawLong());
    case VarType::Single:
        return singleText(v.rawSingle());
    case VarType::Double:
        return doubleText(v.rawDouble());
    case VarType::Date:
        return dateText(v.rawDouble(), numberLocale().dateSeparator, numberLocale().timeSeparator);
    case VarType::String:
        return v.rawString();
    }
    return {};
}

} // namespace corvalog
