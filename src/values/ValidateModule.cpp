#include "ValidateModule.h"

#include "runtime/Convert.h"
#include "runtime/VbError.h"

#include <algorithm>
#include <cmath>

namespace corvalog {

namespace {

bool isSeparator(char c, bool commaDecimal)
{
    return c == '.' || (commaDecimal && c == ',');
}

// The text as it stands once the replaced characters are gone; out-of-range positions (a stale
// selection) are pinned to the text rather than trusted.
std::string withoutReplaced(std::string_view text, int &start, int length)
{
    const int size = static_cast<int>(text.size());
    start = std::clamp(start, 0, size);
    length = std::clamp(length, 0, size - start);
    std::string rest(text.substr(0, static_cast<std::size_t>(start)));
    rest.append(text.substr(static_cast<std::size_t>(start + length)));
    return rest;
}

bool allowedIn(std::string_view rest, int at, char key, bool commaDecimal, std::string_view extra)
{
    if (key >= '0' && key <= '9')
        return true;
    if (extra.find(key) != std::string_view::npos)
        return true;
    if (isSeparator(key, commaDecimal)) {
        return std::none_of(
            rest.begin(), rest.end(), [&](char c) { return isSeparator(c, commaDecimal); });
    }
    if (key == '-')
        return at == 0 && rest.find('-') == std::string_view::npos;
    return false;
}

} // namespace

bool NumericKeyAllowed(std::string_view text, int start, int length, char key, bool commaDecimal,
    std::string_view extra)
{
    const std::string rest = withoutReplaced(text, start, length);
    return allowedIn(rest, start, key, commaDecimal, extra);
}

std::string NumericPasteFilter(std::string_view text, int start, int length,
    std::string_view pasted, bool commaDecimal, std::string_view extra)
{
    std::string rest = withoutReplaced(text, start, length);
    std::string kept;
    for (const char c : pasted) {
        const int at = start + static_cast<int>(kept.size());
        if (allowedIn(rest, at, c, commaDecimal, extra)) {
            rest.insert(static_cast<std::size_t>(at), 1, c);
            kept.push_back(c);
        }
    }
    return kept;
}

std::optional<double> numberBoxValue(std::string_view text, bool commaDecimal)
{
    std::string plain(text);
    if (commaDecimal)
        std::replace(plain.begin(), plain.end(), ',', '.');
    NumberLocale boxLocale;
    boxLocale.thousands.clear();
    double value = 0;
    if (!tryParseNumericText(plain, boxLocale, value) || !std::isfinite(value))
        return std::nullopt;
    return value;
}

namespace {

template <typename Narrow>
auto narrowedBox(std::string_view text, bool commaDecimal, Narrow narrow)
    -> std::optional<decltype(narrow(0.0))>
{
    const std::optional<double> value = numberBoxValue(text, commaDecimal);
    if (!value)
        return std::nullopt;
    try {
        return narrow(*value);
    } catch (const VbError &) {
        return std::nullopt;
    }
}

} // namespace

std::optional<float> numberBoxSingle(std::string_view text, bool commaDecimal)
{
    return narrowedBox(text, commaDecimal, [](double v) { return toSingle(v); });
}

std::optional<std::int16_t> numberBoxInteger(std::string_view text, bool commaDecimal)
{
    return narrowedBox(text, commaDecimal, [](double v) { return toInteger(v); });
}

std::optional<std::int32_t> numberBoxLong(std::string_view text, bool commaDecimal)
{
    return narrowedBox(text, commaDecimal, [](double v) { return toLong(v); });
}

} // namespace corvalog
