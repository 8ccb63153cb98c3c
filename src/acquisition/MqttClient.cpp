#include "MqttClient.h"

#include "runtime/VbError.h"

#include <QFile>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <mosquitto.h>
#include <mutex>

namespace corvalog {

namespace {

// What a failing automation object reports (E_FAIL); the description says what went wrong.
constexpr int kBrokerFailure = -2147467259;
constexpr int kKeepAliveSeconds = 30;
constexpr std::chrono::milliseconds kFirstRetry { 250 };
constexpr std::chrono::milliseconds kLongestRetry { 2000 };

void initLibrary()
{
    static std::once_flag once;
    std::call_once(once, [] { mosquitto_lib_init(); });
}

std::string errorText(int rc)
{
    if (rc == MOSQ_ERR_ERRNO)
        return std::strerror(errno);
    return mosquitto_strerror(rc);
}

std::string trimmed(const QByteArray &line)
{
    return line.trimmed().toStdString();
}

} // namespace

std::optional<MqttCredentials> MqttCredentials::read(const std::string &path, std::string &error)
{
    QFile file(QString::fromStdString(path));
    if (!file.open(QIODevice::ReadOnly)) {
        error
            = "cannot read the credentials file " + path + ": " + file.errorString().toStdString();
        return std::nullopt;
    }
    MqttCredentials c;
    for (const QByteArray &raw : file.readAll().split('\n')) {
        QByteArray line = raw;
        if (line.endsWith('\r'))
            line.chop(1);
        const std::string text = trimmed(line);
        if (text.empty() || text.front() == '#')
            continue;
        if (text.rfind("username=", 0) == 0)
            c.username = text.substr(9);
        else if (text.rfind("password=", 0) == 0)
            // The password as written after "=", spaces included.
            c.password = line.mid(line.indexOf('=') + 1).toStdString();
        else {
            error = "the credentials file " + path
                + " holds a line that is neither username= nor password=";
            return std::nullopt;
        }
    }
    if (c.username.empty()) {
        error = "the credentials file " + path + " names no user (username=NAME)";
        return std::nullopt;
    }
    return c;
}

MqttClient::Options MqttClient::Options::forBroker(
    const MqttAddress &address, const std::string &caFile, const std::string &credentialsFile)
{
    Options o;
    o.host = address.host;
    o.port = address.port;
    o.tls = address.tls;
    o.caFile = caFile;
    if (!credentialsFile.empty()) {
        std::string error;
        o.credentials = MqttCredentials::read(credentialsFile, error);
        if (!o.credentials)
            throw VbError(kBrokerFailure, error);
    }
    return o;
}

MqttClient::MqttClient(Options options, Events events)
    : m_options(std::move(options))
    , m_events(std::move(events))
{
    initLibrary();
    m_handle = mosquitto_new(m_options.clientId.empty() ? nullptr : m_options.clientId.c_str(),
        m_options.cleanSession, this);
    if (!m_handle)
        throw VbError(
            kBrokerFailure, "Cannot create a broker client: " + errorText(MOSQ_ERR_ERRNO));
    mosquitto_threaded_set(m_handle, true);
    mosquitto_int_option(m_handle, MOSQ_OPT_TCP_NODELAY, 1);
    mosquitto_connect_callback_set(m_handle, &MqttClient::onConnect);
    mosquitto_disconnect_callback_set(m_handle, &MqttClient::onDisconnect);
    mosquitto_publish_callback_set(m_handle, &MqttClient::onPublish);
    mosquitto_message_callback_set(m_handle, &MqttClient::onMessage);
    if (m_options.credentials)
        mosquitto_username_pw_set(m_handle, m_options.credentials->username.c_str(),
            m_options.credentials->password.c_str());
    if (m_options.tls) {
        const bool own = !m_options.caFile.empty();
        if (own && !QFile::exists(QString::fromStdString(m_options.caFile))) {
            mosquitto_destroy(m_handle);
            throw VbError(kBrokerFailure, "Cannot read the CA file " + m_options.caFile);
        }
        const int rc = mosquitto_tls_set(m_handle, own ? m_options.caFile.c_str() : nullptr,
            own ? nullptr : "/etc/ssl/certs", nullptr, nullptr, nullptr);
        if (rc != MOSQ_ERR_SUCCESS) {
            mosquitto_destroy(m_handle);
            throw VbError(kBrokerFailure, "Cannot set up TLS: " + errorText(rc));
        }
    }
}

MqttClient::~MqttClient()
{
    stop();
    mosquitto_destroy(m_handle);
}

void MqttClient::start()
{
    if (m_thread.joinable())
        return;
    m_stop = false;
    m_thread = std::thread(&MqttClient::run, this);
}

void MqttClient::stop()
{
    if (!m_thread.joinable())
        return;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_stop = true;
    }
    m_wake.notify_all();
    m_thread.join();
    m_connected = false;
}

