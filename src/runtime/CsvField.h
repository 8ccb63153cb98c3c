#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace corvalog {

// Appends one field of a CSV line as RFC 4180 asks: as it is, or between double quotes (each
// quote in it doubled) when it holds the separator, a quote or a line break, so every reader
// splits the line into the same fields.
void appendCsvField(std::string &out, std::string_view field, char separator);

// Splits a line by the same rules: a field starting with a quote runs to its closing quote (""
// inside is one quote). False, with the reason in `error`, for a quote that is not closed, text
// after a closing quote or a quote inside an unquoted field.
bool splitCsvFields(std::string_view line, std::vector<std::string> &fields, std::string &error,
    char separator = ',');

} // namespace corvalog
