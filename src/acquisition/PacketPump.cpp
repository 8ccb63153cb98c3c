#include "PacketPump.h"

namespace corvalog {

PacketPump::PacketPump(PacketHandler &handler, QObject *parent)
    : QObject(parent)
    , m_handler(handler)
{
}

void PacketPump::attach(DataProvider *provider)
{
    if (m_connection)
        disconnect(m_connection);
    m_provider = provider;
    if (provider)
        m_connection = connect(provider, &DataProvider::packetsArrived, this, &PacketPump::apply);
}

void PacketPump::hold()
{
    m_held = true;
}

void PacketPump::release()
{
    m_held = false;
    PacketBatch waiting;
    m_waiting.takeAll(waiting);
    for (const PacketNotification &p : waiting)
        m_handler.DP_PacketArrived(p);
}

void PacketPump::apply(const PacketBatch &packets)
{
    m_received += packets.size();
    if (m_held) {
        m_dropped += packets.size() - m_waiting.push(PacketBatch(packets));
        return;
    }
    for (const PacketNotification &p : packets)
        m_handler.DP_PacketArrived(p);
}

} // namespace corvalog
