#pragma once

#include "ChannelValues.h"
#include "workspace/WorkspaceClass.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace corvalog {

// One sample of a channel's history: when (ms since the history began), and the smallest and
// largest value evaluated in it; both are NaN while the channel was in error.
struct HistorySample {
    double timeMs = 0;
    float min = 0;
    float max = 0;

    bool error() const { return min != min; }
};

struct PixelColumn;

// A channel's values over time in a ring of fixed capacity (its storage grows as samples come,
// up to the capacity; then the oldest go). Evaluations closer together than kBucketMs share a
// sample that keeps their minimum and maximum, so a fast log costs bounded memory.
class ChannelHistory
{
public:
    static constexpr double kBucketMs = 10.0;
    // Samples summarised together, so a wide view folds blocks rather than samples.
    static constexpr std::size_t kBlock = 64;

    explicit ChannelHistory(std::size_t capacity);

    void add(double timeMs, float value, bool error);
    void clear();
    std::size_t size() const { return m_size; }
    std::size_t capacity() const { return m_capacity; }
    // Oldest first.
    HistorySample at(std::size_t i) const;
    // The first sample at or after the time (size() when none is).
    std::size_t lowerBound(double timeMs) const;

private:
    friend std::vector<PixelColumn> decimate(
        const ChannelHistory &history, double fromMs, double toMs, int pixels);

    struct Stored {
        std::uint32_t tenthsOfMs; // since the history began: 119 hours fit
        float min;
        float max;
    };
    // The extremes of kBlock stored places in a row (NaN when any was in error).
    struct Block {
        float min;
        float max;
    };
    void store(std::size_t place, const Stored &s);
    void widen(std::size_t place, float min, float max);

    const Stored &stored(std::size_t i) const { return m_ring[(m_first + i) % m_capacity]; }
    Stored &stored(std::size_t i) { return m_ring[(m_first + i) % m_capacity]; }

    std::size_t m_capacity;
    std::vector<Stored> m_ring;
    std::vector<Block> m_blocks;
    std::size_t m_first = 0;
    std::size_t m_size = 0;
};

// Every channel's history since a workspace was activated: the refresh and log ticks record
// what they evaluated.
class TrendHistory
{
public:
    // An hour of 10 ms samples for each channel.
    static constexpr std::size_t kCapacity = 360000;

    explicit TrendHistory(std::size_t capacity = kCapacity);

    // A new history for the workspace's channels, beginning at `date` (a script date).
    void reset(int channels, double date);
    // The values just evaluated, at `date`.
    void record(double date, const ChannelValues &values);
    // One value of channel n (1-based) at a time since the history began (a log read back).
    void add(int n, double timeMs, float value, bool error)
    {
        m_channels.at(static_cast<std::size_t>(n - 1)).add(timeMs, value, error);
    }

    int channels() const { return static_cast<int>(m_channels.size()); }
    // Channel n, 1-based.
    const ChannelHistory &channel(int n) const
    {
        return m_channels.at(static_cast<std::size_t>(n - 1));
    }
    double beganAt() const { return m_began; }
    // Milliseconds since the history began at a script date.
    double msSinceBegan(double date) const { return (date - m_began) * 86400000.0; }
    // Counts activations, so a window can tell that a new history began.
    std::uint64_t generation() const { return m_generation; }

private:
    std::size_t m_capacity;
    std::vector<ChannelHistory> m_channels;
    double m_began = 0;
    std::uint64_t m_generation = 0;
};

// One pixel column of a chart: the samples whose times fall in it folded into their minimum and
// maximum; `error` when any of them was in error, `empty` when none fell in it.
struct PixelColumn {
    double timeMs = 0; // the column's start
    float min = 0;
    float max = 0;
    bool error = false;
    bool empty = true;
};

// The samples in [fromMs, toMs) folded into `pixels` columns of equal width, so drawing costs
// the same however many samples there are.
std::vector<PixelColumn> decimate(
    const ChannelHistory &history, double fromMs, double toMs, int pixels);

} // namespace corvalog
