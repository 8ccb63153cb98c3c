#pragma once

#include "values/ChannelValues.h"
#include "workspace/WorkspaceClass.h"

#include <string>
#include <vector>

namespace corvalog {

// The header line of a log: "Date,Time,Elapsed mS," and each channel's caption with a comma,
// the final comma dropped; with semicolons (a comma-decimal locale) the separator is ";". A
// caption holding the separator, a quote or a line break is quoted, so it stays one column.
// Ends with CR LF.
std::string logHeader(const std::vector<std::string> &captions, bool semicolons);

// One row: the date "DD/MM/YYYY", the time "HH:MM:SS" (with the locale's date and time
// separators), the elapsed milliseconds as a plain number, then each channel's output value in
// its own format, separated by "," (";" with semicolons, when numbers carry decimal commas).
// The separator after the elapsed time is always written, also with no channels. A field
// holding the separator, a quote or a line break is quoted. Ends with CR LF.
// "DD/MM/YYYY" and "HH:MM:SS" with the separator after each, as a row starts: what Format
// writes for those patterns, without reading them for every row.
void appendDateAndTime(std::string &row, double date, char separator);

std::string logRow(double date, double elapsedMs, const WorkspaceClass &workspace,
    const ChannelValues &values, bool semicolons);

} // namespace corvalog
