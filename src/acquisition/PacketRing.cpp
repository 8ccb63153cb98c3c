#include "PacketRing.h"

#include <algorithm>

namespace corvalog {

namespace {

// Storage starts this size and doubles, so short queues stay small.
constexpr std::size_t kFirstSlots = 1024;

} // namespace

PacketRing::PacketRing(std::size_t capacity)
    : m_capacity(capacity)
{
}

void PacketRing::grow(std::size_t needed)
{
    std::size_t slots = std::max(kFirstSlots, m_slots.size() * 2);
    while (slots < needed)
        slots *= 2;
    std::vector<PacketNotification> larger(std::min(slots, m_capacity));
    for (std::size_t i = 0; i < m_count; ++i)
        larger[i] = std::move(m_slots[(m_head + i) % m_slots.size()]);
    m_slots = std::move(larger);
    m_head = 0;
}

std::size_t PacketRing::push(PacketBatch &&packets)
{
    const std::size_t taken = std::min(packets.size(), m_capacity - m_count);
    if (m_count + taken > m_slots.size())
        grow(m_count + taken);
    for (std::size_t i = 0; i < taken; ++i)
        m_slots[(m_head + m_count + i) % m_slots.size()] = std::move(packets[i]);
    m_count += taken;
    return taken;
}

void PacketRing::takeAll(PacketBatch &out)
{
    out.reserve(out.size() + m_count);
    for (std::size_t i = 0; i < m_count; ++i)
        out.push_back(std::move(m_slots[(m_head + i) % m_slots.size()]));
    // The next packet goes where this one would have: the ring turns on, not back to its start.
    if (!m_slots.empty())
        m_head = (m_head + m_count) % m_slots.size();
    m_count = 0;
}

} // namespace corvalog
