#include "MqttRelay.h"

#include "acquisition/MqttPayload.h"
#include "runtime/VbError.h"

#include <QCryptographicHash>
#include <QDir>
#include <QStandardPaths>
#include <chrono>

namespace corvalog {

namespace {

constexpr int kRelayFailure = -2147467259;

std::int64_t utcNowMs()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

} // namespace

std::string MqttRelay::defaultSpoolFolder(const MqttAddress &address)
{
    const QString base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    const QByteArray key
        = QCryptographicHash::hash(QByteArray::fromStdString(address.host + ":"
                                       + std::to_string(address.port) + "/" + address.prefix),
            QCryptographicHash::Sha1)
              .toHex()
              .left(8);
    return QDir(base)
        .filePath(QStringLiteral("corvalog/spool/%1-%2")
                      .arg(QString::fromStdString(address.station), QString::fromLatin1(key)))
        .toStdString();
}

MqttRelay::MqttRelay(Options options)
    : m_options(std::move(options))
    , m_topic(m_options.address.packetsTopic())
{
    std::string error;
    m_spool = Spool::open(m_options.spoolFolder, m_options.spoolLimitBytes, error);
    if (!m_spool)
        throw VbError(kRelayFailure, error);
    MqttClient::Events events;
    events.connected = [this](bool again) { reconnected(again); };
    events.lost = [this](const std::string &why) {
        if (m_options.notice)
            m_options.notice("Lost the broker " + m_options.address.shown() + ": " + why
                    + ". Packets are spooled until it is back.",
                true);
    };
    events.acknowledged = [this](int mid) { acknowledged(mid); };
    MqttClient::Options client = MqttClient::Options::forBroker(
        m_options.address, m_options.caFile, m_options.credentialsFile);
    // The spool, not the broker's session, keeps what is not yet acknowledged.
    client.cleanSession = true;
    m_client = std::make_unique<MqttClient>(std::move(client), std::move(events));
}

MqttRelay::~MqttRelay()
{
    m_client->stop();
}

void MqttRelay::start()
{
    m_client->start();
}

void MqttRelay::add(const PacketBatch &packets)
{
    const std::int64_t now = utcNowMs();
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_gathered.insert(m_gathered.end(), packets.begin(), packets.end());
    m_times.insert(m_times.end(), packets.size(), now);
}

void MqttRelay::flush()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    if (m_gathered.empty())
        return;
    RelayMessage message;
    message.station = m_options.address.station;
    message.packets.swap(m_gathered);
    message.times.swap(m_times);
    std::string error;
    const std::optional<std::uint64_t> seq = m_spool->nextSeq(error);
    if (!seq) {
        // Without a number written down, a restart could reuse it: nothing is sent.
        m_gathered.swap(message.packets);
        m_times.swap(message.times);
        lock.unlock();
        if (m_options.notice && !m_spoolFailTold)
            m_options.notice(error, true);
        m_spoolFailTold = true;
        return;
    }
    message.seq = *seq;
    std::string payload = encodeRelayMessage(message, m_options.locale);
    const auto packets = static_cast<std::uint32_t>(message.packets.size());
    if (!m_spool->store(*seq, packets, payload, error)) {
        keepInMemory(*seq, packets, std::move(payload));
        if (m_options.notice && !m_spoolFailTold)
            m_options.notice("Cannot spool: " + error
                    + ". Messages are kept in memory until the broker has them.",
                true);
        m_spoolFailTold = true;
    } else {
        m_spoolFailTold = false;
    }
    sendLocked();
    lock.unlock();
    tellDrops();
}

void MqttRelay::keepInMemory(std::uint64_t seq, std::uint32_t packets, std::string payload)
{
    m_unspooledBytes += payload.size();
    m_unspooled[seq] = { packets, std::move(payload) };
    while (m_unspooledBytes > m_options.spoolLimitBytes && m_unspooled.size() > 1) {
        const auto oldest = m_unspooled.begin();
        m_unspooledBytes -= oldest->second.second.size();
        ++m_unspooledDroppedMessages;
        m_unspooledDroppedPackets += oldest->second.first;
        m_unspooled.erase(oldest);
    }
}

