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
    const bool guiThread = QThread::currentThread() == thread();
    bool direct = false;
    {
        std::lock_guard<std::mutex> lock(m_inboxMutex);
        direct = guiThread && m_inbox.empty() && !m_emptyingQueued;
        if (!direct) {
            const std::size_t count = packets.size();
            m_dropped += count - m_inbox.push(std::move(packets));
            if (m_emptyingQueued || m_inbox.empty())
                return; // the inbox is already on its way, or took nothing
            m_emptyingQueued = true;
        }
    }
    if (direct)
        emit packetsArrived(packets);
    else
        QMetaObject::invokeMethod(this, &DataProvider::emptyInbox, Qt::QueuedConnection);
}

void DataProvider::emptyInbox()
{
    PacketBatch batch;
    {
        std::lock_guard<std::mutex> lock(m_inboxMutex);
        m_inbox.takeAll(batch);
        m_emptyingQueued = false;
    }
    if (!batch.empty())
        emit packetsArrived(batch);
}

std::uint64_t DataProvider::droppedInInbox() const
{
    std::lock_guard<std::mutex> lock(m_inboxMutex);
    return m_dropped;
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

void DataProvider::notice(const std::string &text, bool problem)
{
    const QString message = QString::fromStdString(text);
    QMetaObject::invokeMethod(
        this, [this, message, problem] { emit noticed(message, problem); }, Qt::QueuedConnection);
}

} // namespace corvalog
