#pragma once

#include <string_view>

namespace corvalog {

// The script's Val: the longest leading number of the text, with blanks, tabs and line feeds
// ignored wherever they stand, "." as the only decimal separator, an optional exponent, and
// "&H"/"&O" whole numbers; text that starts with no number gives 0. Locale-independent.
// Raises Overflow (6) for a number beyond the Double range.
double Val(std::string_view text);

} // namespace corvalog
