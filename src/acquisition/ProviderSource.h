#pragma once

#include "MqttAddress.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvalog {

// Where packets come from, as named on the command line: "sim" or "sim:SEED" (the built-in
// simulated base station), "replay:FILE" (a packet recording), "udp:PORT" or "udp:HOST:PORT"
// (datagrams of recording lines; HOST defaults to 127.0.0.1), "serial" (a base station on the
// serial line the workspace's Interface, Port and Baudrate name), "serial:DEVICE[:BAUD]" (on
// that device) or "mqtt://HOST[:PORT]/PREFIX" ("mqtts://" with TLS: the relays publishing to a
// broker under PREFIX).
struct ProviderSource {
    enum class Kind { Simulated, Replay, Udp, Serial, Mqtt };
    Kind kind = Kind::Simulated;
    std::uint64_t seed = 1;
    std::string file;
    std::string host = "127.0.0.1";
    std::uint16_t port = 0;
    std::string device; // serial: "" for the workspace's line
    std::int32_t baudrate = 0; // serial: 0 for the workspace's (or USB's)
    MqttAddress mqtt;
    // The broker's CA file and the file with its user name and password; "" leaves them to the
    // driver settings (and, when those name none, to the system's CAs and no user).
    std::string mqttCaFile;
    std::string mqttCredentialsFile;
    std::string text; // as it was named

    // The source a text names; nothing (and `error` set) for a text that names none.
    static std::optional<ProviderSource> parse(std::string_view text, std::string *error = nullptr);
};

} // namespace corvalog
