#include "DataProvider.h"

#include <QThread>

namespace corvalog {

DataProvider::DataProvider(QObject *parent)
    : QObject(parent)
{
}

DataProvider::~DataProvider() = default;

void DataProvider::deliver(PacketBatch packets)
{
    if (packets.empty())
        return;
    if (QThread::currentThread() == thread() && m_waiting.load() == 0) {
        emit packetsArrived(packets);
        return;
    }
    // The inbox is the event queue itself; an atomic count keeps it bounded without a lock.
    const std::size_t count = packets.size();
    if (m_waiting.fetch_add(count) + count > kInboxCapacity) {
        m_waiting.fetch_sub(count);
        m_dropped.fetch_add(count);
        return;
    }
    QMetaObject::invokeMethod(
        this,
        [this, batch = std::move(packets)] {
            m_waiting.fetch_sub(batch.size());
            emit packetsArrived(batch);
        },
        Qt::QueuedConnection);
}

std::vector<std::string> DataProvider::malformedMessages() const
{
    std::lock_guard<std::mutex> lock(m_messagesMutex);
    return m_messages;
}

void DataProvider::reportMalformed(std::string reason)
{
    m_malformed.fetch_add(1, std::memory_order_relaxed);
    std::lock_guard<std::mutex> lock(m_messagesMutex);
    if (m_messages.size() < kKeptMessages)
        m_messages.push_back(std::move(reason));
}

} // namespace corvalog
