#pragma once

#include "ReceiveOnlyProvider.h"
#include "runtime/NumberLocale.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace corvalog {

// A base station heard over UDP: each datagram holds one or more lines of the packet recording
// columns without time_ms (LF or CR LF between them). The socket is bound when the provider is
// created; datagrams are read and parsed on a worker thread from OpenInterface to
// CloseInterface and handed to the GUI thread in batches. Malformed lines are counted and
// skipped, never costing a good packet.
class UdpProvider final : public ReceiveOnlyProvider
{
    Q_OBJECT

public:
    // A batch goes to the GUI thread when it holds this many packets...
    static constexpr std::size_t kMaxBatch = 1024;
    // ...or when its first packet has waited this long.
    static constexpr std::chrono::milliseconds kFlushInterval { 2 };
    // Malformed lines whose reasons are kept; later ones are only counted.
    // The receive buffer asked of the system, so a stalled worker loses nothing for a while.
    static constexpr int kReceiveBufferBytes = 8 << 20;

    // Listens on host:port (port 0: any free port) with a receive buffer of about that many
    // bytes; raises VbError with the system's reason when the address cannot be resolved or
    // bound.
    static std::unique_ptr<UdpProvider> create(const std::string &host, std::uint16_t port,
        int receiveBufferBytes, const NumberLocale &locale);
    ~UdpProvider() override;

    // The port the socket is bound to.
    std::uint16_t port() const { return m_port; }
    // The receive buffer the system granted, in bytes (it may cap what was asked).
    int receiveBufferBytes() const { return m_receiveBuffer; }
    // Datagrams read since creation; safe from any thread.
    std::uint64_t datagramCount() const { return m_datagrams.load(std::memory_order_relaxed); }

    // Counted by the system for the socket (SO_RXQ_OVFL), from OpenInterface on.
    std::uint64_t droppedBySystem() const override;

    std::string name() const override { return "Corvalog UDP receiver"; }
    // Starts receiving (0); datagrams that arrived while closed are discarded.
    std::int16_t OpenInterface(std::int16_t port, std::int32_t baudrate) override;
    // Stops receiving; packets already read still reach the GUI thread.
    void CloseInterface() override;

private:
    UdpProvider(int socket, const int wake[2], std::uint16_t port, int receiveBuffer,
        const NumberLocale &locale);
    void run();
    void parseDatagram(const char *data, std::size_t size, PacketBatch &batch);
    void noteMalformed(std::uint64_t datagram, std::size_t line, const std::string &reason);

    const int m_socket;
    const std::uint16_t m_port;
    const int m_receiveBuffer;
    const NumberLocale m_locale; // of the value texts handed on
    int m_wake[2] = { -1, -1 }; // a byte written here interrupts the worker's poll
    std::thread m_worker;
    std::atomic<bool> m_stop { false };

    std::atomic<std::uint64_t> m_datagrams { 0 };
    // The system's count of datagrams dropped: when the interface opened, and the latest seen.
    std::atomic<std::uint32_t> m_dropsAtOpen { 0 };
    std::atomic<std::uint32_t> m_dropsSeen { 0 };
};

} // namespace corvalog
