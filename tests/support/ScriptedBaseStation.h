#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace corvalog {

// The far end of a serial line for tests: a pseudo-terminal whose master a thread reads line by
// line, keeping every line and answering each through `reply` (its lines are written back in
// order). The serial driver opens `device()` (or a link to it) as it would a real port.
class ScriptedBaseStation
{
public:
    using Reply = std::function<std::vector<std::string>(const std::string &line)>;

    explicit ScriptedBaseStation(Reply reply = {});
    ~ScriptedBaseStation();
    ScriptedBaseStation(const ScriptedBaseStation &) = delete;
    ScriptedBaseStation &operator=(const ScriptedBaseStation &) = delete;

    const std::string &device() const { return m_device; }
    // Points a symbolic link at this line (replacing what was there).
    void linkAt(const std::string &path) const;
    // Writes bytes as the base station sends them; false when the line is closed.
    bool send(const std::string &bytes);
    // Closes the line: the reader sees the device hang up.
    void hangUp();
    // The lines received so far (without LF).
    std::vector<std::string> lines() const;

private:
    void readLoop();

    Reply m_reply;
    int m_master = -1;
    int m_slave = -1;
    std::string m_device;
    std::atomic<bool> m_stop { false };
    mutable std::mutex m_mutex;
    std::vector<std::string> m_lines;
    std::thread m_reader;
};

} // namespace corvalog
