#include "SeqWindow.h"

#include <algorithm>

namespace corvalog {

SeqWindow::SeqWindow()
    : m_bits(kWidth / 64, 0)
{
}

bool SeqWindow::test(std::uint64_t seq) const
{
    const std::uint64_t i = seq % kWidth;
    return (m_bits[i / 64] >> (i % 64)) & 1u;
}

void SeqWindow::set(std::uint64_t seq)
{
    const std::uint64_t i = seq % kWidth;
    m_bits[i / 64] |= std::uint64_t { 1 } << (i % 64);
}

void SeqWindow::clear(std::uint64_t seq)
{
    const std::uint64_t i = seq % kWidth;
    m_bits[i / 64] &= ~(std::uint64_t { 1 } << (i % 64));
}

bool SeqWindow::accept(std::uint64_t seq)
{
    if (m_any && seq > m_highest) {
        // The numbers that leave the window take the places of those that enter it.
        if (seq - m_highest >= kWidth) {
            std::fill(m_bits.begin(), m_bits.end(), 0);
        } else {
            for (std::uint64_t s = m_highest + 1; s <= seq; ++s)
                clear(s);
        }
        m_highest = seq;
        set(seq);
        return true;
    }
    if (m_any && m_highest - seq < kWidth) {
        if (test(seq))
            return false;
        set(seq);
        return true;
    }
    // The first number, or one so far below the window that the sender started again.
    std::fill(m_bits.begin(), m_bits.end(), 0);
    m_any = true;
    m_highest = seq;
    set(seq);
    return true;
}

} // namespace corvalog
