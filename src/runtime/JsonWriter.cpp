#include "JsonWriter.h"

#include <cstdio>

namespace corvalog {

JsonWriter::JsonWriter(std::ostream &out)
    : m_out(out)
{
}

namespace {

// Length of the valid UTF-8 sequence starting at s[i], or 0.
std::size_t utf8Sequence(std::string_view s, std::size_t i)
{
    const auto b = static_cast<unsigned char>(s[i]);
    std::size_t n = b < 0x80 ? 1
        : (b >> 5) == 0x6    ? 2
        : (b >> 4) == 0xE    ? 3
        : (b >> 3) == 0x1E   ? 4
                             : 0;
    if (n == 0 || i + n > s.size())
        return 0;
    for (std::size_t k = 1; k < n; ++k) {
        if ((static_cast<unsigned char>(s[i + k]) & 0xC0) != 0x80)
            return 0;
    }
    return n;
}

} // namespace

std::string JsonWriter::quoted(std::string_view text)
{
    std::string out = "\"";
    for (std::size_t i = 0; i < text.size();) {
        const char c = text[i];
        const std::size_t n = utf8Sequence(text, i);
        if (n == 0) {
            out += "\\ufffd";
            ++i;
            continue;
        }
        if (n > 1) {
            out.append(text.substr(i, n));
        } else if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (c == '\n') {
            out += "\\n";
        } else if (c == '\r') {
            out += "\\r";
        } else if (c == '\t') {
            out += "\\t";
        } else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
            char buf[8];
            std::snprintf(
                buf, sizeof buf, "\\u%04x", static_cast<unsigned>(static_cast<unsigned char>(c)));
            out += buf;
        } else {
            out += c;
        }
        i += n;
    }
    return out + "\"";
}

void JsonWriter::member(std::string_view key)
{
    if (m_depth > 0) {
        m_out << (m_first ? "\n" : ",\n")
              << std::string(static_cast<std::size_t>(m_depth) * 2, ' ');
        if (!key.empty())
            m_out << quoted(key) << ": ";
    }
    m_first = false;
}

void JsonWriter::open(std::string_view key, char bracket)
{
    member(key);
    m_out << bracket;
    ++m_depth;
    m_first = true;
}

void JsonWriter::close(char bracket)
{
    --m_depth;
    if (!m_first)
        m_out << "\n" << std::string(static_cast<std::size_t>(m_depth) * 2, ' ');
    m_out << bracket;
    m_first = false;
    if (m_depth == 0)
        m_out << "\n";
}

void JsonWriter::beginObject(std::string_view key)
{
    open(key, '{');
}

void JsonWriter::endObject()
{
    close('}');
}

void JsonWriter::beginArray(std::string_view key)
{
    open(key, '[');
}

void JsonWriter::endArray()
{
    close(']');
}

void JsonWriter::text(std::string_view key, std::string_view value)
{
    member(key);
    m_out << quoted(value);
}

void JsonWriter::number(std::string_view key, std::string_view jsonNumber)
{
    member(key);
    m_out << jsonNumber;
}

} // namespace corvalog
