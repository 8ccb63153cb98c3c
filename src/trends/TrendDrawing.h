#pragma once

#include "values/TrendHistory.h"

#include <QString>
#include <optional>
#include <string>
#include <vector>

namespace corvalog {

class TrendChart;

// How a channel is named and judged in a chart: its caption, its set limits, and the format its
// values are read in.
struct ChannelLook {
    QString caption;
    std::optional<double> under;
    std::optional<double> over;
    std::string format;
};

// Draws the shown channels of a history over [fromMs, toMs) folded into `pixels` columns: the
// y range fitted to what is shown, then each channel's trace, its parts past its limits and its
// error spans. The chart must have a channel for each of the history's.
void drawSpan(TrendChart &chart, const TrendHistory &history, const std::vector<ChannelLook> &looks,
    double fromMs, double toMs, int pixels);

// What a cursor at a time reads: the seconds since the history began (and the time of day when
// the clock at its beginning is known, in ms since midnight), then each shown channel's nearest
// sample in its format ("no data" when none is near, "error" when it was in error).
QString readingsAt(const TrendChart &chart, const TrendHistory &history,
    const std::vector<ChannelLook> &looks, double timeMs, std::optional<double> clockAtStartMs);

} // namespace corvalog
