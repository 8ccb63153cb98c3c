#pragma once

#include "NumberLocale.h"
#include "Variant.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace corvalog {

// Rounds to the nearest whole number, ties to even (2.5 -> 2, 3.5 -> 4, -2.5 -> -2).
double roundHalfEven(double value);

// The digits of a "&H" (radix 16) or "&O" (radix 8) whole number, read from the start of
// `digits` as far as they go; `used` says how many were read. Up to 16 bits they are an
// Integer's pattern (FFFF is -1), up to 32 bits a Long's; beyond that, Overflow (6).
double radixWholeNumber(std::string_view digits, int radix, std::size_t &used);

// Plain decimal text as from_chars reads it ("-12.5e-3"): a number too small for the type is
// 0, one too large raises Overflow (6).
double plainDecimalToDouble(const std::string &plain);
float plainDecimalToSingle(const std::string &plain);

// Whole-number conversions of a double: round half to even, then raise Overflow (6) when the
// result does not fit (NaN does not fit anything).
std::int16_t toInteger(double value);
std::int32_t toLong(double value);
std::uint8_t toByte(double value);
// Raises Overflow when a finite value is beyond the Single range; NaN and infinities pass.
float toSingle(double value);

// The locale's numeric text conversion: blanks around, a leading or trailing sign or
// parentheses, thousands separators in the whole part, the locale's decimal separator, an
// exponent, or "&H"/"&O" whole numbers. Anything else raises Type mismatch (13); a number
// beyond the Double range raises Overflow (6).
double parseNumericText(std::string_view text, const NumberLocale &locale);
double parseNumericText(std::string_view text);
// The same straight to Single precision (one rounding, not two), as packets need.
float parseSingleText(std::string_view text, const NumberLocale &locale);
// True (and `out` set) when the text converts; never raises.
bool tryParseNumericText(std::string_view text, const NumberLocale &locale, double &out);

// The script conversions. Empty converts to 0 / False / "", Null raises Invalid use of Null
// (94), text goes through parseNumericText (CBool also takes "True" and "False").
double CDbl(const Variant &v);
float CSng(const Variant &v);
std::int32_t CLng(const Variant &v);
std::int16_t CInt(const Variant &v);
std::uint8_t CByte(const Variant &v);
bool CBool(const Variant &v);
std::string CStr(const Variant &v);

} // namespace corvalog
