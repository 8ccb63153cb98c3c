#pragma once

#include "Spool.h"
#include "acquisition/MqttAddress.h"
#include "acquisition/MqttClient.h"
#include "acquisition/PacketNotification.h"
#include "runtime/NumberLocale.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>

namespace corvalog {

// Relays packets to a broker: what arrives is gathered into one message at a time (flush(),
// every 50 ms at most), numbered, kept in the spool and published with QoS 1 to
// PREFIX/STATION/packets; a message leaves the spool when the broker has acknowledged it. After
// a reconnect, and at the next start, everything still spooled is sent again (a reader drops
// what it already has by its number), oldest first, a bounded number in flight at a time.
class MqttRelay
{
public:
    // Messages handed to the broker but not yet acknowledged, at most.
    static constexpr std::size_t kInFlight = 64;

    struct Options {
        MqttAddress address; // with its station
        std::string spoolFolder;
        std::uint64_t spoolLimitBytes = Spool::kDefaultLimitBytes;
        std::string caFile;
        std::string credentialsFile;
        NumberLocale locale;
        // Something the user should know (the broker lost or back, the spool full, a write
        // that failed), from any thread.
        std::function<void(const std::string &text, bool problem)> notice;
    };
    struct Counts {
        std::uint64_t relayedPackets = 0; // acknowledged by the broker in this run
        std::uint64_t spooledMessages = 0;
        std::uint64_t spooledPackets = 0;
        std::uint64_t droppedMessages = 0; // by a full spool
        std::uint64_t droppedPackets = 0;
    };

    // Raises VbError when the spool, the credentials or the CA file cannot be used.
    explicit MqttRelay(Options options);
    ~MqttRelay();

    // Connects, and starts sending what an earlier run left in the spool.
    void start();
    // Packets received now; they go out with the next flush().
    void add(const PacketBatch &packets);
    // Makes a message of the packets gathered since the last one.
    void flush();
    // Flushes, waits until the broker has acknowledged everything spooled or `timeout` has
    // passed, and disconnects.
    void finish(std::chrono::milliseconds timeout);
    Counts counts() const;
    bool connected() const { return m_client && m_client->isConnected(); }

    // The spool folder a relay uses when none is given: one per broker, prefix and station in
    // the user's data folder.
    static std::string defaultSpoolFolder(const MqttAddress &address);

private:
    void sendLocked();
    bool sendOne(std::uint64_t seq, const std::string &payload);
    void keepInMemory(std::uint64_t seq, std::uint32_t packets, std::string payload);
    void tellDrops();
    void acknowledged(int mid);
    void reconnected(bool again);

    Options m_options;
    std::unique_ptr<Spool> m_spool;
    std::unique_ptr<MqttClient> m_client;
    const std::string m_topic;

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    PacketBatch m_gathered;
    std::vector<std::int64_t> m_times;
    std::map<int, std::uint64_t> m_inFlight; // message id -> seq
    std::set<std::uint64_t> m_sent; // seqs in flight
    // Messages the spool could not take (a full disk), kept in memory within the same limit.
    std::map<std::uint64_t, std::pair<std::uint32_t, std::string>> m_unspooled;
    std::uint64_t m_unspooledBytes = 0;
    std::uint64_t m_unspooledDroppedMessages = 0;
    std::uint64_t m_unspooledDroppedPackets = 0;
    std::uint64_t m_relayed = 0;
    bool m_spoolFailTold = false;
    std::uint64_t m_droppedTold = 0;
};

} // namespace corvalog
