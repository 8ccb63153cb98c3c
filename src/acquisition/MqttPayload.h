#pragma once

#include "PacketNotification.h"
#include "runtime/NumberLocale.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace corvalog {

// One message of a relay: its station, its sequence number (from 1, one per message, so a
// reader can drop a message the broker delivered twice) and its packets, each with the time the
// relay received it (ms since 1970-01-01 UTC).
struct RelayMessage {
    std::string station;
    std::uint64_t seq = 0;
    std::vector<std::int64_t> times;
    PacketBatch packets;
};

// The message as UTF-8 JSON: {"station":"bench1","seq":1234,"packets":[{"t":"2026-11-23T20:00:
// 00.123Z","bs":1,"tag":"FF12","value":"12.5","status":0,"rssi":-60,"cv":100,"batt":0,"err":0},
// ...]}, values as a recording writes them ("hex:" for bytes, "." as the decimal separator).
std::string encodeRelayMessage(const RelayMessage &message, const NumberLocale &locale);

// Reads a message. A payload that is not such a message is refused whole (false, the reason in
// `error`); a packet that does not read is left out and its reason added to `badPackets`
// ("packet 3: ..."), so one bad packet costs no good one.
bool decodeRelayMessage(std::string_view payload, RelayMessage &out, std::string &error,
    std::vector<std::string> &badPackets, const NumberLocale &locale);

// UTC milliseconds since 1970 as "2026-11-23T20:00:00.123Z", and back (nothing for other text).
std::string utcText(std::int64_t ms);
bool readUtcText(std::string_view text, std::int64_t &ms);

} // namespace corvalog
