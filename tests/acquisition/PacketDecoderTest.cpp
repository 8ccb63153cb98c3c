#include "acquisition/PacketDecoder.h"

#include "acquisition/PacketHandler.h"
#include "runtime/Clock.h"
#include "runtime/NumberLocale.h"
#include "runtime/VbError.h"
#include "values/ScriptClass.h"

#include <cstring>
#include <gtest/gtest.h>
#include <initializer_list>
#include <string>

namespace corvalog {
namespace {

std::string bytes(std::initializer_list<int> values)
{
    std::string s;
    for (const int v : values)
        s += static_cast<char>(v);
    return s;
}

Variant singleBits(std::uint32_t bits)
{
    float f;
    std::memcpy(&f, &bits, sizeof f);
    return Variant::single(f);
}

TEST(DecodeDPP, DecodesEachTypeAndRejectsWrongLengths)
{
    const Variant lengthMessage = Variant::string(std::string(kIncorrectDataLength));
    const struct {
        const char *name;
        std::string input;
        Variant expected; // compared with its type; Singles bit for bit
    } cases[] = {
        { "byte is an unsigned Integer", bytes({ 1, 0xFF }), Variant::integer(255) },
        { "high bits of the type ignored", bytes({ 0xF1, 7 }), Variant::integer(7) },
        { "word is an unsigned Double", bytes({ 2, 0xFF, 0xFE }), Variant::dbl(65534) },
        { "long", bytes({ 3, 0xFF, 0xFF, 0xFF, 0xFE }), Variant::longValue(-2) },
        { "single", bytes({ 4, 0x3F, 0xC0, 0, 0 }), Variant::single(1.5f) },
        { "signalling NaN passes through", bytes({ 4, 0xFF, 0x80, 0x12, 0x34 }),
            singleBits(0xFF801234) },
        { "text", bytes({ 5, 'a', 0, 0xE9 }), Variant::string(bytes({ 'a', 0, 0xE9 })) },
        { "hex", bytes({ 6, 0x0A, 0x80 }), Variant::string("0A 80 ") },
        { "type 7 is empty text", bytes({ 7, 1, 2, 3, 4 }), Variant::string("") },
        { "empty input is empty text", std::string(), Variant::string("") },
        { "byte without payload", bytes({ 1 }), lengthMessage },
        { "single of five bytes", bytes({ 4, 1, 2, 3, 4, 5 }), lengthMessage },
    };
    for (const auto &c : cases) {
        const Variant actual = DecodeDPP(c.input);
        EXPECT_EQ(actual, c.expected) << c.name << ": " << typeName(actual.type()) << " "
                                      << actual.numberValue() << " '" << actual.rawString() << "'";
    }
}

TEST(LinkQuality, FromSignalStrengthAndCorrelation)
{
    struct Case {
        std::int16_t rssi, cv, expected;
    };
    const Case cases[] = {
        { -69, 55, 0 }, // q 25: -1.625
        { -68, 55, 1 }, // q 26: 0.91
        { -45, 55, 59 }, // q 49: 59.215
        { -44, 55, 62 }, // q 50: 61.75
        { 32673, -32713, 0 }, // both sums at the 16-bit limits
    };
    for (const Case &c : cases)
        EXPECT_EQ(linkQuality(c.rssi, c.cv), c.expected) << c.rssi << ", " << c.cv;
}

TEST(LinkQuality, SixteenBitSumsOverflow)
{
    const std::int16_t overflowing[][2]
        = { { 32700, 0 }, { 0, -32768 }, { 32000, 32000 }, { -32768, -32700 } };
    for (const auto &c : overflowing) {
        try {
            linkQuality(c[0], c[1]);
            ADD_FAILURE() << c[0] << ", " << c[1] << " did not overflow";
        } catch (const VbError &e) {
            EXPECT_EQ(e.number(), vberr::Overflow);
        }
    }
}

TEST(LinkQuality, ClampsAndRoundsHalfToEven)
{
    const std::pair<float, int> cases[] = { { -1.5f, 0 }, { 0.5f, 0 }, { 1.5f, 2 }, { 2.5f, 2 },
        { 99.5f, 100 }, { 135.265f, 100 } };
    for (const auto &[level, expected] : cases)
        EXPECT_EQ(linkQualityPercent(level), expected) << level;
}

class PacketHandlerTest : public ::testing::Test
{
protected:
    ManualClock clock { 45000.25 };
    ScriptClass tables { clock };
    PacketHandler handler { tables };

