#include "acquisition/PacketDecoder.h"

#include "acquisition/PacketHandler.h"
#include "runtime/Clock.h"
#include "runtime/NumberLocale.h"
#include "runtime/VbError.h"
#include "values/ScriptClass.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace corvalog {
namespace {

using namespace std::string_literals;

// Wrong lengths are checked through corvalog-cli's decode.
TEST(DecodeDPP, DecodesEachTypeItsOwnWay)
{
    float nan;
    const std::uint32_t nanBits = 0xFF801234; // a signalling NaN, which must pass through
    std::memcpy(&nan, &nanBits, sizeof nan);
    const std::pair<std::string, Variant> cases[] = {
        { "\x01\xFF"s, Variant::integer(255) },
        { "\xF1\x07"s, Variant::integer(7) }, // high bits of the type ignored
        { "\x02\xFF\xFE"s, Variant::dbl(65534) },
        { "\x04\x3F\xC0\0\0"s, Variant::single(1.5f) },
        { "\x04\xFF\x80\x12\x34"s, Variant::single(nan) },
        { "\x05\x61\0\xE9"s, Variant::string("a\0\xE9"s) },
        { "\x06\x0A\x80"s, Variant::string("0A 80 ") },
        { "\x07\x01\x02\x03\x04"s, Variant::string("") },
        { std::string(), Variant::string("") },
    };
    for (const auto &[input, expected] : cases) {
        const Variant actual = DecodeDPP(input); // compared with its type; Singles bit for bit
        EXPECT_EQ(actual, expected) << int(input[0]) << ": " << typeName(actual.type()) << " "
                                    << actual.numberValue() << " '" << actual.rawString() << "'";
    }
}

// Rounding half to even is toInteger's, the clamps are checked through corvalog-cli.
TEST(LinkQuality, RoundsAndOverflowsAsSixteenBitSums)
{
    const struct {
        std::int16_t rssi, cv, expected; // -1: Overflow
    } cases[] = { { -44, 55, 62 } /* 61.75 */, { 32673, -32713, 0 } /* sums at their limits */,
        { 32700, 0, -1 }, { 0, -32768, -1 }, { 32000, 32000, -1 } };
    for (const auto &c : cases) {
        try {
            EXPECT_EQ(linkQuality(c.rssi, c.cv), c.expected) << c.rssi << ", " << c.cv;
        } catch (const VbError &e) {
            EXPECT_EQ(c.expected == -1 ? vberr::Overflow : 0, e.number()) << c.rssi;
        }
    }
}

// A notification is stored whole, or dropped after the writes made before its error. A value
// of 117 bytes is a binary record of which the first four (a big-endian Long) count; any other
// is decimal text in the handler's locale.
TEST(PacketHandler, StoresNotificationsWholeOrDropsThemAfterTheWritesMade)
{
    const struct {
        bool comma;
        std::int32_t tag, error;
        std::string value;
        std::int16_t rssi;
        float stored; // 0: nothing
    } cases[] = {
        { false, 5, 0, "7.5", -44, 7.5f },
        { false, 5, 0, "\xFF\xFF\xFF\xFE"s + std::string(113, '7'), -44, -2.0f },
        { false, 5, 0, std::string(117, '1'), -44, 825307456.0f }, // a Single's 24 bits
        { false, 5, 0, std::string(112, '0') + "12.5", -44, 12.5f },
        { true, 5, 0, "-12,5", -44, -12.5f },
        { false, 5, 0, "-12,5", -44, -125.0f }, // a point locale's grouping
        { false, 5, vberr::TypeMismatch, "abc", -60, 0 },
        { false, 5, vberr::Overflow, "7.5", 32700, 7.5f },
        { false, 65536, vberr::TypeMismatch, "abc", -60, 0 }, // the value goes first
    };
    for (const auto &c : cases) {
        ManualClock clock { 45000.25 };
        ScriptClass tables(clock);
        PacketHandler h(tables, c.comma ? NumberLocale::comma() : NumberLocale::point());
        tables.setTL(5, 33);
        h.DP_PacketArrived(1, c.tag, c.value, 0, c.rssi, 55, -1, 0x40);
        SCOPED_TRACE(c.value.substr(0, 8) + " error " + std::to_string(c.error));
        EXPECT_EQ(h.droppedCount(), c.error ? 1u : 0u);
        EXPECT_EQ(h.appliedCount(), c.error ? 0u : 1u);
        EXPECT_EQ(h.lastErrorNumber(), c.error);
        EXPECT_EQ(tables.T(5), c.stored);
        EXPECT_EQ(tables.arrivalTime(5), c.stored != 0 ? 45000.25 : 0.0);
        EXPECT_EQ(tables.TL(5), c.error ? 33 : 62);
        EXPECT_EQ(tables.TB(5), c.error ? 0 : -1);
        EXPECT_EQ(tables.TE(5), c.error ? 0 : 0x40);
    }
}

} // namespace
} // namespace corvalog
