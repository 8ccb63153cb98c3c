#pragma once

#include "PacketNotification.h"
#include "runtime/NumberLocale.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace corvalog {

// The line protocol spoken with a base station on a serial line: ASCII lines ending in LF (a
// CR before it ignored), at most kMaxLineBytes, fields separated by commas and quoted as in
// RFC 4180. The base station sends packets (P), answers (R) and failures (E) of numbered
// commands, and comments (#); Corvalog sends commands (C).
namespace bsp {

inline constexpr std::size_t kMaxLineBytes = 1024;
// How long a command waits for its answer.
inline constexpr int kAnswerTimeoutMs = 1000;

// The operations Corvalog sends, as they are spelled on the line.
inline constexpr std::string_view kDetect = "DETECT";
inline constexpr std::string_view kSetChannel = "SETCHANNEL";
inline constexpr std::string_view kWake = "WAKE";
inline constexpr std::string_view kSleep = "SLEEP";
inline constexpr std::string_view kKeepAwake = "KEEPAWAKE";
inline constexpr std::string_view kSend = "SEND";
inline constexpr std::string_view kVersion = "VERSION";

// Command numbers count from 1 and wrap from 65535 to 1.
std::uint16_t nextSequence(std::uint16_t seq);

// One line from the base station.
struct StationLine {
    enum class Kind { Packet, Answer, Failure, Comment, Malformed };
    Kind kind = Kind::Malformed;
    PacketNotification packet; // Packet
    std::uint16_t seq = 0; // Answer, Failure
    std::vector<std::string> fields; // Answer: the result and the fields after it
    std::int32_t number = 0; // Failure: the error number
    std::string text; // Failure: the description; Malformed: why the line was not read
};

// Reads one line (without its LF; a trailing CR is ignored). A packet's value text is handed on
// with the locale's decimal separator, as a recording's is. A blank line (or one of spaces and
// tabs only) is a comment.
void parseStationLine(std::string_view line, const NumberLocale &locale, StationLine &out);

// One command to the base station.
struct CommandLine {
    std::uint16_t seq = 0;
    std::string operation;
    std::vector<std::string> arguments;
};

// Reads one command line (without its LF); false with the reason for anything else.
bool parseCommandLine(std::string_view line, CommandLine &out, std::string &error);

// The lines each side writes, each ended by "\n".
std::string commandText(
    std::uint16_t seq, std::string_view operation, const std::vector<std::string> &arguments = {});
std::string packetText(const PacketNotification &packet, const NumberLocale &locale);
std::string answerText(std::uint16_t seq, const std::vector<std::string> &fields);
std::string failureText(std::uint16_t seq, std::int32_t number, std::string_view description);

// Cuts a byte stream into lines. A line longer than kMaxLineBytes is given once, cut, with
// `tooLong` set, and the rest of it up to its LF is skipped.
class LineAssembler
{
public:
    template <typename OnLine> void feed(const char *data, std::size_t size, OnLine onLine)
    {
        for (std::size_t i = 0; i < size; ++i) {
            const char c = data[i];
            if (c == '\n') {
                if (!m_skipping)
                    onLine(std::string_view(m_line), false);
                m_line.clear();
                m_skipping = false;
            } else if (!m_skipping) {
                // A CR may still come before the LF: the limit counts the line without it.
                if (m_line.size() > kMaxLineBytes
                    || (m_line.size() == kMaxLineBytes && c != '\r')) {
                    onLine(std::string_view(m_line).substr(0, kMaxLineBytes), true);
                    m_line.clear();
                    m_skipping = true;
                } else {
                    m_line += c;
                }
            }
        }
    }
    // Forgets a part line (after the line was closed and opened again).
    void reset()
    {
        m_line.clear();
        m_skipping = false;
    }

private:
    std::string m_line;
    bool m_skipping = false;
};

} // namespace bsp

} // namespace corvalog
