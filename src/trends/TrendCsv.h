#pragma once

#include "values/TrendHistory.h"

#include <string>
#include <vector>

namespace corvalog {

// The shown span as CSV text: a header "Time ms" and each channel's caption, then one row per
// pixel column of [fromMs, toMs): the column's start and, for each channel, the mean of the
// samples that fell in it. One number per channel keeps the file as easy to plot as a log; a
// column without samples has an empty field, one with only errors the word "error". Numbers
// are written with a decimal point whatever the locale.
std::string trendCsv(const TrendHistory &history, const std::vector<std::string> &captions,
    double fromMs, double toMs, int pixels);

} // namespace corvalog
