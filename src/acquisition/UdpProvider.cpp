#include "UdpProvider.h"

#include "RecordingFormat.h"
#include "runtime/VbError.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/sock_diag.h>
#include <netdb.h>
#include <netinet/in.h>
#include <optional>
#include <poll.h>
#include <string_view>
#include <sys/socket.h>
#include <sys/uio.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace corvalog {

namespace {

// What a failing automation object reports (E_FAIL); the description says what went wrong.
constexpr int kSocketFailure = -2147467259;

// Datagrams taken from the system per call, each into a slot that fits the largest one.
constexpr unsigned kSlots = 64;
constexpr std::size_t kSlotBytes = 65536;

// Stale datagrams dropped at most when opening, so a flooding sender cannot hold the GUI up.
constexpr int kDiscardLimit = 65536;

[[noreturn]] void fail(const std::string &what, int error)
{
    throw VbError(kSocketFailure, what + ": " + std::strerror(error));
}

// Closes a descriptor unless it was handed on.
struct Descriptor {
    int fd = -1;
    ~Descriptor()
    {
        if (fd >= 0)
            ::close(fd);
    }
    int release() { return std::exchange(fd, -1); }
};

std::uint16_t boundPort(int socket)
{
    sockaddr_storage local {};
    socklen_t length = sizeof local;
    if (::getsockname(socket, reinterpret_cast<sockaddr *>(&local), &length) != 0)
        return 0;
    if (local.ss_family == AF_INET6)
        return ntohs(reinterpret_cast<const sockaddr_in6 &>(local).sin6_port);
    return ntohs(reinterpret_cast<const sockaddr_in &>(local).sin_port);
}

// The system's count of datagrams the socket dropped, or nothing when it cannot be asked.
std::optional<std::uint32_t> systemDropCount(int socket)
{
    std::uint32_t info[SK_MEMINFO_VARS] {};
    socklen_t length = sizeof info;
    if (::getsockopt(socket, SOL_SOCKET, SO_MEMINFO, info, &length) != 0
        || length < (SK_MEMINFO_DROPS + 1) * sizeof(std::uint32_t))
        return std::nullopt;
    return info[SK_MEMINFO_DROPS];
}

} // namespace

std::unique_ptr<UdpProvider> UdpProvider::create(
    const std::string &host, std::uint16_t port, int receiveBufferBytes, const NumberLocale &locale)
{
    const std::string where = "udp:" + host + ":" + std::to_string(port);
    addrinfo hints {};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_DGRAM;
    hints.ai_flags = AI_PASSIVE | AI_NUMERICSERV;
    addrinfo *found = nullptr;
    const int resolved = ::getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &found);
    if (resolved != 0)
        throw VbError(kSocketFailure, "Cannot resolve " + where + ": " + ::gai_strerror(resolved));
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> addresses(found, ::freeaddrinfo);

    Descriptor socket { ::socket(found->ai_family, SOCK_DGRAM | SOCK_CLOEXEC, 0) };
    if (socket.fd < 0)
        fail("Cannot open a socket for " + where, errno);
    // The forced size needs privileges; without them the system caps the plain request.
    const int wanted = receiveBufferBytes;
    if (::setsockopt(socket.fd, SOL_SOCKET, SO_RCVBUFFORCE, &wanted, sizeof wanted) != 0)
        ::setsockopt(socket.fd, SOL_SOCKET, SO_RCVBUF, &wanted, sizeof wanted);
    // Each datagram read then says how many the system has dropped so far.
    const int on = 1;
    ::setsockopt(socket.fd, SOL_SOCKET, SO_RXQ_OVFL, &on, sizeof on);
    if (::bind(socket.fd, found->ai_addr, found->ai_addrlen) != 0)
        fail("Cannot listen on " + where, errno);
    int granted = 0;
    socklen_t length = sizeof granted;
    ::getsockopt(socket.fd, SOL_SOCKET, SO_RCVBUF, &granted, &length);

    int pipeEnds[2];
    if (::pipe2(pipeEnds, O_CLOEXEC | O_NONBLOCK) != 0)
        fail("Cannot create the receiver's wake-up pipe", errno);
    const std::uint16_t bound = boundPort(socket.fd);
    return std::unique_ptr<UdpProvider>(
        new UdpProvider(socket.release(), pipeEnds, bound, granted, locale));
}

UdpProvider::UdpProvider(int socket, const int wake[2], std::uint16_t port, int receiveBuffer,
    const NumberLocale &locale)
    : m_socket(socket)
    , m_port(port)
    , m_receiveBuffer(receiveBuffer)
    , m_locale(locale)
    , m_wake { wake[0], wake[1] }
{
}

UdpProvider::~UdpProvider()
{
    CloseInterface();
    ::close(m_socket);
    ::close(m_wake[0]);
    ::close(m_wake[1]);
}

std::int16_t UdpProvider::OpenInterface(std::int16_t, std::int32_t)
{
    if (m_worker.joinable())
        return 0;
    // A closed interface hears nothing: what queued up meanwhile is stale.
    char scrap;
    for (int i = 0; i < kDiscardLimit && ::recv(m_socket, &scrap, 1, MSG_DONTWAIT) >= 0; ++i) { }
    // Drops while closed are no loss of the open interface's.
    const std::uint32_t drops = systemDropCount(m_socket).value_or(0);
    m_dropsAtOpen.store(drops);
    m_dropsSeen.store(drops);
    m_stop.store(false);
    try {
        m_worker = std::thread(&UdpProvider::run, this);
    } catch (const std::system_error &e) {
        throw VbError(kSocketFailure, std::string("Cannot start the receiver: ") + e.what());
    }
    return 0;
}