    void arrive(std::int32_t tag, std::string_view value, std::int16_t rssi = -60,
        std::int16_t cv = 100, std::int16_t battLow = 0, std::int16_t error = 0)
    {
        handler.DP_PacketArrived(1, tag, value, 0, rssi, cv, battLow, error);
    }
};

TEST_F(PacketHandlerTest, StoresAllFourValuesAndStampsTheArrival)
{
    handler.DP_PacketArrived(PacketNotification { 1, 0xFF12, "12.5", 0, -44, 55, -1, 0x40 });
    EXPECT_EQ(tables.T(0xFF12), 12.5f);
    EXPECT_EQ(tables.TL(0xFF12), 62);
    EXPECT_EQ(tables.TB(0xFF12), -1);
    EXPECT_EQ(tables.TE(0xFF12), 0x40);
    EXPECT_EQ(tables.arrivalTime(0xFF12), 45000.25);
}

TEST_F(PacketHandlerTest, ValueOf117BytesIsABinaryRecord)
{
    arrive(1, bytes({ 0xFF, 0xFF, 0xFF, 0xFE }) + std::string(113, '7'));
    EXPECT_EQ(tables.T(1), -2.0f);
    // Whatever it holds: "1111" is 0x31313131, which a Single holds only to 24 bits.
    arrive(2, std::string(117, '1'));
    EXPECT_EQ(tables.T(2), 825307456.0f);
    // One shorter is decimal text again.
    arrive(3, std::string(112, '0') + "12.5");
    EXPECT_EQ(tables.T(3), 12.5f);
    EXPECT_EQ(handler.appliedCount(), 3u);
}

TEST_F(PacketHandlerTest, DecimalTextFollowsTheHandlersLocale)
{
    PacketHandler comma(tables, NumberLocale::comma());
    comma.DP_PacketArrived(1, 4, "-12,5", 0, -60, 100, 0, 0);
    EXPECT_EQ(tables.T(4), -12.5f);
    handler.DP_PacketArrived(1, 4, "-12,5", 0, -60, 100, 0, 0); // a point locale's: grouping
    EXPECT_EQ(tables.T(4), -125.0f);
}

struct DropCase {
    const char *name;
    std::int32_t tag;
    std::string value;
    std::int16_t rssi;
    int error;
    bool valueWritten;
};

TEST_F(PacketHandlerTest, FailingNotificationsAreDroppedAfterTheWritesMade)
{
    const DropCase cases[] = {
        { "not a number", 5, "abc", -60, vberr::TypeMismatch, false },
        { "RSSI overflow", 5, "7.5", 32700, vberr::Overflow, true },
        { "tag above range", 65536, "7.5", -60, vberr::SubscriptOutOfRange, false },
        { "value before tag", 65536, "abc", -60, vberr::TypeMismatch, false },
    };
    for (const DropCase &c : cases) {
        ScriptClass fresh(clock);
        PacketHandler h(fresh);
        fresh.setTL(5, 33);
        h.DP_PacketArrived(1, c.tag, c.value, 0, c.rssi, 100, 1, 2);
        EXPECT_EQ(h.droppedCount(), 1u) << c.name;
        EXPECT_EQ(h.appliedCount(), 0u) << c.name;
        EXPECT_EQ(h.lastErrorNumber(), c.error) << c.name;
        EXPECT_EQ(h.lastErrorDescription(), vbErrorDescription(c.error)) << c.name;
        EXPECT_EQ(fresh.T(5), c.valueWritten ? 7.5f : 0.0f) << c.name;
        EXPECT_EQ(fresh.arrivalTime(5), c.valueWritten ? 45000.25 : 0.0) << c.name;
        EXPECT_EQ(fresh.TL(5), 33) << c.name;
        EXPECT_EQ(fresh.TB(5) + fresh.TE(5), 0) << c.name;
    }
}

} // namespace
} // namespace corvalog
