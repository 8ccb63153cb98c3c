#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvalog {

// Where relays publish and sources subscribe: "mqtt://HOST[:PORT]/PREFIX" (a source) or
// "mqtt://HOST[:PORT]/PREFIX/STATION" (a relay); "mqtts://" for TLS. HOST may be an IPv6 address
// in brackets; the port defaults to 1883 (8883 with TLS). PREFIX may have several levels
// ("plant/hall1"); neither it nor STATION may hold the topic wildcards "+" and "#". A source may
// name its MQTT client id with "?client=ID" (its persistent session is kept under that id).
struct MqttAddress {
    bool tls = false;
    std::string host;
    std::uint16_t port = 0;
    std::string prefix;
    std::string station; // a relay's; empty for a source
    std::string clientId; // "" for the default
    std::string text; // as it was named

    // With `withStation`, the last level of the path is the station.
    static std::optional<MqttAddress> parse(
        std::string_view text, bool withStation, std::string *error = nullptr);

    // "PREFIX/STATION/packets": where a relay publishes.
    std::string packetsTopic() const;
    // "PREFIX/+/packets": what a source subscribes to.
    std::string subscription() const;
    // The station of a topic a source received on; "" when the topic is not PREFIX/STATION/packets.
    std::string stationOf(std::string_view topic) const;
    // "mqtt://HOST:PORT/PREFIX[/STATION]", the port always shown.
    std::string shown() const;
};

} // namespace corvalog
