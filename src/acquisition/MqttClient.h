#pragma once

#include "MqttAddress.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

struct mosquitto;
struct mosquitto_message;

namespace corvalog {

// A user name and password for the broker, read from a file (never from a command line, where
// every user of the machine could see them): lines "username=NAME" and "password=SECRET";
// blank lines and lines starting with "#" are skipped.
struct MqttCredentials {
    std::string username;
    std::string password;

    // Nothing, with the reason in `error`, when the file cannot be read or names no user.
    static std::optional<MqttCredentials> read(const std::string &path, std::string &error);
};

// A connection to a broker on the Mosquitto client library, kept up by a thread of its own:
// it connects, reconnects a second or two after a loss for as long as it runs, and calls its
// events on that thread. Losing the broker is told once until the connection is back.
class MqttClient
{
public:
    struct Options {
        std::string host;
        int port = 1883;
        bool tls = false;
        std::string caFile; // "" for the system's certificate authorities
        std::optional<MqttCredentials> credentials;
        std::string clientId;
        // False keeps the broker's session (subscriptions and QoS 1 messages) across reconnects.
        bool cleanSession = true;

        // The options for a broker address, its CA file and its credentials file ("" for
        // none); raises VbError when the credentials cannot be read.
        static Options forBroker(const MqttAddress &address, const std::string &caFile,
            const std::string &credentialsFile);
    };
    struct Events {
        // `again`: the loss of the broker was told before this connection.
        std::function<void(bool again)> connected;
        std::function<void(const std::string &why)> lost;
        std::function<void(int mid)> acknowledged; // a QoS 1 message the broker now holds
        std::function<void(const std::string &topic, std::string_view payload)> message;
    };

    // Raises VbError when the options cannot be used (a CA file that does not exist).
    MqttClient(Options options, Events events);
    ~MqttClient();
    MqttClient(const MqttClient &) = delete;
    MqttClient &operator=(const MqttClient &) = delete;

    void start();
    // Disconnects cleanly and ends the thread.
    void stop();
    bool isConnected() const { return m_connected.load(); }

    // Publishes with QoS 1; the message id, or nothing when the library refused it.
    std::optional<int> publish(const std::string &topic, const std::string &payload);
    bool subscribe(const std::string &topic);
    const Options &options() const { return m_options; }

private:
    static void onConnect(mosquitto *, void *self, int rc);
    static void onDisconnect(mosquitto *, void *self, int rc);
    static void onPublish(mosquitto *, void *self, int mid);
    static void onMessage(mosquitto *, void *self, const mosquitto_message *message);
    void run();
    void tellLost(const std::string &why);
    // Sleeps unless stopped meanwhile; false when stopped.
    bool pause(std::chrono::milliseconds time);

    Options m_options;
    Events m_events;
    mosquitto *m_handle = nullptr;
    std::thread m_thread;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::atomic<bool> m_stop { false };
    std::atomic<bool> m_connected { false };
    bool m_lostTold = false; // on the client's thread only
};

} // namespace corvalog