void MqttRelay::tellDrops()
{
    const Counts c = counts();
    if (c.droppedMessages == m_droppedTold || !m_options.notice)
        return;
    m_droppedTold = c.droppedMessages;
    m_options.notice("The spool is full (" + std::to_string(m_options.spoolLimitBytes)
            + " bytes): dropped the oldest, " + std::to_string(c.droppedPackets) + " packets in "
            + std::to_string(c.droppedMessages) + " messages so far.",
        true);
}

bool MqttRelay::sendOne(std::uint64_t seq, const std::string &payload)
{
    const std::optional<int> mid = m_client->publish(m_topic, payload);
    if (!mid)
        return false;
    m_inFlight[*mid] = seq;
    m_sent.insert(seq);
    return true;
}

void MqttRelay::sendLocked()
{
    if (!m_client->isConnected())
        return;
    // Oldest first: the spool and the messages held in memory, walked together by number.
    auto spooled = m_spool->items().begin();
    auto held = m_unspooled.begin();
    while (m_inFlight.size() < kInFlight) {
        while (spooled != m_spool->items().end() && m_sent.count(spooled->first))
            ++spooled;
        while (held != m_unspooled.end() && m_sent.count(held->first))
            ++held;
        const bool fromSpool = spooled != m_spool->items().end()
            && (held == m_unspooled.end() || spooled->first < held->first);
        if (fromSpool) {
            const std::uint64_t seq = spooled->first;
            const std::optional<std::string> payload = m_spool->read(seq);
            ++spooled;
            if (!payload) {
                m_spool->remove(seq);
                continue;
            }
            if (!sendOne(seq, *payload))
                return;
        } else if (held != m_unspooled.end()) {
            if (!sendOne(held->first, held->second.second))
                return;
            ++held;
        } else {
            return;
        }
    }
}

void MqttRelay::acknowledged(int mid)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto it = m_inFlight.find(mid);
        if (it == m_inFlight.end())
            return;
        const std::uint64_t seq = it->second;
        m_inFlight.erase(it);
        m_sent.erase(seq);
        if (const auto item = m_spool->items().find(seq); item != m_spool->items().end()) {
            m_relayed += item->second.packets;
            m_spool->remove(seq);
        } else if (const auto heldItem = m_unspooled.find(seq); heldItem != m_unspooled.end()) {
            m_relayed += heldItem->second.first;
            m_unspooledBytes -= heldItem->second.second.size();
            m_unspooled.erase(heldItem);
        }
        sendLocked();
    }
    m_changed.notify_all();
}

void MqttRelay::reconnected(bool again)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        // What was in flight may not have reached the broker: all of it goes again.
        m_inFlight.clear();
        m_sent.clear();
        sendLocked();
    }
    if (again && m_options.notice)
        m_options.notice(
            "The broker " + m_options.address.shown() + " is connected again; sending the spool.",
            false);
    m_changed.notify_all();
}

void MqttRelay::finish(std::chrono::milliseconds timeout)
{
    flush();
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait_for(lock, timeout,
        [this] { return m_spool->items().empty() && m_unspooled.empty() && m_gathered.empty(); });
    lock.unlock();
    m_client->stop();
}

MqttRelay::Counts MqttRelay::counts() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    Counts c;
    c.relayedPackets = m_relayed;
    c.spooledMessages = m_spool->items().size() + m_unspooled.size();
    c.spooledPackets = m_spool->packets();
    for (const auto &[seq, held] : m_unspooled)
        c.spooledPackets += held.first;
    c.droppedMessages = m_spool->droppedMessages() + m_unspooledDroppedMessages;
    c.droppedPackets = m_spool->droppedPackets() + m_unspooledDroppedPackets;
    return c;
}

} // namespace corvalog
