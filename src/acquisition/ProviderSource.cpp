#include "ProviderSource.h"

#include "runtime/ReadNumber.h"

namespace corvalog {

namespace {

std::optional<ProviderSource> fail(std::string *error, std::string message)
{
    if (error)
        *error = std::move(message);
    return std::nullopt;
}

} // namespace

std::optional<ProviderSource> ProviderSource::parse(std::string_view text, std::string *error)
{
    ProviderSource s;
    s.text = std::string(text);
    if (text.substr(0, 7) == "mqtt://" || text.substr(0, 8) == "mqtts://") {
        s.kind = Kind::Mqtt;
        std::optional<MqttAddress> address = MqttAddress::parse(text, false, error);
        if (!address)
            return std::nullopt;
        s.mqtt = std::move(*address);
        return s;
    }
    const auto colon = text.find(':');
    const std::string_view kind = text.substr(0, colon);
    const std::string_view rest
        = colon == std::string_view::npos ? std::string_view() : text.substr(colon + 1);
    if (kind == "sim") {
        s.kind = Kind::Simulated;
        if (colon != std::string_view::npos && !readNumber(rest, s.seed))
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
        if (s.host.empty() || !readNumber(port, s.port) || s.port == 0)
            return fail(error, "udp needs a port from 1 to 65535: udp:[HOST:]PORT");
        return s;
    }
    if (kind == "serial") {
        s.kind = Kind::Serial;
        if (colon == std::string_view::npos)
            return s;
        // A trailing ":digits" is the speed; a device path holds no colon of its own.
        std::string_view device = rest;
        const auto lastColon = rest.rfind(':');
        if (lastColon != std::string_view::npos) {
            const std::string_view baud = rest.substr(lastColon + 1);
            if (!readNumber(baud, s.baudrate) || s.baudrate <= 0)
                return fail(error,
                    "a serial speed is a whole number of baud above 0, not '" + std::string(baud)
                        + "'");
            device = rest.substr(0, lastColon);
        }
        if (device.empty())
            return fail(error, "serial needs a device: serial:DEVICE[:BAUD]");
        s.device = std::string(device);
        return s;
    }
    return fail(error,
        "unknown source '" + std::string(text)
            + "' (use sim[:SEED], replay:FILE, udp:[HOST:]PORT, serial[:DEVICE[:BAUD]] or "
              "mqtt://HOST[:PORT]/PREFIX)");
}

} // namespace corvalog
