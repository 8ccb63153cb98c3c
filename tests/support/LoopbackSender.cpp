#include "LoopbackSender.h"

#include "PacketSequence.h"

#include <algorithm>
#include <cerrno>
#include <netinet/in.h>
#include <string>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace corvalog {

namespace {

// A socket connected to 127.0.0.1:port, so nothing can leave the machine; -1 on failure.
int loopbackSocket(std::uint16_t port)
{
    const int fd = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in to {};
    to.sin_family = AF_INET;
    to.sin_port = htons(port);
    to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (fd >= 0 && ::connect(fd, reinterpret_cast<const sockaddr *>(&to), sizeof to) != 0) {
        ::close(fd);
        return -1;
    }
    return fd;
}

} // namespace

LoopbackSender::LoopbackSender(const Plan &plan)
    : m_plan(plan)
    , m_thread([this] { run(); })
{
}

LoopbackSender::~LoopbackSender()
{
    wait();
}

void LoopbackSender::wait()
{
    if (m_thread.joinable())
        m_thread.join();
}

bool LoopbackSender::sendDatagram(std::uint16_t port, std::string_view bytes)
{
    const int fd = loopbackSocket(port);
    const bool sent = fd >= 0 && ::send(fd, bytes.data(), bytes.size(), 0) == ssize_t(bytes.size());
    if (fd >= 0)
        ::close(fd);
    return sent;
}

void LoopbackSender::run()
{
    using Clock = std::chrono::steady_clock;
    const int fd = loopbackSocket(m_plan.port);
    if (fd < 0)
        return;
    constexpr unsigned kBurst = 64; // datagrams per system call
    const std::uint64_t lines = std::max(1, m_plan.linesPerDatagram);
    std::vector<std::string> texts(kBurst);
    iovec buffers[kBurst];
    mmsghdr messages[kBurst] {};

    const auto start = Clock::now();
    const auto end = start + m_plan.timeLimit;
    std::uint64_t next = 0;
    while (next < m_plan.packets && Clock::now() < end) {
        std::uint64_t due = m_plan.packets;
        if (m_plan.packetsPerSecond > 0) {
            const std::chrono::duration<double> elapsed = Clock::now() - start;
            due = std::min(due, std::uint64_t(elapsed.count() * m_plan.packetsPerSecond) + 1);
        }
        if (next >= due) {
            std::this_thread::sleep_for(std::chrono::microseconds(100));
            continue;
        }
        unsigned count = 0;
        for (; count < kBurst && next < due; ++count) {
            texts[count].clear();
            for (std::uint64_t i = 0; i < lines && next < m_plan.packets; ++i)
                texts[count] += PacketSequence::line(next++);
            buffers[count] = { texts[count].data(), texts[count].size() };
            messages[count].msg_hdr.msg_iov = &buffers[count];
            messages[count].msg_hdr.msg_iovlen = 1;
        }
        for (unsigned done = 0; done < count;) {
            const int sent = ::sendmmsg(fd, messages + done, count - done, 0);
            if (sent < 0 && errno == EINTR)
                continue;
            if (sent <= 0) {
                ::close(fd);
                return;
            }
            done += static_cast<unsigned>(sent);
        }
    }
    ::close(fd);
}

} // namespace corvalog
