#include "acquisition/RecordingFormat.h"

#include "runtime/NumberLocale.h"

#include <gtest/gtest.h>
#include <sstream>
#include <string>

namespace corvalog {
namespace {

RecordedPacket packet(double timeMs, std::int32_t tag, std::string value, std::int16_t rssi = -60,
    std::int16_t cv = 100, std::int16_t battLow = 0, std::int16_t error = 0,
    std::int16_t status = 0, std::int32_t baseStation = 1)
{
    return { timeMs, { baseStation, tag, std::move(value), status, rssi, cv, battLow, error } };
}

std::string describe(const RecordedPacket &p)
{
    const PacketNotification &n = p.packet;
    std::ostringstream s;
    s << p.timeMs << " bs=" << n.BaseStation << " tag=" << n.Datatag << " value='" << n.Value
      << "' st=" << n.Status << " rssi=" << n.RSSI << " cv=" << n.CV << " batt=" << n.BattLow
      << " err=" << n.Error;
    return s.str();
}

// The packet a line (with or without its "\n") holds, "skip", or why it is not one.
std::string parsed(
    std::string_view line, bool withTime = true, const NumberLocale &locale = NumberLocale())
{
    if (!line.empty() && line.back() == '\n')
        line.remove_suffix(1);
    RecordedPacket p;
    std::string error;
    const LineKind kind = parseRecordingLine(line, withTime, p, error, locale);
    return kind == LineKind::Packet ? describe(p) : kind == LineKind::Skip ? "skip" : error;
}

// The packet a line holds, "skip", or why it is not a packet.
TEST(ParseRecordingLine, ReadsEveryColumnSkipsNonPacketsAndNamesWhatIsWrong)
{
    const std::pair<std::string, std::string> cases[] = {
        { "40.1235,1,a,x,0,-60,100,0,0", describe(packet(40.124, 0xA, "x")) }, // to the thousandth
        { "\"40\",\"1\",\"ff12\",\"12.5\",\"0\",\"-60\",\"100\",\"0\",\"0\"",
            describe(packet(40, 0xFF12, "12.5")) },
        { "0,1,0012, 12 ,0,-60,100,0,0", describe(packet(0, 0x12, " 12 ")) },
        { "0,1,0012,hex:0aff00,0,-60,100,0,0",
            describe(packet(0, 0x12, std::string("\x0A\xFF\0", 3))) },
        { "0,1,0012,HEX:41,0,-60,100,0,0", describe(packet(0, 0x12, "HEX:41")) }, // exact prefix
        { "999999999999.999,-2147483648,0012,x,7,-32768,32767,65535,32768\r",
            describe(
                packet(999999999999.999, 0x12, "x", -32768, 32767, -1, -32768, 7, INT32_MIN)) },
        { "  \t", "skip" },
        { "\r", "skip" },
        { "# note, with \"quotes", "skip" },
        { recordingHeader().substr(recordingHeader().find('\n') + 1), "skip" }, // the columns
        { "0,1,FF12,12.5,0,-60,100,0,0,", "10 fields, expected 9" },
        { "0,1,FF12,\"12\"\"5,0,-60,100,0,0", "a quote is not closed" },
        { "0,1,FF12,\"12\"5,0,-60,100,0,0", "text follows a closing quote" },
        { "0,1,FF12,12\"5,0,-60,100,0,0", "a quote inside a field that does not start with one" },
        { "-1,1,FF12,1,0,-60,100,0,0", "time_ms '-1' is not a non-negative number" },
        { "999999999999.9995,1,FF12,1,0,-60,100,0,0", "time_ms '999999999999.9995' is too large" },
        { "0,2147483648,FF12,1,0,-60,100,0,0",
            "base_station '2147483648' is not a 32-bit integer" },
        { "0,1,10000,1,0,-60,100,0,0", "data_tag '10000' is not 1 to 4 hexadecimal digits" },
        { "0,1,0123456789abcdef012345\x01\x02"
          "789,1,0,-60,100,0,0", // shown short and safe
            "data_tag '0123456789abcdef012345??...' is not 1 to 4 hexadecimal digits" },
        { "0,1,FF12,hex:ABC,0,-60,100,0,0",
            "value 'hex:ABC' is not hex: and pairs of hexadecimal digits" },
        { "0,1,FF12,hex:0G,0,-60,100,0,0",
            "value 'hex:0G' is not hex: and pairs of hexadecimal digits" },
        { "0,1,FF12,1,0,-32769,100,0,0", "rssi '-32769' is not a 16-bit integer" },
        { "0,1,FF12,1,0,-60,100,65536,0",
            "batt_low '65536' is not a 16-bit flag word (-32768 to 65535)" },
    };
    for (const auto &[line, expected] : cases)
        EXPECT_EQ(parsed(line), expected) << line;
    EXPECT_EQ(parsed("1,FF12,12.5,0,-60,100,0,0", false), describe(packet(0, 0xFF12, "12.5")));
    EXPECT_EQ(parsed("base_station,data_tag,value,status,rssi,cv,batt_low,error", false), "skip");
    EXPECT_EQ(parsed("0,1,FF12,1,0,-60,100,0,0", false), "9 fields, expected 8");
}

TEST(RecordingLine, WritesLinesThatReadBackAsTheSamePacket)
{
    const std::pair<RecordedPacket, std::string> cases[] = {
        { packet(40, 0xFF12, "12.5"), "40,1,FF12,12.5,0,-60,100,0,0\n" },
        { packet(40.125, 0x12, "", -1, 2, -1, -32768), "40.125,1,0012,,0,-1,2,-1,-32768\n" },
        { packet(1.9996, 0x12, "# no comment"), "2,1,0012,# no comment,0,-60,100,0,0\n" },
        { packet(0.0004, 0x12, "a,\"b\""), "0,1,0012,\"a,\"\"b\"\"\",0,-60,100,0,0\n" },
        { packet(0, 0x12, std::string("\x0A\xFF\0", 3)), "0,1,0012,hex:0AFF00,0,-60,100,0,0\n" },
        { packet(0, 0x12, "hex:41"), "0,1,0012,hex:6865783A3431,0,-60,100,0,0\n" },
    };
    for (const auto &[packet, line] : cases) {
        EXPECT_EQ(recordingLine(packet, NumberLocale::point()), line) << describe(packet);
        EXPECT_EQ(parsed(line), describe({ std::stod(line), packet.packet })) << line;
    }
    // A tag no module can have is written so that it reads as malformed (more than four
    // digits), never as another module's tag.
    EXPECT_EQ(recordingLine(packet(0, 0x10012, "x"), NumberLocale::point()),
        "0,1,00010012,x,0,-60,100,0,0\n");
}

TEST(RecordingFormatLocale, NumbersUsePointInFilesAndTheLocaleSeparatorInPackets)
{
    const NumberLocale comma = NumberLocale::comma();
    const std::string line = "0,1,0012,-12.5,0,-60,100,0,0\n";
    EXPECT_EQ(parsed(line, true, comma), describe(packet(0, 0x12, "-12,5")));
    EXPECT_EQ(recordingLine(packet(0, 0x12, "-12,5"), comma), line);
    // A point in a packet would read back as the separator, so it is written as bytes.
    EXPECT_EQ(recordingLine(packet(0, 0x12, "1.5"), comma), "0,1,0012,hex:312E35,0,-60,100,0,0\n");
}

} // namespace
} // namespace corvalog
