#pragma once

#include "PacketNotification.h"
#include "runtime/NumberLocale.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace corvalog {

class ScriptClass;

// Stores each arriving packet in the tag tables of a ScriptClass: T (stamping the arrival),
// TL, TB and TE, in that order. A notification that fails part-way (value text not a number,
// a link-quality overflow, a Data Tag out of range) keeps the writes already made and is
// dropped; nothing escapes, the handler counts it and keeps the error for the UI to report.
class PacketHandler
{
public:
    // `locale`: the decimal separator that value texts are written with.
    explicit PacketHandler(ScriptClass &tables, const NumberLocale &locale)
        : m_tables(tables)
        , m_locale(locale)
    {
    }

    // Handles one notification. A value of exactly 117 bytes is a raw record whose first four
    // bytes are a big-endian Long; any other value is decimal text in the handler's locale.
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
    const NumberLocale m_locale;
    std::uint64_t m_applied = 0;
    std::uint64_t m_dropped = 0;
    int m_lastErrorNumber = 0;
    std::string m_lastErrorDescription;
};

} // namespace corvalog
