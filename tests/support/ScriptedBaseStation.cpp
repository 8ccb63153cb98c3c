#include "ScriptedBaseStation.h"

#include <cerrno>
#include <poll.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

namespace corvalog {

ScriptedBaseStation::ScriptedBaseStation(Reply reply)
    : m_reply(std::move(reply))
{
    char name[256] = {};
    if (::openpty(&m_master, &m_slave, name, nullptr, nullptr) != 0)
        return;
    termios raw {};
    ::tcgetattr(m_slave, &raw);
    ::cfmakeraw(&raw);
    ::tcsetattr(m_slave, TCSANOW, &raw);
    m_device = name;
    m_reader = std::thread([this] { readLoop(); });
}

ScriptedBaseStation::~ScriptedBaseStation()
{
    m_stop = true;
    if (m_reader.joinable())
        m_reader.join();
    hangUp();
}

void ScriptedBaseStation::linkAt(const std::string &path) const
{
    ::unlink(path.c_str());
    (void)::symlink(m_device.c_str(), path.c_str());
}

bool ScriptedBaseStation::send(const std::string &bytes)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    std::size_t done = 0;
    while (m_master >= 0 && done < bytes.size()) {
        const ssize_t n = ::write(m_master, bytes.data() + done, bytes.size() - done);
        if (n < 0 && errno != EINTR && errno != EAGAIN)
            return false;
        if (n > 0)
            done += static_cast<std::size_t>(n);
    }
    return m_master >= 0;
}

void ScriptedBaseStation::hangUp()
{
    m_stop = true;
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_master >= 0)
        ::close(m_master);
    if (m_slave >= 0)
        ::close(m_slave);
    m_master = m_slave = -1;
}

std::vector<std::string> ScriptedBaseStation::lines() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_lines;
}

void ScriptedBaseStation::readLoop()
{
    std::string partial;
    char buffer[4096];
    while (!m_stop) {
        int fd = -1;
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            fd = m_master;
        }
        if (fd < 0)
            return;
        pollfd p { fd, POLLIN, 0 };
        if (::poll(&p, 1, 20) <= 0 || !(p.revents & POLLIN))
            continue;
        const ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n <= 0)
            continue;
        partial.append(buffer, static_cast<std::size_t>(n));
        for (std::size_t end; (end = partial.find('\n')) != std::string::npos;) {
            const std::string line = partial.substr(0, end);
            partial.erase(0, end + 1);
            {
                std::lock_guard<std::mutex> lock(m_mutex);
                m_lines.push_back(line);
            }
            if (m_reply)
                for (const std::string &answer : m_reply(line))
                    send(answer);
        }
    }
}

} // namespace corvalog
