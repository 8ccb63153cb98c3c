#pragma once

#include "values/ChannelValues.h"
#include "workspace/WorkspaceClass.h"

#include <string>
#include <vector>

namespace corvalog {

// True when the locale writes decimal commas (0 formatted "0.0" has a comma as its second
// character): a log then separates its fields with ";".
bool logUsesSemicolons();

// The header line of a log: "Date,Time,Elapsed mS," and each channel's caption with a comma,
// the final comma dropped; with semicolons (a comma-decimal locale) every comma becomes ";".
// Ends with CR LF.
std::string logHeader(const std::vector<std::string> &captions, bool semicolons);

// One row: the date "DD/MM/YYYY", the time "HH:MM:SS", the elapsed milliseconds as a plain
// number, then each channel's output value in its own format, separated by "," (";" with
// semicolons, when numbers carry decimal commas). The separator after the elapsed time is
// always written, also with no channels. Ends with CR LF.
std::string logRow(double date, double elapsedMs, const WorkspaceClass &workspace,
    const ChannelValues &values, bool semicolons);

} // namespace corvalog
