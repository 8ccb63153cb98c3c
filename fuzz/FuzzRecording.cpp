#include "acquisition/RecordingFormat.h"
#include "runtime/NumberLocale.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using namespace corvalog;

bool samePacket(const RecordedPacket &a, const RecordedPacket &b)
{
    const PacketNotification &x = a.packet;
    const PacketNotification &y = b.packet;
    return a.timeMs == b.timeMs && x.BaseStation == y.BaseStation && x.Datatag == y.Datatag
        && x.Value == y.Value && x.Status == y.Status && x.RSSI == y.RSSI && x.CV == y.CV
        && x.BattLow == y.BattLow && x.Error == y.Error;
}

[[noreturn]] void fail(const char *what, std::string_view line, const std::string &written)
{
    std::fprintf(stderr, "%s\nline:    %.*s\nwritten: %s", what, static_cast<int>(line.size()),
        line.data(), written.c_str());
    std::abort();
}

// Every packet a line gives must be written as one line that reads back as the same packet.
void checkLine(std::string_view line, bool withTime)
{
    RecordedPacket first;
    std::string error;
    if (parseRecordingLine(line, withTime, first, error, NumberLocale::point()) != LineKind::Packet)
        return;
    const std::string written = recordingLine(first, NumberLocale::point());
    if (written.empty() || written.find('\n') != written.size() - 1)
        fail("not one line", line, written);
    RecordedPacket again;
    if (parseRecordingLine(std::string_view(written).substr(0, written.size() - 1), true, again,
            error, NumberLocale::point())
        != LineKind::Packet)
        fail(("written line does not read: " + error).c_str(), line, written);
    if (!samePacket(first, again))
        fail("written line reads as another packet", line, written);
}

} // namespace

// Reads the input as recording lines, with and without time, in the point or (when the first
// byte's high bit is set) the comma locale.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char *>(data), size);
    ScopedNumberLocale locale(
        size > 0 && (data[0] & 0x80) ? NumberLocale::comma() : NumberLocale::point());
    std::size_t start = 0;
    while (start <= text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string_view::npos)
            end = text.size();
        const std::string_view line = text.substr(start, end - start);
        checkLine(line, true);
        checkLine(line, false);
        start = end + 1;
    }
    return 0;
}
