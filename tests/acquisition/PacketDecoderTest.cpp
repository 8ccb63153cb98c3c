#include "acquisition/PacketDecoder.h"

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

struct DecodeCase {
    const char *name;
    std::string input;
    Variant expected; // compared with its type; Singles bit for bit
};

void PrintTo(const DecodeCase &c, std::ostream *os)
{
    *os << c.name;
}

class DecodeDPPCases : public ::testing::TestWithParam<DecodeCase>
{
};

TEST_P(DecodeDPPCases, Decodes)
{
    const Variant actual = DecodeDPP(GetParam().input);
    EXPECT_EQ(actual, GetParam().expected) << typeName(actual.type()) << " " << actual.numberValue()
                                           << " '" << actual.rawString() << "'";
}

const Variant kLengthMessage = Variant::string(std::string(kIncorrectDataLength));

INSTANTIATE_TEST_SUITE_P(Types, DecodeDPPCases,
    ::testing::Values(
        DecodeCase { "ByteIsUnsignedInteger", bytes({ 1, 0xFF }), Variant::integer(255) },
        DecodeCase { "HighBitsOfTypeIgnored", bytes({ 0xF1, 7 }), Variant::integer(7) },
        DecodeCase { "WordIsUnsignedDouble", bytes({ 2, 0xFF, 0xFE }), Variant::dbl(65534) },
        DecodeCase { "WordBigEndian", bytes({ 2, 1, 2 }), Variant::dbl(258) },
        DecodeCase { "LongMinusTwo", bytes({ 3, 0xFF, 0xFF, 0xFF, 0xFE }), Variant::longValue(-2) },
        DecodeCase { "Type0x13IsLong", bytes({ 0x13, 0, 0, 1, 0 }), Variant::longValue(256) },
        DecodeCase { "LongMinimum", bytes({ 3, 0x80, 0, 0, 0 }), Variant::longValue(INT32_MIN) },
        DecodeCase { "SingleOneAndAHalf", bytes({ 4, 0x3F, 0xC0, 0, 0 }), Variant::single(1.5f) },
        DecodeCase {
            "QuietNaNPassesThrough", bytes({ 4, 0x7F, 0xC0, 0, 1 }), singleBits(0x7FC00001) },
        DecodeCase { "SignallingNaNPassesThrough", bytes({ 4, 0xFF, 0x80, 0x12, 0x34 }),
            singleBits(0xFF801234) },
        DecodeCase { "MinusInfinity", bytes({ 4, 0xFF, 0x80, 0, 0 }), singleBits(0xFF800000) },
        DecodeCase {
            "TextPayload", bytes({ 5, 'a', 0, 0xE9 }), Variant::string(bytes({ 'a', 0, 0xE9 })) },
        DecodeCase { "EmptyTextPayload", bytes({ 0x25 }), Variant::string("") },
        DecodeCase { "HexPayload", bytes({ 6, 0x0A, 0xFF }), Variant::string("0A FF ") },
        DecodeCase { "Type7IsEmptyText", bytes({ 7, 1, 2, 3, 4 }), Variant::string("") },
        DecodeCase { "Type0IsEmptyText", bytes({ 0 }), Variant::string("") },
        DecodeCase { "Type15IsEmptyText", bytes({ 0x0F, 1 }), Variant::string("") },
        DecodeCase { "EmptyInputIsEmptyText", std::string(), Variant::string("") },
        DecodeCase { "ByteWithoutPayload", bytes({ 1 }), kLengthMessage },
        DecodeCase { "ByteTooLong", bytes({ 1, 1, 2 }), kLengthMessage },
        DecodeCase { "WordOfThreeBytes", bytes({ 2, 1, 2, 3 }), kLengthMessage },
        DecodeCase { "LongOfThreeBytes", bytes({ 3, 1, 2, 3 }), kLengthMessage },
        DecodeCase { "SingleOfFiveBytes", bytes({ 4, 1, 2, 3, 4, 5 }), kLengthMessage }),
    [](const auto &info) { return std::string(info.param.name); });

