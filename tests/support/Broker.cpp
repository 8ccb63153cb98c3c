#include "Broker.h"

#include "FileText.h"

#include <arpa/inet.h>
#include <chrono>
#include <csignal>
#include <netinet/in.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace corvalog {

namespace {

std::uint16_t freePort()
{
    const int s = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ::bind(s, reinterpret_cast<sockaddr *>(&address), sizeof address);
    socklen_t length = sizeof address;
    ::getsockname(s, reinterpret_cast<sockaddr *>(&address), &length);
    ::close(s);
    return ntohs(address.sin_port);
}

bool accepting(std::uint16_t port)
{
    const int s = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const bool ok = ::connect(s, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
    ::close(s);
    return ok;
}

} // namespace

Broker::Broker(std::string folder, const std::string &listenerOptions)
    : m_folder(std::move(folder))
    , m_port(freePort())
{
    // Started as root, the broker would change to its own user, who cannot write the folder.
    writeFile(m_folder + "/mosquitto.conf",
        "listener " + std::to_string(m_port) + " 127.0.0.1\n" + listenerOptions
            + "persistence true\npersistence_location " + m_folder + "/\n"
            + "autosave_interval 1\nmax_queued_messages 0\nlog_dest stderr\n"
            + (::geteuid() == 0 ? "user root\n" : ""));
}

Broker::~Broker()
{
    stop();
}

bool Broker::start()
{
    m_process = std::make_unique<ChildProcess>(
        std::vector<std::string> { "/usr/sbin/mosquitto", "-c", m_folder + "/mosquitto.conf" });
    for (int i = 0; i < 100; ++i) {
        if (accepting(m_port))
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return false;
}

void Broker::stop()
{
    if (!m_process)
        return;
    m_process->signal(SIGTERM);
    if (!m_process->wait(10000))
        m_process->signal(SIGKILL);
    m_process->wait(5000);
    m_lastLog += m_process->err();
    m_process.reset();
}

std::string Broker::url(const std::string &path, bool tls) const
{
    return (tls ? "mqtts://127.0.0.1:" : "mqtt://127.0.0.1:") + std::to_string(m_port) + "/" + path;
}

std::string Broker::log() const
{
    return m_lastLog + (m_process ? m_process->err() : std::string());
}

} // namespace corvalog
