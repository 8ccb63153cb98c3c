#pragma once

#include "DataProvider.h"
#include "PacketHandler.h"

#include <QObject>
#include <QPointer>
#include <cstdint>

namespace corvalog {

// Applies the packets of the attached provider to the tables, one by one in arrival order, on
// the GUI thread. While held (a provider is being replaced), arriving packets wait, as many as
// the provider's inbox holds, and are applied, still in order, when released; the rest are
// dropped and counted.
class PacketPump : public QObject
{
    Q_OBJECT

public:
    explicit PacketPump(PacketHandler &handler, QObject *parent = nullptr);

    // Listens to this provider from now on (and to no other); nullptr listens to none.
    void attach(DataProvider *provider);
    void hold();
    void release();
    bool isHeld() const { return m_held; }

    // Notifications received from providers (applied, dropped by the handler, dropped or
    // waiting here).
    std::uint64_t received() const { return m_received; }
    // Packets dropped because too many were waiting while held.
    std::uint64_t droppedWaiting() const { return m_dropped; }

    // Applies one batch now (or queues it while held).
    void apply(const PacketBatch &packets);

private:
    PacketHandler &m_handler;
    QPointer<DataProvider> m_provider;
    QMetaObject::Connection m_connection;
    bool m_held = false;
    PacketRing m_waiting { DataProvider::kInboxCapacity };
    std::uint64_t m_received = 0;
    std::uint64_t m_dropped = 0;
};

} // namespace corvalog
