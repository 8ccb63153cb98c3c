#include "PacketSequence.h"

#include <charconv>

namespace corvalog {

PacketNotification PacketSequence::packet(std::uint64_t n)
{
    PacketNotification p;
    p.BaseStation = 1;
    p.Datatag = static_cast<std::int32_t>(1 + n % kTagSpan);
    p.Value = std::to_string(n);
    p.RSSI = -60;
    p.CV = 100;
    return p;
}

std::string PacketSequence::line(std::uint64_t n)
{
    static const char digits[] = "0123456789ABCDEF";
    const unsigned tag = static_cast<unsigned>(1 + n % kTagSpan);
    std::string text = "1,";
    for (int shift = 12; shift >= 0; shift -= 4)
        text += digits[(tag >> shift) & 15];
    text += ',' + std::to_string(n) + ",0,-60,100,0,0\n";
    return text;
}

void PacketSequence::check(const PacketBatch &batch)
{
    for (const PacketNotification &p : batch) {
        std::uint64_t n = 0;
        const char *end = p.Value.data() + p.Value.size();
        const auto parsed = std::from_chars(p.Value.data(), end, n);
        const bool numbered = parsed.ec == std::errc() && parsed.ptr == end;
        if (!numbered || n != m_next || p.Datatag != static_cast<std::int32_t>(1 + n % kTagSpan))
            ++m_breaks;
        m_next = n + 1;
        ++m_received;
    }
}

} // namespace corvalog
