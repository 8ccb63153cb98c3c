#pragma once

#include "Variant.h"

#include <string>
#include <string_view>

namespace corvalog {

// The script's Format function for numbers, dates and text, with the process locale's decimal
// and thousands separators. Number patterns: digit placeholders "0" and "#", decimal point,
// thousands separator, "%", "E+"/"E-"/"e+"/"e-", literal characters, "\" escapes and quoted
// literals, up to four ";" sections (positive; negative; zero; Null); the named formats
// General Number, Fixed, Standard, Percent, Scientific, Yes/No, True/False, On/Off; an empty
// pattern gives the general number form. Date patterns use d, m, y, h, n, s and the "/" and
// ":" separators ("DD/MM/YYYY", "HH:MM:SS"); "m" after "h" means minutes. Text that is not a
// number is returned as it stands (or through "@"/"&" placeholders). Never raises: a value a
// pattern cannot use (text that is not a number, a number outside the date range, an
// infinity) comes back as its CStr text, and Null with no Null section gives "".
std::string Format(const Variant &value, std::string_view pattern);

} // namespace corvalog
