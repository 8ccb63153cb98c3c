#pragma once

#include "runtime/Variant.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace corvalog {

// The text DecodeDPP returns when the payload length does not fit types 1 to 4.
inline constexpr std::string_view kIncorrectDataLength
    = "Incorrect data length to decode data type!";

// Decodes a typed value text: type = first byte AND 15, then a big-endian payload. 1 Integer
// (1 byte), 2 Double (2 bytes, unsigned), 3 Long (4 bytes), 4 Single (4 bytes, bits as they
// are), 5 the payload as text, 6 the payload in hex (CVStr2HEX); other types and an empty input
// give an empty String. Never raises: a wrong length gives kIncorrectDataLength as a String.
Variant DecodeDPP(std::string_view typedValueText);

// Each byte as two upper-case hex digits and one blank: bytes 0A FF give "0A FF ".
std::string CVStr2HEX(std::string_view bytes);

// Link quality 0..100 from a radio's signal strength and correlation value. Raises Overflow (6)
// when one of the 16-bit sums (RSSI + 94, CV - 55, their total) does not fit.
std::int16_t linkQuality(std::int16_t rssi, std::int16_t cv);

// A link-quality level clamped to 0..100 and rounded half to even (2.5 -> 2, 3.5 -> 4).
std::int16_t linkQualityPercent(float level);

} // namespace corvalog
