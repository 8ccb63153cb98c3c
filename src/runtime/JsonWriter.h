#pragma once

#include <ostream>
#include <string>
#include <string_view>

namespace corvalog {

// Writes JSON with the keys in the order given (scripts and people read the output), two-space
// indented. Text that is not valid UTF-8 is written with U+FFFD for each bad byte.
class JsonWriter
{
public:
    explicit JsonWriter(std::ostream &out);

    void beginObject(std::string_view key = {});
    void endObject();
    void beginArray(std::string_view key);
    void endArray();
    void text(std::string_view key, std::string_view value);
    // A number already written as JSON number text ("12", "-9999999", "1E+20").
    void number(std::string_view key, std::string_view jsonNumber);

    static std::string quoted(std::string_view text);

private:
    void open(std::string_view key, char bracket);
    void close(char bracket);
    void member(std::string_view key);

    std::ostream &m_out;
    int m_depth = 0;
    bool m_first = true;
};

} // namespace corvalog
