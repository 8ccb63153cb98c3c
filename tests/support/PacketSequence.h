#pragma once

#include "acquisition/DataProvider.h"

#include <cstdint>
#include <string>

namespace corvalog {

// Numbered packets for loss and order checks: packet n comes from base station 1 with Data Tag
// 1 + n mod 4096 and the value n.
class PacketSequence
{
public:
    static constexpr std::int32_t kTagSpan = 4096;

    // Packet n as a provider hands it over.
    static PacketNotification packet(std::uint64_t n);
    // Packet n as a recording line without time_ms, ended by "\n".
    static std::string line(std::uint64_t n);

    // Follows a batch of arrivals; a packet that is not the next number expected is a break.
    void check(const PacketBatch &batch);

    std::uint64_t received() const { return m_received; }
    // Places where the sequence skipped, went back or held something else.
    std::uint64_t breaks() const { return m_breaks; }

private:
    std::uint64_t m_next = 0;
    std::uint64_t m_received = 0;
    std::uint64_t m_breaks = 0;
};

} // namespace corvalog
