#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace corvalog {

// The eight arguments of one packet-arrived notification, as the driver passes them.
struct PacketNotification {
    std::int32_t BaseStation = 0;
    std::int32_t Datatag = 0;
    std::string Value; // one byte per character
    std::int16_t Status = 0;
    std::int16_t RSSI = 0;
    std::int16_t CV = 0;
    std::int16_t BattLow = 0;
    std::int16_t Error = 0;
};

// Packets in the order they arrived.
using PacketBatch = std::vector<PacketNotification>;

} // namespace corvalog