void UdpProvider::CloseInterface()
{
    if (!m_worker.joinable())
        return;
    m_stop.store(true);
    const char byte = 0;
    [[maybe_unused]] const auto written = ::write(m_wake[1], &byte, 1);
    m_worker.join();
    char scrap[16];
    while (::read(m_wake[0], scrap, sizeof scrap) > 0) { }
}

void UdpProvider::run()
{
    using Clock = std::chrono::steady_clock;
    std::vector<char> storage(kSlots * kSlotBytes);
    constexpr std::size_t kControlBytes = CMSG_SPACE(sizeof(std::uint32_t));
    std::vector<char> control(kSlots * kControlBytes);
    iovec buffers[kSlots];
    mmsghdr messages[kSlots] {};
    for (unsigned i = 0; i < kSlots; ++i) {
        buffers[i] = { storage.data() + i * kSlotBytes, kSlotBytes };
        messages[i].msg_hdr.msg_iov = &buffers[i];
        messages[i].msg_hdr.msg_iovlen = 1;
    }
    // The system's drop count that came with the last datagram of a read.
    const auto noteDrops = [&](const msghdr &header) {
        for (cmsghdr *c = CMSG_FIRSTHDR(&header); c;
             c = CMSG_NXTHDR(const_cast<msghdr *>(&header), c)) {
            if (c->cmsg_level == SOL_SOCKET && c->cmsg_type == SO_RXQ_OVFL) {
                std::uint32_t drops = 0;
                std::memcpy(&drops, CMSG_DATA(c), sizeof drops);
                m_dropsSeen.store(drops, std::memory_order_relaxed);
            }
        }
    };
    pollfd watched[2] = { { m_socket, POLLIN, 0 }, { m_wake[0], POLLIN, 0 } };

    PacketBatch batch;
    Clock::time_point due;
    const auto flush = [&] {
        const std::size_t size = batch.size();
        deliver(std::move(batch));
        batch = PacketBatch();
        batch.reserve(size);
    };

    while (!m_stop.load(std::memory_order_relaxed)) {
        int timeout = -1;
        if (!batch.empty()) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(due - Clock::now());
            timeout = static_cast<int>(std::max<std::int64_t>(0, left.count()));
        }
        ::poll(watched, 2, timeout);
        // Read until the socket is empty, looking at the clock and the stop flag between calls
        // so a flood neither delays batches nor keeps CloseInterface waiting.
        for (;;) {
            for (unsigned i = 0; i < kSlots; ++i) {
                messages[i].msg_hdr.msg_control = control.data() + i * kControlBytes;
                messages[i].msg_hdr.msg_controllen = kControlBytes;
            }
            const int count = ::recvmmsg(m_socket, messages, kSlots, MSG_DONTWAIT, nullptr);
            if (count <= 0)
                break;
            noteDrops(messages[count - 1].msg_hdr);
            const auto now = Clock::now();
            for (int i = 0; i < count; ++i) {
                const bool wasEmpty = batch.empty();
                parseDatagram(storage.data() + i * kSlotBytes, messages[i].msg_len, batch);
                if (wasEmpty)
                    due = now + kFlushInterval;
                if (batch.size() >= kMaxBatch)
                    flush();
            }
            if (!batch.empty() && Clock::now() >= due)
                flush();
            if (static_cast<unsigned>(count) < kSlots || m_stop.load(std::memory_order_relaxed))
                break;
        }
        if (!batch.empty() && Clock::now() >= due)
            flush();
    }
    if (!batch.empty())
        flush();
}

std::uint64_t UdpProvider::droppedBySystem() const
{
    // Drops after the last datagram read come with no datagram; the system is asked for those.
    std::uint32_t latest = m_dropsSeen.load(std::memory_order_relaxed);
    if (const std::optional<std::uint32_t> now = systemDropCount(m_socket))
        latest = std::max(latest, *now);
    return static_cast<std::uint32_t>(latest - m_dropsAtOpen.load());
}

void UdpProvider::parseDatagram(const char *data, std::size_t size, PacketBatch &batch)
{
    const std::uint64_t datagram = m_datagrams.fetch_add(1, std::memory_order_relaxed) + 1;
    std::string_view rest(data, size);
    std::string error;
    for (std::size_t lineNumber = 1; !rest.empty(); ++lineNumber) {
        const std::size_t end = rest.find('\n');
        std::string_view line = rest.substr(0, end);
        rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        RecordedPacket packet;
        switch (parseRecordingLine(line, false, packet, error, m_locale)) {
        case LineKind::Packet:
            batch.push_back(std::move(packet.packet));
            break;
        case LineKind::Malformed:
            noteMalformed(datagram, lineNumber, error);
            break;
        case LineKind::Skip:
            break;
        }
    }
}

void UdpProvider::noteMalformed(std::uint64_t datagram, std::size_t line, const std::string &reason)
{
    reportMalformed(
        "datagram " + std::to_string(datagram) + " line " + std::to_string(line) + ": " + reason);
}

} // namespace corvalog
