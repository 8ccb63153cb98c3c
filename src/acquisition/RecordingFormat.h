#pragma once

#include "PacketNotification.h"
#include "runtime/NumberLocale.h"

#include <string>
#include <string_view>

namespace corvalog {

// One packet of a recording: milliseconds since the recording began, and the notification.
struct RecordedPacket {
    double timeMs = 0;
    PacketNotification packet;
};

// The first two lines of a packet recording ("# Corvalog packet recording 1" and the column
// names), each ended by "\n".
std::string recordingHeader();

// What a line of a recording (or of a UDP datagram) holds.
enum class LineKind { Packet, Skip, Malformed };

// Reads one line, without its line end (a trailing CR is ignored): a packet (time_ms,
// base_station,data_tag,value,status,rssi,cv,batt_low,error with RFC 4180 quoting; without
// time_ms when `withTime` is false), or a line to skip (blank, "#" comment, the column names),
// or a malformed one with a short reason in `error` (`out` may then be partly written). time_ms is
// a non-negative decimal, kept to the thousandth; a data tag is one to four hex digits, either
// case; a value is the driver's text or "hex:" and byte pairs; batt_low and error are 16-bit
// words, -32768 to 65535. Numeric value text is written with "." and handed on with the
// locale's decimal separator, so recordings replay the same in every locale.
LineKind parseRecordingLine(std::string_view line, bool withTime, RecordedPacket &out,
    std::string &error, const NumberLocale &locale);

// The line for a packet, ended by "\n": time as recordingTime writes it, tag as four upper-case
// hex digits (eight for a tag outside 0 to 65535, so reading reports it), value as text (quoted
// when it must be; the locale's decimal separator written as ".") or as "hex:" when it holds
// bytes that are not printable text, would not read back as itself, or is a raw 117-byte record.
std::string recordingLine(const RecordedPacket &packet, const NumberLocale &locale);
// The same line's packet columns alone (base_station to error), appended without a line end.
void appendPacketFields(std::string &out, const PacketNotification &p, const NumberLocale &locale);

// A packet's value as a recording writes it, before any quoting: its text with "." as the
// decimal separator, or "hex:" and byte pairs (see recordingLine).
std::string recordedValue(const std::string &value, const NumberLocale &locale);
// The reverse, as parseRecordingLine reads a value; false for "hex:" without whole byte pairs.
bool readRecordedValue(std::string_view text, std::string &value, const NumberLocale &locale);

// Milliseconds as a recording writes them: rounded to the thousandth, no trailing zeros ("40",
// "40.5", "40.125"); negative and NaN times as "0".
std::string recordingTime(double timeMs);

} // namespace corvalog
