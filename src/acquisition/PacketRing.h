#pragma once

#include "PacketNotification.h"

#include <cstddef>

namespace corvalog {

// A first-in first-out queue of packets that never holds more than its capacity: what does not
// fit is refused, and the caller counts it. Storage grows with use up to the capacity and is
// then reused, so a queue that never fills never costs its whole size. Not thread-safe.
class PacketRing
{
public:
    explicit PacketRing(std::size_t capacity);

    std::size_t capacity() const { return m_capacity; }
    std::size_t size() const { return m_count; }
    bool empty() const { return m_count == 0; }

    // Appends the first packets of the batch that fit, in order; how many did.
    std::size_t push(PacketBatch &&packets);
    // Moves every packet, oldest first, to the end of `out`; the ring is empty afterwards.
    void takeAll(PacketBatch &out);

private:
    void grow(std::size_t needed);

    std::size_t m_capacity;
    std::vector<PacketNotification> m_slots;
    std::size_t m_head = 0; // the oldest packet
    std::size_t m_count = 0;
};

} // namespace corvalog
