#include "acquisition/PacketDecoder.h"
#include "acquisition/PacketHandler.h"
#include "runtime/Clock.h"
#include "values/ScriptClass.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace {

std::int16_t int16At(const std::uint8_t *data, std::size_t size, std::size_t at)
{
    std::int16_t v = 0;
    if (at + sizeof v <= size)
        std::memcpy(&v, data + at, sizeof v);
    return v;
}

} // namespace

// Decodes the input as a typed value text and as a whole notification (tag, RSSI, CV and the
// flags from its first bytes, the rest as the value).
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    using namespace corvalog;
    const std::string_view text(reinterpret_cast<const char *>(data), size);
    DecodeDPP(text);
    CVStr2HEX(text);

    static ManualClock clock(45000.5);
    static ScriptClass tables(clock);
    static PacketHandler handler(tables, NumberLocale::point());
    std::int32_t tag = 0;
    if (size >= 4)
        std::memcpy(&tag, data, sizeof tag);
    const std::string_view value = size > 12 ? text.substr(12) : std::string_view();
    handler.DP_PacketArrived(0, tag, value, 0, int16At(data, size, 4), int16At(data, size, 6),
        int16At(data, size, 8), int16At(data, size, 10));
    if (size > 12 && (data[12] & 1)) // also reach the raw-record branch
        handler.DP_PacketArrived(0, tag & 0xFFFF, std::string(117, text[12]), 0, 0, 0, 0, 0);
    return 0;
}
