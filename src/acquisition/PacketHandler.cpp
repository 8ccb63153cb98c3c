#include "PacketHandler.h"

#include "PacketDecoder.h"
#include "runtime/Convert.h"
#include "runtime/VbError.h"
#include "values/ScriptClass.h"

namespace corvalog {

namespace {

// Length of the driver's raw binary record; only its first four bytes (a Long) are read.
constexpr std::size_t kRawRecordLength = 117;

} // namespace

void PacketHandler::DP_PacketArrived(std::int32_t /*baseStation*/, std::int32_t datatag,
    std::string_view value, std::int16_t /*status*/, std::int16_t rssi, std::int16_t cv,
    std::int16_t battLow, std::int16_t error)
{
    try {
        store(datatag, value, rssi, cv, battLow, error);
        ++m_applied;
    } catch (const VbError &e) {
        ++m_dropped;
        m_lastErrorNumber = e.number();
        m_lastErrorDescription = e.description();
    }
}

void PacketHandler::DP_PacketArrived(const PacketNotification &packet)
{
    DP_PacketArrived(packet.BaseStation, packet.Datatag, packet.Value, packet.Status, packet.RSSI,
        packet.CV, packet.BattLow, packet.Error);
}

void PacketHandler::store(std::int32_t datatag, std::string_view value, std::int16_t rssi,
    std::int16_t cv, std::int16_t battLow, std::int16_t error)
{
    // The value is converted before the table checks the tag, as an argument is before a call:
    // a bad text with a bad tag reports Type mismatch.
    float measured;
    if (value.size() == kRawRecordLength) {
        const char typed[5] = { 3, value[0], value[1], value[2], value[3] };
        measured = CSng(DecodeDPP(std::string_view(typed, sizeof typed)));
    } else {
        measured = parseSingleText(value, m_locale);
    }
    m_tables.setT(datatag, measured);
    m_tables.setTL(datatag, linkQuality(rssi, cv));
    m_tables.setTB(datatag, battLow);
    m_tables.setTE(datatag, error);
}

} // namespace corvalog
