#include "TrendDrawing.h"

#include "TrendChart.h"
#include "TrendTrace.h"
#include "runtime/Format.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace corvalog {

namespace {

constexpr double kMsPerDay = 86400000.0;

// A time of day in ms since midnight as hh:mm:ss.
QString timeOfDay(double ms)
{
    auto seconds = static_cast<long long>(std::llround(ms / 1000.0)) % 86400;
    if (seconds < 0)
        seconds += 86400;
    return QString::asprintf(
        "%02lld:%02lld:%02lld", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

const ChannelLook &lookOf(const std::vector<ChannelLook> &looks, int n)
{
    static const ChannelLook plain;
    return n >= 1 && n <= static_cast<int>(looks.size()) ? looks[static_cast<std::size_t>(n - 1)]
                                                         : plain;
}

} // namespace

void drawSpan(TrendChart &chart, const TrendHistory &history, const std::vector<ChannelLook> &looks,
    double fromMs, double toMs, int pixels)
{
    const int count = std::min(chart.channels(), history.channels());
    std::vector<std::vector<PixelColumn>> columns(static_cast<std::size_t>(count));
    double low = std::numeric_limits<double>::infinity();
    double high = -low;
    for (int n = 1; n <= count; ++n) {
        auto &channel = columns[static_cast<std::size_t>(n - 1)];
        if (!chart.channelVisible(n))
            continue;
        channel = decimate(history.channel(n), fromMs, toMs, pixels);
        for (const PixelColumn &c : channel) {
            if (!c.empty && std::isfinite(c.min) && std::isfinite(c.max)) {
                low = std::min<double>(low, c.min);
                high = std::max<double>(high, c.max);
            }
        }
    }
    if (!(low <= high)) {
        low = 0;
        high = 1;
    }
    double margin = (high - low) * 0.05;
    if (!(margin > 0))
        margin = std::max(std::fabs(high) * 0.05, 0.5);
    chart.setRange(fromMs / 1000.0, toMs / 1000.0, low - margin, high + margin);

    for (int n = 1; n <= count; ++n) {
        const auto &channel = columns[static_cast<std::size_t>(n - 1)];
        const ChannelLook &look = lookOf(looks, n);
        ChannelTrace trace;
        trace.runs = traceLines(channel, fromMs, toMs);
        if (chart.channelVisible(n))
            extendToNeighbours(trace.runs, history.channel(n), fromMs, toMs);
        trace.under = look.under;
        trace.over = look.over;
        trace.beyond = partsBeyond(trace.runs, trace.under, trace.over);
        trace.errors = errorSpans(channel, fromMs, toMs);
        chart.setTrace(n, std::move(trace));
    }
}

QString readingsAt(const TrendChart &chart, const TrendHistory &history,
    const std::vector<ChannelLook> &looks, double timeMs, std::optional<double> clockAtStartMs)
{
    QString text = QStringLiteral("%1 s").arg(timeMs / 1000.0, 0, 'f', 1);
    if (clockAtStartMs)
        text += QStringLiteral(" (%1)").arg(
            timeOfDay(std::fmod(*clockAtStartMs + timeMs, kMsPerDay)));
    for (int n = 1; n <= std::min(chart.channels(), history.channels()); ++n) {
        if (!chart.channelVisible(n))
            continue;
        const ChannelLook &look = lookOf(looks, n);
        QString value = QStringLiteral("no data");
        if (const auto sample = nearestSample(history.channel(n), timeMs)) {
            const auto formatted = [&](float v) {
                return QString::fromStdString(Format(Variant::single(v), look.format));
            };
            if (sample->error())
                value = QStringLiteral("error");
            else if (sample->min == sample->max)
                value = formatted(sample->min);
            else
                value = formatted(sample->min) + QStringLiteral(" to ") + formatted(sample->max);
        }
        text += QStringLiteral("   %1: %2").arg(look.caption, value);
    }
    return text;
}

} // namespace corvalog
