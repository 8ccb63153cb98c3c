#pragma once

#include "runtime/Variant.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace corvalog {

class ScriptClass;

// The text DecodeDPP returns when the payload length does not fit types 1 to 4.
inline constexpr std::string_view kIncorrectDataLength
    = "Incorrect data length to decode data type!";

// Decodes a typed value text: type = first byte AND 15, then a big-endian payload. 1 Integer
// (1 byte), 2 Double (2 bytes, unsigned), 3 Long (4 bytes), 4 Single (4 bytes, bits as they
// are), 5 the payload as text, 6 the payload in hex (CVStr2HEX); other types and an empty input
// give an empty String. Never raises: a wrong length gives kIncorrectDataLength as a String.
Variant DecodeDPP(std::string_view typedValueText);

// Each byte as two upper-case hex digits and one blank: bytes 0A FF give "0A FF ".
std::string CVStr2HEX(std::string_view bytes);

// Link quality 0..100 from a radio's signal strength and correlation value. Raises Overflow (6)
// when one of the 16-bit sums (RSSI + 94, CV - 55, their total) does not fit.
std::int16_t linkQuality(std::int16_t rssi, std::int16_t cv);

// A link-quality level clamped to 0..100 and rounded half to even (2.5 -> 2, 3.5 -> 4).
std::int16_t linkQualityPercent(float level);

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

// Stores each arriving packet in the tag tables of a ScriptClass: T (stamping the arrival),
// TL, TB and TE, in that order. A notification that fails part-way (value text not a number,
// a link-quality overflow, a Data Tag out of range) keeps the writes already made and is
// dropped; nothing escapes, the handler counts it and keeps the error for the UI to report.
class PacketHandler
{
public:
    explicit PacketHandler(ScriptClass &tables)
        : m_tables(tables)
    {
    }

    // Handles one notification. A value of exactly 117 bytes is a raw record whose first four
    // bytes are a big-endian Long; any other value is decimal text in the process locale.
    void DP_PacketArrived(std::int32_t baseStation, std::int32_t datatag, std::string_view value,
        std::int16_t status, std::int16_t rssi, std::int16_t cv, std::int16_t battLow,
        std::int16_t error);
    // The same for a notification held in a struct.
    void DP_PacketArrived(const PacketNotification &packet);

    // Notifications stored completely.
    std::uint64_t appliedCount() const { return m_applied; }
    // Notifications dropped part-way by an error.
    std::uint64_t droppedCount() const { return m_dropped; }
    // Number and description of the last drop's error (0 and empty while none happened).
    int lastErrorNumber() const { return m_lastErrorNumber; }
    const std::string &lastErrorDescription() const { return m_lastErrorDescription; }

private:
    void store(std::int32_t datatag, std::string_view value, std::int16_t rssi, std::int16_t cv,
        std::int16_t battLow, std::int16_t error);

    ScriptClass &m_tables;
    std::uint64_t m_applied = 0;
    std::uint64_t m_dropped = 0;
    int m_lastErrorNumber = 0;
    std::string m_lastErrorDescription;
};

} // namespace corvalog
