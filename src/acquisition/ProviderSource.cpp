#include "ProviderSource.h"

#include <charconv>

namespace corvalog {

namespace {

std::optional<ProviderSource> fail(std::string *error, std::string message)
{
    if (error)
        *error = std::move(message);
    return std::nullopt;
}

template <typename T> bool wholeNumber(std::string_view text, T &out)
{
    auto res = std::from_chars(text.data(), text.data() + text.size(), out);
    return !text.empty() && res.ec == std::errc() && res.ptr == text.data() + text.size();
}

} // namespace

std::optional<ProviderSource> ProviderSource::parse(std::string_view text, std::string *error)
{
    ProviderSource s;
    const auto colon = text.find(':');
    const std::string_view kind = text.substr(0, colon);
    const std::string_view rest
        = colon == std::string_view::npos ? std::string_view() : text.substr(colon + 1);
    if (kind == "sim") {
        s.kind = Kind::Simulated;
        if (colon != std::string_view::npos && !wholeNumber(rest, s.seed))
            return fail(
                error, "a simulator seed is a whole number, not '" + std::string(rest) + "'");
        return s;
    }
    if (kind == "replay") {
        s.kind = Kind::Replay;
        s.file = std::string(rest);
        if (s.file.empty())
            return fail(error, "replay needs a file: replay:FILE");
        return s;
    }
    if (kind == "udp") {
        s.kind = Kind::Udp;
        const auto lastColon = rest.rfind(':');
        std::string_view port = rest;
        if (lastColon != std::string_view::npos) {
            s.host = std::string(rest.substr(0, lastColon));
            port = rest.substr(lastColon + 1);
        }
        if (s.host.empty() || !wholeNumber(port, s.port) || s.port == 0)
            return fail(error, "udp needs a port from 1 to 65535: udp:[HOST:]PORT");
        return s;
    }
    return fail(error,
        "unknown source '" + std::string(text)
            + "' (use sim[:SEED], replay:FILE or udp:[HOST:]PORT)");
}

} // namespace corvalog
