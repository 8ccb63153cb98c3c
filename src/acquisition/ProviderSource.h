#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvalog {

// Where packets come from, as named on the command line: "sim" or "sim:SEED" (the built-in
// simulated base station), "replay:FILE" (a packet recording), "udp:PORT" or "udp:HOST:PORT"
// (datagrams of recording lines; HOST defaults to 127.0.0.1).
struct ProviderSource {
    enum class Kind { Simulated, Replay, Udp };
    Kind kind = Kind::Simulated;
    std::uint64_t seed = 1;
    std::string file;
    std::string host = "127.0.0.1";
    std::uint16_t port = 0;

    // The source a text names; nothing (and `error` set) for a text that names none.
    static std::optional<ProviderSource> parse(std::string_view text, std::string *error = nullptr);
};

} // namespace corvalog
