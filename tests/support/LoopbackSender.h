#pragma once

#include <chrono>
#include <cstdint>
#include <string_view>
#include <thread>

namespace corvalog {

// Sends PacketSequence lines to 127.0.0.1 from a thread of its own, paced to a rate, and stops
// by itself once the planned packets are sent or the time limit is reached.
class LoopbackSender
{
public:
    struct Plan {
        std::uint16_t port = 0;
        std::uint64_t packets = 0;
        double packetsPerSecond = 0; // 0: as fast as the socket takes them
        int linesPerDatagram = 1;
        std::chrono::milliseconds timeLimit { 5000 };
    };

    // Starts sending at once.
    explicit LoopbackSender(const Plan &plan);
    // Waits for the sending to end.
    ~LoopbackSender();

    // Returns when the sending has ended.
    void wait();

    // Sends one datagram to 127.0.0.1:port; false when the system refused it.
    static bool sendDatagram(std::uint16_t port, std::string_view bytes);

private:
    void run();

    const Plan m_plan;
    std::thread m_thread;
};

} // namespace corvalog
