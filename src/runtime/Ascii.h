#pragma once

#include <string_view>

namespace corvalog {

// Letter case folding for names, keywords and "True"/"False": ASCII only, so it never depends
// on the C locale.
inline char asciiLower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

inline char asciiUpper(char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

inline bool equalsIgnoringCase(std::string_view a, std::string_view b)
{
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (asciiLower(a[i]) != asciiLower(b[i]))
            return false;
    }
    return true;
}

// The value of a hexadecimal digit in either case, or 99 for anything else.
inline int hexDigitValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    const char l = asciiLower(c);
    if (l >= 'a' && l <= 'f')
        return l - 'a' + 10;
    return 99;
}

} // namespace corvalog
