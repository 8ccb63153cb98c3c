#include "MqttAddress.h"

#include "runtime/ReadNumber.h"

namespace corvalog {

namespace {

constexpr std::uint16_t kPlainPort = 1883;
constexpr std::uint16_t kTlsPort = 8883;
constexpr std::string_view kPacketsLevel = "/packets";

std::optional<MqttAddress> fail(std::string *error, std::string message)
{
    if (error)
        *error = std::move(message);
    return std::nullopt;
}

// A topic level or levels as a publisher may name them: no wildcards, no empty level.
bool plainLevels(std::string_view levels)
{
    if (levels.empty() || levels.front() == '/' || levels.back() == '/')
        return false;
    if (levels.find("//") != std::string_view::npos)
        return false;
    return levels.find_first_of("+#") == std::string_view::npos
        && levels.find('\0') == std::string_view::npos;
}

} // namespace

std::optional<MqttAddress> MqttAddress::parse(
    std::string_view text, bool withStation, std::string *error)
{
    const std::string usage
        = withStation ? "mqtt://HOST[:PORT]/PREFIX/STATION" : "mqtt://HOST[:PORT]/PREFIX";
    MqttAddress a;
    a.text = std::string(text);
    std::string_view rest = text;
    if (rest.substr(0, 7) == "mqtt://") {
        rest.remove_prefix(7);
    } else if (rest.substr(0, 8) == "mqtts://") {
        a.tls = true;
        rest.remove_prefix(8);
    } else {
        return fail(error, "a broker address starts with mqtt:// or mqtts://: " + usage);
    }
    const std::size_t query = rest.find('?');
    if (query != std::string_view::npos) {
        const std::string_view option = rest.substr(query + 1);
        rest = rest.substr(0, query);
        if (withStation || option.substr(0, 7) != "client=" || option.size() == 7)
            return fail(error,
                "the only option of a broker source is ?client=ID, not '" + std::string(option)
                    + "'");
        a.clientId = std::string(option.substr(7));
    }
    const std::size_t slash = rest.find('/');
    if (slash == std::string_view::npos)
        return fail(error, "the address names no topic prefix: " + usage);
    std::string_view authority = rest.substr(0, slash);
    std::string_view path = rest.substr(slash + 1);

    std::string_view port;
    if (!authority.empty() && authority.front() == '[') {
        const std::size_t close = authority.find(']');
        if (close == std::string_view::npos)
            return fail(error, "an IPv6 host is written in brackets: mqtt://[::1]:1883/PREFIX");
        a.host = std::string(authority.substr(1, close - 1));
        const std::string_view after = authority.substr(close + 1);
        if (!after.empty()) {
            if (after.front() != ':')
                return fail(error, "the port follows the host after a colon: " + usage);
            port = after.substr(1);
        }
    } else {
        const std::size_t colon = authority.find(':');
        a.host = std::string(authority.substr(0, colon));
        if (colon != std::string_view::npos)
            port = authority.substr(colon + 1);
    }
    if (a.host.empty())
        return fail(error, "the address names no broker host: " + usage);
    a.port = a.tls ? kTlsPort : kPlainPort;
    if (!port.empty() || authority.back() == ':') {
        if (!readNumber(port, a.port) || a.port == 0)
            return fail(error, "a broker port is a number from 1 to 65535: " + usage);
    }

    if (withStation) {
        const std::size_t last = path.rfind('/');
        if (last == std::string_view::npos)
            return fail(error, "the address names no station after its prefix: " + usage);
        a.station = std::string(path.substr(last + 1));
        path = path.substr(0, last);
        if (!plainLevels(a.station) || a.station.find('/') != std::string::npos)
            return fail(
                error, "a station name holds no '/', '+' or '#' and is not empty: " + usage);
    }
    if (!plainLevels(path))
        return fail(
            error, "a topic prefix holds no '+', '#' or empty levels, and is not empty: " + usage);
    a.prefix = std::string(path);
    return a;
}

std::string MqttAddress::packetsTopic() const
{
    return prefix + "/" + station + std::string(kPacketsLevel);
}

std::string MqttAddress::subscription() const
{
    return prefix + "/+" + std::string(kPacketsLevel);
}

std::string MqttAddress::stationOf(std::string_view topic) const
{
    if (topic.size() <= prefix.size() + 1 + kPacketsLevel.size()
        || topic.substr(0, prefix.size()) != prefix || topic[prefix.size()] != '/'
        || topic.substr(topic.size() - kPacketsLevel.size()) != kPacketsLevel)
        return {};
    const std::string_view station
        = topic.substr(prefix.size() + 1, topic.size() - prefix.size() - 1 - kPacketsLevel.size());
    if (station.empty() || station.find('/') != std::string_view::npos)
        return {};
    return std::string(station);
}

std::string MqttAddress::shown() const
{
    const bool v6 = host.find(':') != std::string::npos;
    std::string s = tls ? "mqtts://" : "mqtt://";
    s += v6 ? "[" + host + "]" : host;
    s += ":" + std::to_string(port) + "/" + prefix;
    if (!station.empty())
        s += "/" + station;
    return s;
}

} // namespace corvalog
