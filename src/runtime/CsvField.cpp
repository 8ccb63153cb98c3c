#include "CsvField.h"

namespace corvalog {

void appendCsvField(std::string &out, std::string_view field, char separator)
{
    bool plain = true;
    for (const char c : field) {
        if (c == separator || c == '"' || c == '\r' || c == '\n') {
            plain = false;
            break;
        }
    }
    if (plain) {
        out += field;
        return;
    }
    out += '"';
    for (const char c : field) {
        out += c;
        if (c == '"')
            out += '"';
    }
    out += '"';
}

} // namespace corvalog