TEST(CVStr2HEX, TwoUpperCaseDigitsAndABlankPerByte)
{
    EXPECT_EQ(CVStr2HEX(""), "");
    EXPECT_EQ(CVStr2HEX(bytes({ 5 })), "05 ");
    EXPECT_EQ(CVStr2HEX(bytes({ 0, 0x7F, 0x80, 0xAB })), "00 7F 80 AB ");
}

TEST(LinkQuality, FromSignalStrengthAndCorrelation)
{
    struct Case {
        std::int16_t rssi, cv, expected;
    };
    const Case cases[] = {
        { -60, 100, 100 }, // q 79: 135.265, clamped
        { -90, 60, 0 }, // q 9: negative, clamped
        { -69, 55, 0 }, // q 25: -1.625
        { -68, 55, 1 }, // q 26: 0.91
        { -50, 55, 47 }, // q 44: 46.54
        { -45, 55, 59 }, // q 49: 59.215
        { -44, 55, 62 }, // q 50: 61.75
        { -29, 55, 100 }, // q 65: 99.775
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
    EXPECT_EQ(linkQuality(32673, 0), 100); // RSSI + 94 = 32767 still fits
}

TEST(LinkQuality, ClampsAndRoundsHalfToEven)
{
    const std::pair<float, int> cases[]
        = { { -0.4f, 0 }, { 0.0f, 0 }, { 0.5f, 0 }, { 1.5f, 2 }, { 2.5f, 2 }, { 3.5f, 4 },
              { 99.5f, 100 }, { 100.0f, 100 }, { 100.4f, 100 }, { 135.265f, 100 } };
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
    PacketNotification packet;
    packet.Datatag = 0xFF12;
    packet.Value = "12.5";
    packet.RSSI = -44;
    packet.CV = 55;
    packet.BattLow = -1;
    packet.Error = 0x40;
    handler.DP_PacketArrived(packet);
    EXPECT_EQ(tables.T(0xFF12), 12.5f);
    EXPECT_EQ(tables.TL(0xFF12), 62);
    EXPECT_EQ(tables.TB(0xFF12), -1);
    EXPECT_EQ(tables.TE(0xFF12), 0x40);
    EXPECT_EQ(tables.arrivalTime(0xFF12), 45000.25);
    arrive(0xFF12, "x");
    arrive(0xFF12, "13");
    EXPECT_EQ(tables.T(0xFF12), 13.0f);
    EXPECT_EQ(handler.appliedCount(), 2u);
    EXPECT_EQ(handler.droppedCount(), 1u);
    EXPECT_EQ(handler.lastErrorNumber(), vberr::TypeMismatch);
}

TEST_F(PacketHandlerTest, ValueOf117BytesIsABinaryRecord)
{
    arrive(1, bytes({ 0xFF, 0xFF, 0xFF, 0xFE }) + std::string(113, '7'));
    EXPECT_EQ(tables.T(1), -2.0f);
    // Whatever it holds: "1111" is 0x31313131, which a Single holds only to 24 bits.
    arrive(2, std::string(117, '1'));
    EXPECT_EQ(tables.T(2), static_cast<float>(0x31313131));
    EXPECT_EQ(tables.T(2), 825307456.0f);
    // One shorter is decimal text again.
    arrive(3, std::string(112, '0') + "12.5");
    EXPECT_EQ(tables.T(3), 12.5f);
    EXPECT_EQ(handler.appliedCount(), 3u);
}

TEST_F(PacketHandlerTest, DecimalTextFollowsTheLocale)
{
    ScopedNumberLocale comma(NumberLocale::comma());
    arrive(4, "-12,5");
    EXPECT_EQ(tables.T(4), -12.5f);
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
        { "empty value", 5, "", -60, vberr::TypeMismatch, false },
        { "RSSI overflow", 5, "7.5", 32700, vberr::Overflow, true },
        { "tag above range", 65536, "7.5", -60, vberr::SubscriptOutOfRange, false },
        { "negative tag", -1, "7.5", -60, vberr::SubscriptOutOfRange, false },
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
