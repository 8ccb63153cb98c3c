#pragma once

#include "PacketRing.h"

#include <QObject>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

namespace corvalog {

// The base-station driver: the operations the program needs of it, and its packet-arrived
// notification. A failing operation raises VbError with the driver's error number and
// description (automation failures are negative numbers, as the driver's are).
//
// The object lives on the GUI thread and `packetsArrived` is always emitted there, in arrival
// order. A provider that must block (a socket, a file paced in real time) does that on a thread
// of its own and hands its packets over with deliver(), which may be called from any thread.
class DataProvider : public QObject
{
    Q_OBJECT

public:
    // The most packets a second a source is rated for (a busy UDP feed or broker).
    static constexpr std::size_t kRatedPacketRate = 50000;
    // How many packets may wait for the GUI thread before new ones are dropped (and counted):
    // four seconds of the rated rate, so a stalled GUI thread costs bounded memory.
    static constexpr std::size_t kInboxCapacity = 4 * kRatedPacketRate;

    explicit DataProvider(QObject *parent = nullptr);
    ~DataProvider() override;

    // The driver's name, shown in the about box and in its error descriptions.
    virtual std::string name() const = 0;

    // 0 when opened. Port 0 with baud 0 means USB.
    virtual std::int16_t OpenInterface(std::int16_t port, std::int32_t baudrate) = 0;
    virtual void CloseInterface() = 0;
    virtual void WakeAll(std::uint8_t baseStationAddress) = 0;
    virtual void SleepAll() = 0;
    virtual void KeepAwakeAll() = 0;
    virtual float ComVersion() = 0;
    virtual float DllVersion() = 0;
    virtual void SetRadioChannel(std::uint8_t baseStationAddress, std::uint8_t radioChannel) = 0;
    // Non-zero when a base station answered at the address.
    virtual std::int32_t DetectBaseStation(std::uint8_t baseStationAddress) = 0;
    // 0 when the module acknowledged. The arguments are passed by reference, as the driver has it.
    virtual std::int32_t SendCommand(std::uint8_t &baseStationAddress, std::int32_t datatag,
        std::uint8_t &command, std::string &data)
        = 0;

    // How many reasons of unreadable lines are kept.
    static constexpr std::size_t kKeptMessages = 100;

    // Packets dropped because the GUI thread was more than kInboxCapacity packets behind.
    std::uint64_t droppedInInbox() const;
    // Datagrams the system dropped before the provider could read them (its receive buffer
    // was full); 0 for a source that cannot lose any that way. Safe from any thread.
    virtual std::uint64_t droppedBySystem() const { return 0; }
    // Lines (of a recording or a datagram) that could not be read, and the reasons of the first
    // kKeptMessages ("line 17: ..."); safe from any thread.
    std::uint64_t malformedCount() const { return m_malformed.load(std::memory_order_relaxed); }
    std::vector<std::string> malformedMessages() const;

signals:
    // One or more packet-arrived notifications, on the GUI thread, in arrival order.
    void packetsArrived(const corvalog::PacketBatch &packets);
    // Something the user should know about the link, on the GUI thread: the base station was
    // lost (`problem`), or it is back.
    void noticed(const QString &text, bool problem);

protected:
    // Hands packets to the GUI thread from any thread, behind every batch handed over before:
    // emitted at once on the GUI thread when nothing waits, else put in the inbox, which the
    // GUI thread empties as one batch. What the inbox cannot take is dropped and counted.
    void deliver(PacketBatch packets);
    // Counts an unreadable line and keeps its reason while fewer than kKeptMessages are kept.
    void reportMalformed(std::string reason);
    // Emits noticed() on the GUI thread, behind the packets handed over before; any thread.
    void notice(const std::string &text, bool problem);

private:
    void emptyInbox();

    mutable std::mutex m_inboxMutex;
    PacketRing m_inbox { kInboxCapacity };
    bool m_emptyingQueued = false;
    std::uint64_t m_dropped = 0;
    std::atomic<std::uint64_t> m_malformed { 0 };
    mutable std::mutex m_messagesMutex;
    std::vector<std::string> m_messages;
};

} // namespace corvalog
