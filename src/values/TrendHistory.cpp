#include "TrendHistory.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace corvalog {

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

std::uint32_t tenths(double timeMs)
{
    const double t = std::round(std::max(timeMs, 0.0) * 10.0);
    return static_cast<std::uint32_t>(
        std::min(t, static_cast<double>(std::numeric_limits<std::uint32_t>::max())));
}

} // namespace

ChannelHistory::ChannelHistory(std::size_t capacity)
    // Whole blocks: a block never wraps around the end of the ring.
    : m_capacity((std::max<std::size_t>(capacity, 1) + kBlock - 1) / kBlock * kBlock)
{
}

void ChannelHistory::store(std::size_t place, const Stored &s)
{
    if (place == m_ring.size())
        m_ring.push_back(s);
    else
        m_ring[place] = s;
    const std::size_t b = place / kBlock;
    if (b == m_blocks.size())
        m_blocks.push_back({ s.min, s.max });
    else if (place % kBlock == 0)
        m_blocks[b] = { s.min, s.max };
    else
        widen(place, s.min, s.max);
}

void ChannelHistory::widen(std::size_t place, float min, float max)
{
    Block &block = m_blocks[place / kBlock];
    if (min != min || block.min != block.min) {
        block.min = block.max = kNaN;
        return;
    }
    block.min = std::min(block.min, min);
    block.max = std::max(block.max, max);
}

void ChannelHistory::add(double timeMs, float value, bool error)
{
    const std::uint32_t t = tenths(timeMs);
    const float v = error ? kNaN : value;
    if (m_size > 0) {
        Stored &last = stored(m_size - 1);
        // Within the newest bucket: keep its extremes (an error anywhere in it marks it).
        if (t < last.tenthsOfMs + static_cast<std::uint32_t>(kBucketMs * 10.0)
            && t >= last.tenthsOfMs) {
            if (error || last.min != last.min) {
                last.min = last.max = kNaN;
            } else {
                last.min = std::min(last.min, v);
                last.max = std::max(last.max, v);
            }
            widen((m_first + m_size - 1) % m_capacity, last.min, last.max);
            return;
        }
    }
    if (m_size < m_capacity) {
        store((m_first + m_size) % m_capacity, { t, v, v });
        ++m_size;
        return;
    }
    // Full: the newest takes the oldest's place.
    store(m_first, { t, v, v });
    m_first = (m_first + 1) % m_capacity;
}

void ChannelHistory::clear()
{
    m_ring.clear();
    m_ring.shrink_to_fit();
    m_blocks.clear();
    m_blocks.shrink_to_fit();
    m_first = 0;
    m_size = 0;
}

HistorySample ChannelHistory::at(std::size_t i) const
{
    const Stored &s = stored(i);
    return { s.tenthsOfMs / 10.0, s.min, s.max };
}

std::size_t ChannelHistory::lowerBound(double timeMs) const
{
    const std::uint32_t t = tenths(timeMs);
    std::size_t lo = 0;
    std::size_t hi = m_size;
    while (lo < hi) {
        const std::size_t mid = lo + (hi - lo) / 2;
        if (stored(mid).tenthsOfMs < t)
            lo = mid + 1;
        else
            hi = mid;
    }
    return lo;
}

TrendHistory::TrendHistory(std::size_t capacity)
    : m_capacity(capacity)
{
}

void TrendHistory::reset(int channels, double date)
{
    m_channels.assign(static_cast<std::size_t>(std::max(channels, 0)), ChannelHistory(m_capacity));
    m_began = date;
    ++m_generation;
}

void TrendHistory::record(double date, const ChannelValues &values)
{
    const double t = msSinceBegan(date);
    for (int n = 1; n <= std::min(channels(), ChannelValues::kEntries - 1); ++n)
        m_channels[static_cast<std::size_t>(n - 1)].add(t, values.output(n), values.error(n) != 0);
}

std::vector<PixelColumn> decimate(
    const ChannelHistory &history, double fromMs, double toMs, int pixels)
{
    std::vector<PixelColumn> columns;
    if (pixels <= 0 || !(toMs > fromMs))
        return columns;
    columns.resize(static_cast<std::size_t>(pixels));
    const double width = (toMs - fromMs) / pixels;
    for (int p = 0; p < pixels; ++p)
        columns[static_cast<std::size_t>(p)].timeMs = fromMs + p * width;
    const auto fold = [](PixelColumn &c, float min, float max) {
        if (min != min) {
            c.error = true;
        } else if (c.empty) {
            c.min = min;
            c.max = max;
            c.empty = false;
        } else {
            c.min = std::min(c.min, min);
            c.max = std::max(c.max, max);
        }
    };
    const std::size_t block = ChannelHistory::kBlock;
    const std::size_t size = history.size();
    std::size_t p = 0; // the column being filled
    double columnEnd = fromMs + width;
    for (std::size_t i = history.lowerBound(fromMs); i < size;) {
        const std::size_t place = (history.m_first + i) % history.m_capacity;
        const ChannelHistory::Stored &s = history.m_ring[place];
        const double t = s.tenthsOfMs / 10.0;
        if (t >= toMs)
            break;
        while (t >= columnEnd && p + 1 < columns.size()) {
            ++p;
            columnEnd = fromMs + (p + 1) * width;
        }
        // A whole block inside this column is folded at once.
        if (place % block == 0 && i + block <= size
            && history.m_ring[place + block - 1].tenthsOfMs / 10.0 < std::min(columnEnd, toMs)) {
            const ChannelHistory::Block &b = history.m_blocks[place / block];
            fold(columns[p], b.min, b.max);
            i += block;
            continue;
        }
        fold(columns[p], s.min, s.max);
        ++i;
    }
    return columns;
}

} // namespace corvalog
