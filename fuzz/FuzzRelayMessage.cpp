#include "acquisition/MqttAddress.h"
#include "acquisition/MqttPayload.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using namespace corvalog;

[[noreturn]] void fail(const char *what, const std::string &written)
{
    std::fprintf(stderr, "%s\nwritten: %s\n", what, written.c_str());
    std::abort();
}

} // namespace

// Reads the input as a broker message (and as a broker address): whatever reads must be
// written as a message that reads back as the same packets.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char *>(data), size);
    MqttAddress::parse(text, false);
    MqttAddress::parse(text, true);
    RelayMessage message;
    std::string error;
    std::vector<std::string> bad;
    if (!decodeRelayMessage(text, message, error, bad, NumberLocale::point()))
        return 0;
    const std::string written = encodeRelayMessage(message, NumberLocale::point());
    RelayMessage again;
    bad.clear();
    if (!decodeRelayMessage(written, again, error, bad, NumberLocale::point()) || !bad.empty())
        fail(("written message does not read: " + error).c_str(), written);
    if (again.station != message.station || again.seq != message.seq || again.times != message.times
        || again.packets.size() != message.packets.size())
        fail("written message reads as another", written);
    for (std::size_t i = 0; i < again.packets.size(); ++i) {
        const PacketNotification &x = message.packets[i];
        const PacketNotification &y = again.packets[i];
        if (x.Value != y.Value || x.Datatag != y.Datatag || x.BaseStation != y.BaseStation
            || x.RSSI != y.RSSI || x.CV != y.CV || x.Status != y.Status || x.BattLow != y.BattLow
            || x.Error != y.Error)
            fail("a packet reads back as another", written);
    }
    return 0;
}
