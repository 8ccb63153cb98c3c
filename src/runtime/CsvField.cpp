#include "CsvField.h"

#include <algorithm>

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

bool splitCsvFields(
    std::string_view line, std::vector<std::string> &fields, std::string &error, char separator)
{
    fields.clear();
    std::size_t i = 0;
    for (;;) {
        std::string field;
        if (i < line.size() && line[i] == '"') {
            ++i;
            for (;;) {
                if (i >= line.size()) {
                    error = "a quote is not closed";
                    return false;
                }
                if (line[i] == '"') {
                    if (i + 1 < line.size() && line[i + 1] == '"') {
                        field += '"';
                        i += 2;
                        continue;
                    }
                    ++i;
                    break;
                }
                field += line[i++];
            }
            if (i < line.size() && line[i] != separator) {
                error = "text follows a closing quote";
                return false;
            }
        } else {
            const std::size_t comma = std::min(line.find(separator, i), line.size());
            field.assign(line.substr(i, comma - i));
            if (field.find('"') != std::string::npos) {
                error = "a quote inside a field that does not start with one";
                return false;
            }
            i = comma;
        }
        fields.push_back(std::move(field));
        if (i >= line.size())
            return true;
        ++i; // the separator
    }
}

} // namespace corvalog
