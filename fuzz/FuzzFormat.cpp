#include "runtime/Format.h"
#include "runtime/VbError.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

// Input: eight bytes for the value, then the pattern text. Every value kind goes through the
// same pattern; Format must return text for all of them.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    using corvalog::Variant;
    if (size < 8)
        return 0;
    double d = 0;
    std::memcpy(&d, data, sizeof d);
    float f = 0;
    std::memcpy(&f, data, sizeof f);
    std::int32_t l = 0;
    std::memcpy(&l, data + 4, sizeof l);
    const std::string_view pattern(reinterpret_cast<const char *>(data + 8), size - 8);

    const Variant values[] = { Variant::single(f), Variant::dbl(d), Variant::longValue(l),
        Variant::date(static_cast<double>(l) / 7.0), Variant::date(d),
        Variant::string(std::string(reinterpret_cast<const char *>(data), 8)),
        Variant::string(std::to_string(l)), Variant(), Variant::null(), Variant::boolean(l & 1) };
    for (const Variant &value : values) {
        // Output grows with the pattern ("c" writes a whole date) and a Double's 309 digits.
        if (corvalog::Format(value, pattern).size() > 32 * pattern.size() + 1000)
            __builtin_trap();
    }
    return 0;
}
