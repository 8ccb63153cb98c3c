#include "MqttProvider.h"

#include "MqttPayload.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QSysInfo>
#include <cstdlib>

namespace corvalog {

namespace {

std::string userName()
{
    for (const char *name : { "USER", "LOGNAME", "USERNAME" }) {
        if (const char *value = std::getenv(name); value && *value)
            return value;
    }
    return "user";
}

} // namespace

std::string MqttProvider::defaultClientId(const MqttAddress &address)
{
    // The program and the tool each have their own session on the same prefix.
    const QByteArray hash
        = QCryptographicHash::hash(QByteArray::fromStdString(address.host + "\n" + address.prefix
                                       + "\n" + QCoreApplication::applicationName().toStdString()),
            QCryptographicHash::Sha1)
              .toHex()
              .left(8);
    // Client ids are at most 23 characters for every broker to take them.
    std::string id = "cvl-" + userName().substr(0, 6) + "-"
        + QSysInfo::machineHostName().left(4).toStdString() + "-" + hash.toStdString();
    return id.substr(0, 23);
}

MqttProvider::MqttProvider(Options options, const NumberLocale &locale)
    : m_options(std::move(options))
    , m_locale(locale)
{
    MqttClient::Events events;
    events.connected = [this](bool again) {
        // The session keeps the subscription, but a broker that lost it (no persistence) needs
        // it again.
        m_client->subscribe(m_options.address.subscription());
        if (again)
            notice("The broker " + m_options.address.shown() + " is connected again.", false);
    };
    events.lost = [this](const std::string &why) {
        notice("Lost the broker " + m_options.address.shown() + ": " + why
                + ". Reconnecting by itself.",
            true);
    };
    events.message
        = [this](const std::string &topic, std::string_view payload) { received(topic, payload); };
    MqttClient::Options client = MqttClient::Options::forBroker(
        m_options.address, m_options.caFile, m_options.credentialsFile);
    client.clientId = m_options.address.clientId.empty() ? defaultClientId(m_options.address)
                                                         : m_options.address.clientId;
    client.cleanSession = false;
    m_client = std::make_unique<MqttClient>(std::move(client), std::move(events));
}

MqttProvider::~MqttProvider()
{
    CloseInterface();
}

std::int16_t MqttProvider::OpenInterface(std::int16_t, std::int32_t)
{
    m_client->start();
    return 0;
}

void MqttProvider::CloseInterface()
{
    m_client->stop();
}

void MqttProvider::received(const std::string &topic, std::string_view payload)
{
    const std::uint64_t number = m_received.fetch_add(1) + 1;
    // Only a message that does not read is named.
    const auto where = [&] { return "message " + std::to_string(number) + " on " + topic; };
    const std::string station = m_options.address.stationOf(topic);
    RelayMessage message;
    std::string error;
    std::vector<std::string> badPackets;
    if (station.empty()) {
        reportMalformed(where() + ": not a topic of " + m_options.address.subscription());
        return;
    }
    if (!decodeRelayMessage(payload, message, error, badPackets, m_locale)) {
        reportMalformed(where() + ": " + error);
        return;
    }
    if (message.station != station) {
        reportMalformed(where() + ": its station \"" + message.station + "\" is not the topic's");
        return;
    }
    {
        const std::lock_guard<std::mutex> lock(m_windowsMutex);
        if (!m_windows[station].accept(message.seq)) {
            ++m_repeats;
            return;
        }
    }
    ++m_messages;
    for (const std::string &bad : badPackets)
        reportMalformed(where() + " " + bad);
    if (!message.packets.empty())
        deliver(std::move(message.packets));
}

} // namespace corvalog
