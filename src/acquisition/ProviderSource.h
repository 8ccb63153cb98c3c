#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvalog {

// Where packets come from, as named on the command line: "sim" or "sim:SEED" (the built-in
// simulated base station), "replay:FILE" (a packet recording), "udp:PORT" or "udp:HOST:PORT"
// (datagrams of recording lines; HOST defaults to 127.0.0.1), "serial" (a base station on the
// serial line the workspace's Interface, Port and Baudrate name) or "serial:DEVICE[:BAUD]" (on
// that device).
struct ProviderSource {
    enum class Kind { Simulated, Replay, Udp, Serial };
    Kind kind = Kind::Simulated;
    std::uint64_t seed = 1;
    std::string file;
    std::string host = "127.0.0.1";
    std::uint16_t port = 0;
    std::string device; // serial: "" for the workspace's line
    std::int32_t baudrate = 0; // serial: 0 for the workspace's (or USB's)
    std::string text; // as it was named

    // The source a text names; nothing (and `error` set) for a text that names none.
    static std::optional<ProviderSource> parse(std::string_view text, std::string *error = nullptr);
};

} // namespace corvalog
