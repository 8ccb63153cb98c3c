#include "CliArgs.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace corvalog::cli {

namespace {

// "--tag", "--value-hex": the shape of an option, as opposed to a value such as "--1".
bool looksLikeOption(const std::string &w)
{
    return w.size() > 2 && w[0] == '-' && w[1] == '-'
        && std::isalpha(static_cast<unsigned char>(w[2]));
}

} // namespace

CliArgs::CliArgs(std::vector<std::string> words)
{
    const auto separator = std::find(words.begin(), words.end(), "--");
    if (separator != words.end())
        m_values.assign(separator + 1, words.end());
    m_words.assign(words.begin(), separator);
}

std::vector<std::string> CliArgs::takeAll(std::string_view option)
{
    std::vector<std::string> values;
    const std::string prefix = std::string(option) + "=";
    for (std::size_t i = 0; i < m_words.size();) {
        if (m_words[i] == option) {
            if (i + 1 >= m_words.size())
                throw UsageError(std::string(option) + " needs a value");
            values.push_back(m_words[i + 1]);
            m_words.erase(
                m_words.begin() + static_cast<long>(i), m_words.begin() + static_cast<long>(i) + 2);
        } else if (m_words[i].rfind(prefix, 0) == 0) {
            values.push_back(m_words[i].substr(prefix.size()));
            m_words.erase(m_words.begin() + static_cast<long>(i));
        } else {
            ++i;
        }
    }
    return values;
}

std::optional<std::string> CliArgs::take(std::string_view option)
{
    std::vector<std::string> values = takeAll(option);
    if (values.size() > 1)
        throw UsageError(std::string(option) + " may be given only once");
    if (values.empty())
        return std::nullopt;
    return values.front();
}

bool CliArgs::takeFlag(std::string_view option)
{
    bool found = false;
    for (std::size_t i = 0; i < m_words.size();) {
        if (m_words[i] == option) {
            found = true;
            m_words.erase(m_words.begin() + static_cast<long>(i));
        } else {
            ++i;
        }
    }
    return found;
}

std::vector<std::string> CliArgs::positionalAll()
{
    std::vector<std::string> values;
    for (const std::string &w : m_words) {
        if (looksLikeOption(w))
            throw UsageError("unknown option " + w);
        values.push_back(w);
    }
    values.insert(values.end(), m_values.begin(), m_values.end());
    return values;
}

std::vector<std::string> CliArgs::positional(std::size_t count)
{
    const std::vector<std::string> values = positionalAll();
    if (values.size() != count)
        throw UsageError(
            values.size() < count ? "missing argument" : "unexpected argument " + values[count]);
    return values;
}

std::int32_t parseDataTag(std::string_view text, std::size_t maxDigits)
{
    std::uint32_t v = 0;
    auto res = std::from_chars(text.data(), text.data() + text.size(), v, 16);
    if (text.empty() || text.size() > maxDigits || res.ec != std::errc()
        || res.ptr != text.data() + text.size() || text[0] == '-' || text[0] == '+')
        throw UsageError("a Data Tag is one to " + std::to_string(maxDigits)
            + " hexadecimal digits, not '" + std::string(text) + "'");
    return static_cast<std::int32_t>(v);
}

std::int64_t parseWhole(
    std::string_view text, std::int64_t min, std::int64_t max, std::string_view what)
{
    std::int64_t v = 0;
    auto res = std::from_chars(text.data(), text.data() + text.size(), v);
    if (text.empty() || res.ec != std::errc() || res.ptr != text.data() + text.size() || v < min
        || v > max)
        throw UsageError(std::string(what) + " must be a whole number from " + std::to_string(min)
            + " to " + std::to_string(max) + ", not '" + std::string(text) + "'");
    return v;
}

std::string parseHexBytes(std::string_view text)
{
    std::string digits;
    for (char c : text) {
        if (c == ' ')
            continue;
        if (!std::isxdigit(static_cast<unsigned char>(c)))
            throw UsageError("hexadecimal bytes expected, found '" + std::string(1, c) + "'");
        digits += c;
    }
    if (digits.size() % 2 != 0)
        throw UsageError("hexadecimal bytes come in pairs of digits");
    std::string bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2)
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    return bytes;
}

} // namespace corvalog::cli
