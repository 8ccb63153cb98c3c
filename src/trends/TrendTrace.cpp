#include "TrendTrace.h"

#include <cmath>

namespace corvalog {

namespace {

// Must match the editor's widest limits, which mean "no limit".
constexpr double kNoLimit = 9999999.0;

double columnWidthMs(std::size_t columns, double fromMs, double toMs)
{
    return (toMs - fromMs) / static_cast<double>(columns);
}

// Appends the parts of a run on the far side of a level: above it (sign 1) or below it (-1).
void appendBeyond(const Polyline &run, double level, double sign, std::vector<Polyline> &parts)
{
    const auto beyond = [&](const QPointF &p) { return sign * (p.y() - level) > 0; };
    Polyline part;
    for (qsizetype i = 0; i < run.size(); ++i) {
        const QPointF &p = run[i];
        if (i > 0 && beyond(run[i - 1]) != beyond(p)) {
            const QPointF &a = run[i - 1];
            part.append(a + (p - a) * ((level - a.y()) / (p.y() - a.y())));
            if (!beyond(p)) {
                parts.push_back(part);
                part.clear();
            }
        }
        if (beyond(p))
            part.append(p);
    }
    if (!part.isEmpty())
        parts.push_back(part);
}

} // namespace

std::optional<double> limitOf(float limit)
{
    if (!(std::fabs(limit) < kNoLimit))
        return std::nullopt;
    return limit;
}

std::vector<Polyline> traceLines(
    const std::vector<PixelColumn> &columns, double fromMs, double toMs, double joinMs)
{
    std::vector<Polyline> runs;
    if (columns.empty() || !(toMs > fromMs))
        return runs;
    const double width = columnWidthMs(columns.size(), fromMs, toMs);
    Polyline run;
    const auto close = [&] {
        if (run.size() == 1) {
            const QPointF p = run.front();
            const double half = width / 2000.0;
            run = { { p.x() - half, p.y() }, { p.x() + half, p.y() } };
        }
        if (!run.isEmpty())
            runs.push_back(run);
        run.clear();
    };
    std::size_t last = 0;
    for (std::size_t p = 0; p < columns.size(); ++p) {
        const PixelColumn &c = columns[p];
        if (c.empty) {
            if (c.error)
                close();
            continue;
        }
        if (!run.isEmpty() && static_cast<double>(p - last - 1) * width > joinMs)
            close();
        const double x = (c.timeMs + width / 2.0) / 1000.0;
        if (c.min == c.max) {
            run.append({ x, c.min });
        } else if (!run.isEmpty() && run.back().y() > (c.min + c.max) / 2.0) {
            // Coming from above: down the stroke, so the line does not cross itself.
            run.append({ x, c.max });
            run.append({ x, c.min });
        } else {
            run.append({ x, c.min });
            run.append({ x, c.max });
        }
        last = p;
    }
    close();
    return runs;
}

std::vector<Polyline> partsBeyond(
    const std::vector<Polyline> &runs, std::optional<double> under, std::optional<double> over)
{
    std::vector<Polyline> parts;
    for (const Polyline &run : runs) {
        if (over)
            appendBeyond(run, *over, 1.0, parts);
        if (under)
            appendBeyond(run, *under, -1.0, parts);
    }
    return parts;
}

std::vector<std::pair<double, double>> errorSpans(
    const std::vector<PixelColumn> &columns, double fromMs, double toMs, double joinMs)
{
    std::vector<std::pair<double, double>> spans;
    if (columns.empty() || !(toMs > fromMs))
        return spans;
    const double width = columnWidthMs(columns.size(), fromMs, toMs);
    bool open = false;
    for (const PixelColumn &c : columns) {
        if (!c.error) {
            open = open && c.empty;
            continue;
        }
        const double end = (c.timeMs + width) / 1000.0;
        if (open && c.timeMs / 1000.0 - spans.back().second <= joinMs / 1000.0)
            spans.back().second = end;
        else
            spans.emplace_back(c.timeMs / 1000.0, end);
        open = true;
    }
    return spans;
}

void extendToNeighbours(std::vector<Polyline> &runs, const ChannelHistory &history, double fromMs,
    double toMs, double joinMs)
{
    const auto pointOf = [&](std::size_t i) -> std::optional<QPointF> {
        const HistorySample s = history.at(i);
        if (s.error())
            return std::nullopt;
        return QPointF(s.timeMs / 1000.0, (static_cast<double>(s.min) + s.max) / 2.0);
    };
    const std::size_t first = history.lowerBound(fromMs);
    const std::size_t after = history.lowerBound(toMs);
    const std::optional<QPointF> before = first > 0 ? pointOf(first - 1) : std::nullopt;
    const std::optional<QPointF> next = after < history.size() ? pointOf(after) : std::nullopt;
    const double joinS = joinMs / 1000.0;
    if (runs.empty()) {
        // Nothing inside: the neighbours' line still crosses the view when they are close.
        if (before && next && first == after && next->x() - before->x() <= joinS)
            runs.push_back({ *before, *next });
        return;
    }
    if (before && !runs.front().isEmpty() && runs.front().front().x() - before->x() <= joinS
        && first < history.size() && !history.at(first).error())
        runs.front().prepend(*before);
    if (next && !runs.back().isEmpty() && next->x() - runs.back().back().x() <= joinS && after > 0
        && !history.at(after - 1).error())
        runs.back().append(*next);
}

std::optional<HistorySample> nearestSample(
    const ChannelHistory &history, double timeMs, double withinMs)
{
    const std::size_t i = history.lowerBound(timeMs);
    std::optional<HistorySample> best;
    const auto consider = [&](std::size_t k) {
        const HistorySample s = history.at(k);
        if (std::fabs(s.timeMs - timeMs) <= withinMs
            && (!best || std::fabs(s.timeMs - timeMs) < std::fabs(best->timeMs - timeMs)))
            best = s;
    };
    if (i < history.size())
        consider(i);
    if (i > 0)
        consider(i - 1);
    return best;
}

} // namespace corvalog
