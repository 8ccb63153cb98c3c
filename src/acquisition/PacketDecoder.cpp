#include "PacketDecoder.h"

#include "runtime/Convert.h"
#include "runtime/VbError.h"

#include <cstring>

namespace corvalog {

namespace {

std::uint32_t bigEndian32(std::string_view payload)
{
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < 4; ++i)
        bits = (bits << 8) | static_cast<unsigned char>(payload[i]);
    return bits;
}

} // namespace

Variant DecodeDPP(std::string_view typedValueText)
{
    // An empty text has no type byte; it decodes like an unknown type rather than failing.
    if (typedValueText.empty())
        return Variant::string({});
    const int type = static_cast<unsigned char>(typedValueText[0]) & 15;
    const std::string_view payload = typedValueText.substr(1);
    auto byteAt = [&payload](std::size_t i) { return static_cast<unsigned char>(payload[i]); };
    const std::size_t required[] = { 0, 1, 2, 4, 4 };
    if (type >= 1 && type <= 4 && payload.size() != required[type])
        return Variant::string(std::string(kIncorrectDataLength));

    switch (type) {
    case 1:
        return Variant::integer(byteAt(0));
    case 2:
        return Variant::dbl(byteAt(0) * 256.0 + byteAt(1));
    case 3:
        return Variant::longValue(static_cast<std::int32_t>(bigEndian32(payload)));
    case 4: {
        // The bits are reinterpreted, never converted, so NaN payloads survive.
        const std::uint32_t bits = bigEndian32(payload);
        float value;
        std::memcpy(&value, &bits, sizeof value);
        return Variant::single(value);
    }
    case 5:
        return Variant::string(std::string(payload));
    case 6:
        return Variant::string(CVStr2HEX(payload));
    default:
        return Variant::string({});
    }
}

std::string CVStr2HEX(std::string_view bytes)
{
    static const char kHex[] = "0123456789ABCDEF";
    std::string out(bytes.size() * 3, ' ');
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto b = static_cast<unsigned char>(bytes[i]);
        out[3 * i] = kHex[b >> 4];
        out[3 * i + 1] = kHex[b & 15];
    }
    return out;
}

std::int16_t linkQuality(std::int16_t rssi, std::int16_t cv)
{
    auto checked = [](int sum) {
        if (sum < -32768 || sum > 32767)
            throw VbError(vberr::Overflow);
        return sum;
    };
    const int q = checked(checked(rssi + 94) + checked(cv - 55));
    // Double arithmetic held in a Single, as the value is computed and then stored.
    const auto level = static_cast<float>(((q / 2.0) * 3.9 - 50.0) * 1.3);
    return linkQualityPercent(level);
}

std::int16_t linkQualityPercent(float level)
{
    if (level < 0.0f)
        level = 0.0f;
    if (level > 100.0f)
        level = 100.0f;
    return toInteger(level);
}

} // namespace corvalog
