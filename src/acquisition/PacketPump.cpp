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
    while (!m_waiting.empty() && !m_held) {
        const PacketBatch batch = std::move(m_waiting.front());
        m_waiting.pop_front();
        for (const PacketNotification &p : batch)
            m_handler.DP_PacketArrived(p);
    }
}

void PacketPump::apply(const PacketBatch &packets)
{
    m_received += packets.size();
    if (m_held || !m_waiting.empty()) {
        m_waiting.push_back(packets);
        return;
    }
    for (const PacketNotification &p : packets)
        m_handler.DP_PacketArrived(p);
}

} // namespace corvalog
