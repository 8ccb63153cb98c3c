#pragma once

#include "values/TrendHistory.h"

#include <QList>
#include <QPointF>
#include <optional>
#include <utility>
#include <vector>

namespace corvalog {

// A connected run of a channel's trace: x in seconds since the history began, y the value.
using Polyline = QList<QPointF>;

// The longest silence the trace still draws across. The display refresh evaluates every channel
// a few times a second, so columns without samples mostly mean the columns are narrower than
// that; a longer silence means nothing was evaluated (an activation, a prompt) and shows as a gap.
inline constexpr double kJoinMs = 1500.0;

// A limit as the workspace stores it: the widest values the editor offers mean "none".
std::optional<double> limitOf(float limit);

// A channel's trace through its pixel columns over [fromMs, toMs): each column with values is a
// vertical stroke from its minimum to its maximum (one point when they agree), strokes joined
// across empty columns spanning at most `joinMs`. A column only in error always breaks the trace.
// A run of a single point is widened to its column's width, so it still shows as a short dash.
std::vector<Polyline> traceLines(
    const std::vector<PixelColumn> &columns, double fromMs, double toMs, double joinMs = kJoinMs);

// Joins the runs to the samples just outside [fromMs, toMs) (within `joinMs` of the nearest
// run, and not in error), so that a line crossing an edge of the view reaches it instead of
// stopping at the last sample inside; with no run inside, the two neighbours joined make one.
void extendToNeighbours(std::vector<Polyline> &runs, const ChannelHistory &history, double fromMs,
    double toMs, double joinMs = kJoinMs);

// The parts of the runs above `over` and below `under` (either may be unset), each cut where it
// crosses the level.
std::vector<Polyline> partsBeyond(
    const std::vector<Polyline> &runs, std::optional<double> under, std::optional<double> over);

// The spans, in seconds, of the columns that saw an error, joined as the trace is: across
// columns without samples spanning at most `joinMs`, never across a column with values only.
std::vector<std::pair<double, double>> errorSpans(
    const std::vector<PixelColumn> &columns, double fromMs, double toMs, double joinMs = kJoinMs);

// The sample nearest a time, when one lies within `withinMs` of it.
std::optional<HistorySample> nearestSample(
    const ChannelHistory &history, double timeMs, double withinMs = kJoinMs);

} // namespace corvalog
