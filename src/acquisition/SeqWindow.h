#pragma once

#include <cstdint>
#include <vector>

namespace corvalog {

// Which sequence numbers of one sender were seen, for dropping repeats: a message the broker
// delivers again (QoS 1 may) carries a number already seen. The last kWidth numbers below the
// highest are remembered, so messages that come out of order are still taken once each. A
// number far below that window means the sender started counting again (it lost its state): it
// is taken, and the window starts over from it.
class SeqWindow
{
public:
    static constexpr std::uint64_t kWidth = 1 << 16;

    SeqWindow();
    // True the first time a number is seen.
    bool accept(std::uint64_t seq);

private:
    bool test(std::uint64_t seq) const;
    void set(std::uint64_t seq);
    void clear(std::uint64_t seq);

    std::vector<std::uint64_t> m_bits;
    std::uint64_t m_highest = 0;
    bool m_any = false;
};

} // namespace corvalog
