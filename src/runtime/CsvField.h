#pragma once

#include <string>
#include <string_view>

namespace corvalog {

// Appends one field of a CSV line as RFC 4180 asks: as it is, or between double quotes (each
// quote in it doubled) when it holds the separator, a quote or a line break, so every reader
// splits the line into the same fields.
void appendCsvField(std::string &out, std::string_view field, char separator);

} // namespace corvalog
