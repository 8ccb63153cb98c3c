#pragma once

#include <charconv>
#include <string_view>
#include <type_traits>

namespace corvalog {

// The whole text as a number of type T: false for an empty text, anything left over, or a
// value out of T's range. Integers are read in `base`; floating-point numbers as plain decimal
// text with ".".
template <typename T> bool readNumber(std::string_view text, T &out, int base = 10)
{
    const char *end = text.data() + text.size();
    std::from_chars_result res {};
    if constexpr (std::is_floating_point_v<T>)
        res = std::from_chars(text.data(), end, out);
    else
        res = std::from_chars(text.data(), end, out, base);
    return !text.empty() && res.ec == std::errc() && res.ptr == end;
}

} // namespace corvalog
