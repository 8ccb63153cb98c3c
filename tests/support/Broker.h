#pragma once

#include "ChildProcess.h"

#include <cstdint>
#include <memory>
#include <string>

namespace corvalog {

// A real Mosquitto broker for a test: on a free port of 127.0.0.1, anonymous, with persistence
// in a folder of the test's, so stopping it (as a service stop does) and starting it again
// keeps its sessions and the messages queued for them.
class Broker
{
public:
    // `listenerOptions` are the listener's settings: anonymous clients by default; a test of
    // passwords or TLS gives its own (password_file, certfile, ...).
    explicit Broker(
        std::string folder, const std::string &listenerOptions = "allow_anonymous true\n");
    ~Broker();

    // Starts it and waits until it takes connections; false when it did not within 5 s.
    bool start();
    // Stops it cleanly (it saves its state) and waits for the end.
    void stop();
    std::uint16_t port() const { return m_port; }
    // "mqtt://127.0.0.1:PORT/" + path ("mqtts://" with `tls`).
    std::string url(const std::string &path, bool tls = false) const;
    // What it wrote on standard error.
    std::string log() const;

private:
    std::string m_folder;
    std::uint16_t m_port = 0;
    std::unique_ptr<ChildProcess> m_process;
    std::string m_lastLog;
};

} // namespace corvalog
