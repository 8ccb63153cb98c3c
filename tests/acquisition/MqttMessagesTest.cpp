#include "acquisition/MqttAddress.h"
#include "acquisition/MqttPayload.h"
#include "acquisition/SeqWindow.h"

#include <gtest/gtest.h>

namespace corvalog {
namespace {

TEST(MqttAddress, ReadsSourcesAndRelaysAndSaysWhatIsWrong)
{
    const struct {
        const char *text;
        bool withStation;
        const char *shown; // "" when refused
        const char *subscriptionOrTopic;
    } cases[] = {
        { "mqtt://broker/plant", false, "mqtt://broker:1883/plant", "plant/+/packets" },
        { "mqtts://broker:9000/plant/hall1", false, "mqtts://broker:9000/plant/hall1",
            "plant/hall1/+/packets" },
        { "mqtts://broker/p", false, "mqtts://broker:8883/p", "p/+/packets" },
        { "mqtt://[::1]:1884/p/bench1", true, "mqtt://[::1]:1884/p/bench1", "p/bench1/packets" },
        { "mqtt://h/plant/hall1/bench1", true, "mqtt://h:1883/plant/hall1/bench1",
            "plant/hall1/bench1/packets" },
        { "mqtt://h/p?client=rec1", false, "mqtt://h:1883/p", "p/+/packets" },
        { "mqtt://h/p", true, "", "" }, // a relay needs its station
        { "mqtt://h", false, "", "" },
        { "mqtt:///p", false, "", "" },
        { "mqtt://h:0/p", false, "", "" },
        { "mqtt://h:70000/p", false, "", "" },
        { "mqtt://h:/p", false, "", "" },
        { "mqtt://h/p/+", false, "", "" },
        { "mqtt://h/p//x", false, "", "" },
        { "mqtt://h/p/#/s", true, "", "" },
        { "mqtt://h/p/s?client=x", true, "", "" },
        { "mqtt://h/p?clientx", false, "", "" },
        { "http://h/p", false, "", "" },
    };
    for (const auto &c : cases) {
        std::string error;
        const std::optional<MqttAddress> a = MqttAddress::parse(c.text, c.withStation, &error);
        if (!*c.shown) {
            EXPECT_FALSE(a) << c.text;
            EXPECT_FALSE(error.empty()) << c.text;
            continue;
        }
        ASSERT_TRUE(a) << c.text << ": " << error;
        EXPECT_EQ(a->shown(), c.shown);
        EXPECT_EQ(c.withStation ? a->packetsTopic() : a->subscription(), c.subscriptionOrTopic);
    }
    const MqttAddress source = *MqttAddress::parse("mqtt://h/plant/hall1?client=rec1", false);
    EXPECT_EQ(source.clientId, "rec1");
    const std::pair<const char *, const char *> topics[] = {
        { "plant/hall1/bench1/packets", "bench1" },
        { "plant/hall1/packets", "" },
        { "plant/hall1/a/b/packets", "" },
        { "plant/hall2/bench1/packets", "" },
        { "plant/hall1/bench1/status", "" },
    };
    for (const auto &[topic, station] : topics)
        EXPECT_EQ(source.stationOf(topic), station) << topic;
}

RelayMessage message()
{
    RelayMessage m;
    m.station = "bench \"1\"";
    m.seq = 9007199254740992; // 2^53: the largest a JSON number keeps exactly
    PacketNotification text;
    text.BaseStation = 1;
    text.Datatag = 0xFF12;
    text.Value = "12,5"; // a comma locale's decimal separator goes out as "."
    text.RSSI = -60;
    text.CV = 100;
    text.BattLow = -1;
    PacketNotification bytes = text;
    bytes.Datatag = 0x0012;
    bytes.Value = std::string("\x01\x00\xff\"", 4);
    bytes.Error = static_cast<std::int16_t>(0xFFFF);
    m.packets = { text, bytes };
    m.times = { 1795464000123, 1795464000124 };
    return m;
}

TEST(MqttPayload, AMessageReadsBackAsItWasInEveryLocale)
{
    const NumberLocale comma = NumberLocale::comma();
    const std::string payload = encodeRelayMessage(message(), comma);
    EXPECT_NE(payload.find(R"({"t":"2026-11-23T20:00:00.123Z","bs":1,"tag":"FF12","value":"12.5",)"
                           R"("status":0,"rssi":-60,"cv":100,"batt":-1,"err":0})"),
        std::string::npos)
        << payload;
    EXPECT_NE(payload.find(R"("value":"hex:0100FF22")"), std::string::npos) << payload;
    for (const NumberLocale &locale : { comma, NumberLocale::point() }) {
        RelayMessage back;
        std::string error;
        std::vector<std::string> bad;
        ASSERT_TRUE(decodeRelayMessage(payload, back, error, bad, locale)) << error;
        EXPECT_TRUE(bad.empty());
        EXPECT_EQ(back.station, message().station);
        EXPECT_EQ(back.seq, message().seq);
        EXPECT_EQ(back.times, message().times);
        ASSERT_EQ(back.packets.size(), 2u);
        EXPECT_EQ(back.packets[0].Value, locale.commaDecimal() ? "12,5" : "12.5");
        EXPECT_EQ(back.packets[1].Value, message().packets[1].Value);
        EXPECT_EQ(back.packets[1].Error, message().packets[1].Error);
        EXPECT_EQ(back.packets[0].BattLow, -1);
    }
}

TEST(MqttPayload, WhatIsNotAMessageIsRefusedAndABadPacketCostsOnlyItself)
{
    const char *good = R"({"t":"2026-11-23T20:00:00Z","bs":1,"tag":"ff12","value":"1","status":0,)"
                       R"("rssi":-60,"cv":100,"batt":0,"err":0})";
    const std::string goodText(good);
    const struct {
        std::string payload;
        bool read;
        std::size_t packets;
        const char *firstBad;
    } cases[] = {
        { "garbage", false, 0, "" },
        { "[1,2]", false, 0, "" },
        { R"({"seq":1,"packets":[]})", false, 0, "" },
        { R"({"station":"s","seq":0,"packets":[]})", false, 0, "" },
        { R"({"station":"s","seq":1.5,"packets":[]})", false, 0, "" },
        { R"({"station":"s","seq":1,"packets":{}})", false, 0, "" },
        { R"({"station":"s","seq":1,"packets":[)" + goodText + "]}", true, 1, "" },
        { R"({"station":"s","seq":1,"packets":[7,)" + goodText + "]}", true, 1,
            "packet 1: not an object" },
        { R"({"station":"s","seq":1,"packets":[{"t":"yesterday"},)" + goodText + "]}", true, 1,
            "packet 1: \"t\" is not a UTC time like 2026-11-23T20:00:00.123Z" },
        { R"({"station":"s","seq":1,"packets":[)"
                + std::string(good).replace(goodText.find("ff12"), 4, "12345") + "]}",
            true, 0, "packet 1: \"tag\" is not one to four hex digits" },
        { R"({"station":"s","seq":1,"packets":[)"
                + std::string(good).replace(goodText.find("-60"), 3, "-99999") + "]}",
            true, 0, "packet 1: \"rssi\" is not a whole number from -32768 to 32767" },
        { R"({"station":"s","seq":1,"packets":[)"
                + std::string(good).replace(goodText.find("\"1\""), 3, "\"hex:1\"") + "]}",
            true, 0, "packet 1: \"value\" is not a value text or hex: and byte pairs" },
    };
    for (const auto &c : cases) {
        RelayMessage m;
        std::string error;
        std::vector<std::string> bad;
        EXPECT_EQ(decodeRelayMessage(c.payload, m, error, bad, NumberLocale::point()), c.read)
            << c.payload;
        if (!c.read) {
            EXPECT_FALSE(error.empty()) << c.payload;
            continue;
        }
        EXPECT_EQ(m.packets.size(), c.packets) << c.payload;
        EXPECT_EQ(bad.empty() ? "" : bad.front(), c.firstBad) << c.payload;
    }
}

TEST(MqttPayload, UtcTimesReadBackAndNothingElseReads)
{
    const std::pair<std::int64_t, const char *> times[] = {
        { 0, "1970-01-01T00:00:00.000Z" },
        { 1795464000123, "2026-11-23T20:00:00.123Z" },
        { 951782400000, "2000-02-29T00:00:00.000Z" },
        { -1, "1969-12-31T23:59:59.999Z" },
    };
    for (const auto &[ms, text] : times) {
        EXPECT_EQ(utcText(ms), text);
        std::int64_t back = 0;
        EXPECT_TRUE(readUtcText(text, back));
        EXPECT_EQ(back, ms);
    }
    std::int64_t ms = 0;
    ASSERT_TRUE(readUtcText("2026-11-23T20:00:00.5Z", ms));
    EXPECT_EQ(ms % 1000, 500);
    for (const char *bad : { "2026-11-23T20:00:00", "2026-13-23T20:00:00Z", "2026-11-23 20:00:00Z",
             "2026-11-23T20:00:00.1234Z", "2026-11-23T20:00:00.Z", "x" })
        EXPECT_FALSE(readUtcText(bad, ms)) << bad;
}

// Repeats are dropped within the window, late messages are still taken once, and a sender far
// below its window has started again.
TEST(SeqWindow, EachNumberIsTakenOnce)
{
    const std::uint64_t far = SeqWindow::kWidth + 10;
    const struct {
        std::vector<std::uint64_t> seqs;
        std::vector<bool> taken;
    } cases[] = {
        { { 1, 2, 3, 2, 3, 4 }, { true, true, true, false, false, true } },
        { { 5, 3, 4, 3, 5 }, { true, true, true, false, false } },
        { { 1, 1 + far, 1, 2 }, { true, true, true, true } }, // 1 fell out: a restart
        { { 100, 100 + SeqWindow::kWidth - 1, 100 }, { true, true, false } },
        { { 7, 7 + 2 * far, 7 + 2 * far }, { true, true, false } },
    };
    for (const auto &c : cases) {
        SeqWindow window;
        std::vector<bool> taken;
        for (const std::uint64_t seq : c.seqs)
            taken.push_back(window.accept(seq));
        EXPECT_EQ(taken, c.taken);
    }
}

} // namespace
} // namespace corvalog
