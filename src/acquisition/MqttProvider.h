#pragma once

#include "MqttAddress.h"
#include "MqttClient.h"
#include "ReceiveOnlyProvider.h"
#include "SeqWindow.h"
#include "runtime/NumberLocale.h"

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace corvalog {

// Base stations heard through a broker: the messages relays publish to PREFIX/STATION/packets
// (JSON, see MqttPayload), subscribed to with QoS 1 in a persistent session from OpenInterface
// to CloseInterface, so what is published while this source is away or the broker restarts
// (with persistence) still arrives. A message delivered twice (same station and seq) is taken
// once; a payload or packet that does not read is counted and skipped. The broker lost is told
// once; the source reconnects by itself. Which station a packet came from does not matter to
// the tables, as with one base station.
class MqttProvider final : public ReceiveOnlyProvider
{
    Q_OBJECT

public:
    struct Options {
        MqttAddress address;
        std::string caFile;
        std::string credentialsFile; // "" for none
    };

    // Raises VbError when the credentials or CA file cannot be read.
    MqttProvider(Options options, const NumberLocale &locale);
    ~MqttProvider() override;

    std::string name() const override { return "Corvalog broker source"; }
    std::int16_t OpenInterface(std::int16_t port, std::int32_t baudrate) override;
    void CloseInterface() override;

    // Messages taken, and those dropped as already seen; safe from any thread.
    std::uint64_t messageCount() const { return m_messages.load(); }
    std::uint64_t repeatCount() const { return m_repeats.load(); }
    bool connected() const { return m_client && m_client->isConnected(); }

    // The client id a source uses when its address names none: one per user, machine, program
    // and prefix, so the broker keeps this source's session for it across restarts. Two
    // loggers of one user on one prefix need ids of their own (?client=ID).
    static std::string defaultClientId(const MqttAddress &address);

private:
    void received(const std::string &topic, std::string_view payload);

    const Options m_options;
    const NumberLocale m_locale;
    std::unique_ptr<MqttClient> m_client;
    std::mutex m_windowsMutex;
    std::map<std::string, SeqWindow> m_windows; // by station
    std::atomic<std::uint64_t> m_messages { 0 };
    std::atomic<std::uint64_t> m_repeats { 0 };
    std::atomic<std::uint64_t> m_received { 0 };
};

} // namespace corvalog
