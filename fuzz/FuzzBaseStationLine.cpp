#include "acquisition/BaseStationProtocol.h"
#include "runtime/NumberLocale.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using namespace corvalog;

[[noreturn]] void fail(const char *what, std::string_view line, const std::string &written)
{
    std::fprintf(stderr, "%s\nline:    %.*s\nwritten: %s", what, static_cast<int>(line.size()),
        line.data(), written.c_str());
    std::abort();
}

// A field as the writer puts it on the line: line breaks become spaces.
std::string flat(std::string text)
{
    for (char &c : text)
        if (c == '\r' || c == '\n')
            c = ' ';
    return text;
}

// Whatever a line reads as must be written as one line that reads back as the same thing.
void checkStationLine(std::string_view line, const NumberLocale &locale)
{
    bsp::StationLine first;
    bsp::parseStationLine(line, locale, first);
    std::string written;
    switch (first.kind) {
    case bsp::StationLine::Kind::Packet:
        written = bsp::packetText(first.packet, locale);
        break;
    case bsp::StationLine::Kind::Answer:
        written = bsp::answerText(first.seq, first.fields);
        break;
    case bsp::StationLine::Kind::Failure:
        written = bsp::failureText(first.seq, first.number, first.text);
        break;
    case bsp::StationLine::Kind::Comment:
    case bsp::StationLine::Kind::Malformed:
        return;
    }
    if (written.empty() || written.find('\n') != written.size() - 1
        || written.size() > bsp::kMaxLineBytes * 3 + 64)
        fail("not one line", line, written);
    bsp::StationLine again;
    bsp::parseStationLine(std::string_view(written).substr(0, written.size() - 1), locale, again);
    if (again.kind != first.kind || again.seq != first.seq || again.number != first.number
        || flat(again.text) != flat(first.text))
        fail("written line reads as another line", line, written);
    if (first.kind == bsp::StationLine::Kind::Packet && again.packet.Value != first.packet.Value)
        fail("written packet reads as another value", line, written);
    for (std::size_t i = 0; i < first.fields.size(); ++i)
        if (i >= again.fields.size() || again.fields[i] != flat(first.fields[i]))
            fail("written answer reads as other fields", line, written);
}

void checkCommandLine(std::string_view line)
{
    bsp::CommandLine first;
    std::string error;
    if (!bsp::parseCommandLine(line, first, error))
        return;
    const std::string written = bsp::commandText(first.seq, first.operation, first.arguments);
    bsp::CommandLine again;
    if (!bsp::parseCommandLine(
            std::string_view(written).substr(0, written.size() - 1), again, error))
        fail(("written command does not read: " + error).c_str(), line, written);
    if (again.seq != first.seq || again.arguments.size() != first.arguments.size())
        fail("written command reads as another", line, written);
}

} // namespace

// The input as a byte stream from a base station (or to one), cut into lines as the driver cuts
// it; the comma locale when the first byte's high bit is set.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const NumberLocale locale
        = size > 0 && (data[0] & 0x80) ? NumberLocale::comma() : NumberLocale::point();
    bsp::LineAssembler assembler;
    assembler.feed(
        reinterpret_cast<const char *>(data), size, [&](std::string_view line, bool tooLong) {
            if (line.size() > bsp::kMaxLineBytes + 1
                || (tooLong && line.size() != bsp::kMaxLineBytes))
                fail("a line beyond the limit", line, {});
            if (tooLong)
                return;
            checkStationLine(line, locale);
            checkCommandLine(line);
        });
    return 0;
}