std::optional<int> MqttClient::publish(const std::string &topic, const std::string &payload)
{
    int mid = 0;
    const int rc = mosquitto_publish(
        m_handle, &mid, topic.c_str(), static_cast<int>(payload.size()), payload.data(), 1, false);
    if (rc != MOSQ_ERR_SUCCESS)
        return std::nullopt;
    return mid;
}

bool MqttClient::subscribe(const std::string &topic)
{
    return mosquitto_subscribe(m_handle, nullptr, topic.c_str(), 1) == MOSQ_ERR_SUCCESS;
}

void MqttClient::onConnect(mosquitto *, void *self, int rc)
{
    auto &client = *static_cast<MqttClient *>(self);
    if (rc != 0) {
        client.tellLost(
            std::string("the broker refused the connection: ") + mosquitto_connack_string(rc));
        return;
    }
    client.m_connected = true;
    const bool again = client.m_lostTold;
    client.m_lostTold = false;
    if (client.m_events.connected)
        client.m_events.connected(again);
}

void MqttClient::onDisconnect(mosquitto *, void *self, int rc)
{
    auto &client = *static_cast<MqttClient *>(self);
    client.m_connected = false;
    if (rc != 0 && !client.m_stop)
        client.tellLost("the connection to the broker was lost");
}

void MqttClient::onPublish(mosquitto *, void *self, int mid)
{
    auto &client = *static_cast<MqttClient *>(self);
    if (client.m_events.acknowledged)
        client.m_events.acknowledged(mid);
}

void MqttClient::onMessage(mosquitto *, void *self, const mosquitto_message *message)
{
    auto &client = *static_cast<MqttClient *>(self);
    if (client.m_events.message)
        client.m_events.message(message->topic ? message->topic : "",
            std::string_view(static_cast<const char *>(message->payload),
                static_cast<std::size_t>(std::max(message->payloadlen, 0))));
}

void MqttClient::tellLost(const std::string &why)
{
    m_connected = false;
    if (m_lostTold)
        return;
    m_lostTold = true;
    if (m_events.lost)
        m_events.lost(why);
}

bool MqttClient::pause(std::chrono::milliseconds time)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return !m_wake.wait_for(lock, time, [this] { return m_stop.load(); });
}

void MqttClient::run()
{
    bool socketUp = false;
    bool connectCalled = false;
    std::chrono::milliseconds retry = kFirstRetry;
    while (!m_stop) {
        if (!socketUp) {
            const int rc = connectCalled ? mosquitto_reconnect(m_handle)
                                         : mosquitto_connect(m_handle, m_options.host.c_str(),
                                             m_options.port, kKeepAliveSeconds);
            connectCalled = true;
            if (rc != MOSQ_ERR_SUCCESS) {
                tellLost("cannot reach the broker at " + m_options.host + ":"
                    + std::to_string(m_options.port) + ": " + errorText(rc));
                if (!pause(retry))
                    break;
                retry = std::min(retry * 2, kLongestRetry);
                continue;
            }
            socketUp = true;
        }
        const int rc = mosquitto_loop(m_handle, 100, 1);
        if (m_connected)
            retry = kFirstRetry;
        if (rc != MOSQ_ERR_SUCCESS) {
            socketUp = false;
            tellLost("the connection to the broker was lost: " + errorText(rc));
            if (!pause(retry))
                break;
            retry = std::min(retry * 2, kLongestRetry);
        }
    }
    if (socketUp) {
        mosquitto_disconnect(m_handle);
        for (int i = 0; i < 5 && mosquitto_loop(m_handle, 20, 1) == MOSQ_ERR_SUCCESS; ++i) { }
    }
    m_connected = false;
}

} // namespace corvalog
