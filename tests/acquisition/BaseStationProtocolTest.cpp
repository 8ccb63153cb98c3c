#include "acquisition/BaseStationProtocol.h"

#include <gtest/gtest.h>

namespace corvalog {
namespace {

using Kind = bsp::StationLine::Kind;

// What one line from a base station reads as: its kind and, per kind, what it carries (the
// packet's tag and value, the answer's number and fields, the failure's number and text, or why
// the line was refused).
TEST(BaseStationProtocol, StationLinesReadAsTheirKind)
{
    struct Case {
        const char *line;
        Kind kind;
        std::string carried;
    } cases[] = {
        { "P,1,FF12,12.5,0,-60,100,0,0", Kind::Packet, "FF12=12.5" },
        { "P,1,ff12,12.5,0,-60,100,0,0\r", Kind::Packet, "FF12=12.5" },
        { "P,2,3,\"1,5\",0,-60,100,0,0", Kind::Packet, "3=1,5" },
        { "P,1,0012,hex:4142,0,-60,100,65535,-1", Kind::Packet, "12=AB" },
        { "R,7,1", Kind::Answer, "7:1" },
        { "R,65535,2.1,1.4", Kind::Answer, "65535:2.1|1.4" },
        { "R,3,\"a,b\",", Kind::Answer, "3:a,b|" },
        { "E,9,-2147220990,No base station answers", Kind::Failure,
            "9:-2147220990 No base station answers" },
        { "E,9,17,radio busy, try later", Kind::Failure, "9:17 radio busy, try later" },
        { "# boot 1.2", Kind::Comment, "" },
        { "", Kind::Comment, "" },
        { "\r", Kind::Comment, "" },
        { "P,1,FF123,1,0,0,0,0,0", Kind::Malformed,
            "packet: data_tag 'FF123' is not 1 to 4 hexadecimal digits" },
        { "P,1,FF12", Kind::Malformed, "packet: 2 fields, expected 8" },
        { "P,", Kind::Malformed, "a packet line without its fields" },
        { "R,0,1", Kind::Malformed, "the command number is not 1 to 65535" },
        { "R,65536,1", Kind::Malformed, "the command number is not 1 to 65535" },
        { "R,5", Kind::Malformed, "an answer without its result" },
        { "E,5,x,why", Kind::Malformed, "a failure needs a 32-bit error number and a description" },
        { "E,5,1", Kind::Malformed, "a failure needs a 32-bit error number and a description" },
        { "R,\"5,1", Kind::Malformed, "a quote is not closed" },
        { "Q,1,2", Kind::Malformed, "not a P, R, E or # line" },
        { "R5,1", Kind::Malformed, "not a P, R, E or # line" },
        { "C,1,DETECT,1", Kind::Malformed, "not a P, R, E or # line" },
    };
    for (const Case &c : cases) {
        bsp::StationLine line;
        bsp::parseStationLine(c.line, NumberLocale::point(), line);
        std::string carried;
        switch (line.kind) {
        case Kind::Packet: {
            char tag[8];
            std::snprintf(tag, sizeof tag, "%X", static_cast<unsigned>(line.packet.Datatag));
            carried = std::string(tag) + "=" + line.packet.Value;
            break;
        }
        case Kind::Answer:
            carried = std::to_string(line.seq) + ":";
            for (std::size_t i = 0; i < line.fields.size(); ++i)
                carried += (i ? "|" : "") + line.fields[i];
            break;
        case Kind::Failure:
            carried
                = std::to_string(line.seq) + ":" + std::to_string(line.number) + " " + line.text;
            break;
        case Kind::Comment:
            break;
        case Kind::Malformed:
            carried = line.text;
            break;
        }
        EXPECT_EQ(static_cast<int>(line.kind), static_cast<int>(c.kind)) << c.line;
        EXPECT_EQ(carried, c.carried) << c.line;
    }
}

// Value texts go over the line with "." and reach the tables in the locale's form, both ways.
TEST(BaseStationProtocol, ValuesCrossTheLineInEveryLocale)
{
    NumberLocale comma;
    comma.decimal = ',';
    PacketNotification p;
    p.BaseStation = 1;
    p.Datatag = 0xFF12;
    p.Value = "12,5";
    p.RSSI = -60;
    p.CV = 100;
    EXPECT_EQ(bsp::packetText(p, comma), "P,1,FF12,12.5,0,-60,100,0,0\n");
    bsp::StationLine line;
    bsp::parseStationLine("P,1,FF12,12.5,0,-60,100,0,0", comma, line);
    EXPECT_EQ(line.packet.Value, "12,5");
}

// Commands are numbered, quoted where they must be and never hold a line break; the numbers
// wrap from 65535 to 1; what one side writes the other reads back.
TEST(BaseStationProtocol, CommandsAndAnswersAreWrittenAsTheOtherSideReadsThem)
{
    EXPECT_EQ(bsp::commandText(1, bsp::kDetect, { "7" }), "C,1,DETECT,7\n");
    EXPECT_EQ(bsp::commandText(2, bsp::kSleep), "C,2,SLEEP\n");
    EXPECT_EQ(bsp::commandText(3, bsp::kSend, { "1", "FF12", "57", "a,\"b\"\nc" }),
        "C,3,SEND,1,FF12,57,\"a,\"\"b\"\" c\"\n");
    EXPECT_EQ(bsp::failureText(4, -5, "two\r\nlines"), "E,4,-5,two  lines\n");
    EXPECT_EQ(bsp::commandText(5, "no, sir"), "C,5,\"no, sir\"\n");
    EXPECT_EQ(bsp::nextSequence(1), 2);
    EXPECT_EQ(bsp::nextSequence(65535), 1);

    bsp::CommandLine command;
    std::string error;
    const std::string sent = bsp::commandText(65535, bsp::kSend, { "1", "0012", "59", "x,y" });
    ASSERT_TRUE(bsp::parseCommandLine(sent.substr(0, sent.size() - 1), command, error)) << error;
    EXPECT_EQ(command.seq, 65535);
    EXPECT_EQ(command.operation, "SEND");
    EXPECT_EQ(command.arguments, (std::vector<std::string> { "1", "0012", "59", "x,y" }));
    for (const char *bad : { "C,0,DETECT", "C,1", "C,1,", "D,1,DETECT", "C,x,DETECT" })
        EXPECT_FALSE(bsp::parseCommandLine(bad, command, error)) << bad;

    bsp::StationLine answer;
    bsp::parseStationLine("R,9,2.1,1.4", NumberLocale::point(), answer);
    EXPECT_EQ(bsp::answerText(answer.seq, answer.fields), "R,9,2.1,1.4\n");
}

// Lines are cut at LF across any split of the stream; one longer than the limit is given once,
// cut, and the rest of it is skipped; a CR before the LF does not count against the limit.
TEST(BaseStationProtocol, TheStreamIsCutIntoLinesOfAtMostTheLimit)
{
    const std::string full(bsp::kMaxLineBytes, 'x');
    const std::string stream = "a\r\nb\n" + full + "\r\n" + full + "yz\nc\n";
    for (std::size_t chunk : { std::size_t(1), std::size_t(7), stream.size() }) {
        bsp::LineAssembler assembler;
        std::vector<std::pair<std::string, bool>> lines;
        for (std::size_t at = 0; at < stream.size(); at += chunk)
            assembler.feed(stream.data() + at, std::min(chunk, stream.size() - at),
                [&](std::string_view line, bool tooLong) { lines.emplace_back(line, tooLong); });
        ASSERT_EQ(lines.size(), 5u) << chunk;
        EXPECT_EQ(lines[0], std::make_pair(std::string("a\r"), false));
        EXPECT_EQ(lines[1], std::make_pair(std::string("b"), false));
        EXPECT_EQ(lines[2], std::make_pair(full + "\r", false));
        EXPECT_EQ(lines[3], std::make_pair(full, true));
        EXPECT_EQ(lines[4], std::make_pair(std::string("c"), false));
    }
}

} // namespace
} // namespace corvalog
