#pragma once

#include "FormatPattern.h"

namespace corvalog::formatting {

// The date a value stands for; false when it is not one (text that is not a number, or a
// number outside the script's date range).
bool dateOf(const Variant &value, double &date);

// A date through a date section: its fields, names, separators (the locale's "/" and ":") and
// named formats.
void appendDate(std::string &out, const CompiledFormat &fmt, const Section &sec, double date);

} // namespace corvalog::formatting
