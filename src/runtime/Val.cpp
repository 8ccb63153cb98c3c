#include "Val.h"

#include "Ascii.h"
#include "Convert.h"
#include "VbError.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string>

namespace corvalog {

namespace {

bool isIgnored(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

} // namespace

double Val(std::string_view text)
{
    std::string s;
    s.reserve(text.size());
    for (char c : text) {
        if (!isIgnored(c))
            s += c;
    }
    if (s.size() >= 2 && s[0] == '&') {
        const char kind = asciiLower(s[1]);
        std::size_t used = 0;
        if (kind == 'h' || kind == 'o')
            return radixWholeNumber(std::string_view(s).substr(2), kind == 'h' ? 16 : 8, used);
        return 0.0;
    }
    std::size_t i = 0;
    std::string number;
    if (i < s.size() && (s[i] == '-' || s[i] == '+')) {
        if (s[i] == '-')
            number += '-';
        ++i;
    }
    int digits = 0;
    for (; i < s.size() && std::isdigit(static_cast<unsigned char>(s[i])); ++i, ++digits)
        number += s[i];
    if (i < s.size() && s[i] == '.') {
        number += '.';
        for (++i; i < s.size() && std::isdigit(static_cast<unsigned char>(s[i])); ++i, ++digits)
            number += s[i];
    }
    if (digits == 0)
        return 0.0;
    if (i < s.size() && (s[i] == 'e' || s[i] == 'E' || s[i] == 'd' || s[i] == 'D')) {
        std::string exponent = "e";
        std::size_t j = i + 1;
        if (j < s.size() && (s[j] == '-' || s[j] == '+'))
            exponent += s[j++];
        const std::size_t expStart = j;
        for (; j < s.size() && std::isdigit(static_cast<unsigned char>(s[j])); ++j)
            exponent += s[j];
        if (j > expStart)
            number += exponent;
    }
    return plainDecimalToDouble(number);
}

} // namespace corvalog
