#include "BaseStationProtocol.h"

#include "RecordingFormat.h"
#include "runtime/CsvField.h"
#include "runtime/ReadNumber.h"

namespace corvalog::bsp {

namespace {

bool sequence(std::string_view text, std::uint16_t &out)
{
    return readNumber(text, out) && out != 0;
}

void malformed(StationLine &out, std::string why)
{
    out.kind = StationLine::Kind::Malformed;
    out.text = std::move(why);
}

// A line break would end the line wherever it stands, so none is ever written inside a field.
void appendField(std::string &out, std::string_view field)
{
    std::string flat(field);
    for (char &c : flat)
        if (c == '\r' || c == '\n')
            c = ' ';
    appendCsvField(out, flat, ',');
}

void appendFields(std::string &out, const std::vector<std::string> &fields)
{
    for (const std::string &f : fields) {
        out += ',';
        appendField(out, f);
    }
}

} // namespace

std::uint16_t nextSequence(std::uint16_t seq)
{
    return seq >= 65535 ? 1 : static_cast<std::uint16_t>(seq + 1);
}

void parseStationLine(std::string_view line, const NumberLocale &locale, StationLine &out)
{
    if (!line.empty() && line.back() == '\r')
        line.remove_suffix(1);
    out.fields.clear();
    out.text.clear();
    if (line.find_first_not_of(" \t") == std::string_view::npos || line[0] == '#') {
        out.kind = StationLine::Kind::Comment;
        return;
    }
    if (line.size() < 2 || line[1] != ',') {
        malformed(out, "not a P, R, E or # line");
        return;
    }
    const char kind = line[0];
    if (kind == 'P') {
        // The packet columns are a recording line's without its time, and read the same way.
        RecordedPacket packet;
        std::string error;
        const std::string_view rest = line.substr(2);
        switch (parseRecordingLine(rest, false, packet, error, locale)) {
        case LineKind::Packet:
            out.kind = StationLine::Kind::Packet;
            out.packet = std::move(packet.packet);
            return;
        case LineKind::Skip:
            malformed(out, "a packet line without its fields");
            return;
        case LineKind::Malformed:
            malformed(out, "packet: " + error);
            return;
        }
    }
    if (kind != 'R' && kind != 'E') {
        malformed(out, "not a P, R, E or # line");
        return;
    }
    std::string error;
    if (!splitCsvFields(line.substr(2), out.fields, error)) {
        malformed(out, error);
        return;
    }
    if (!sequence(out.fields[0], out.seq)) {
        malformed(out, "the command number is not 1 to 65535");
        return;
    }
    if (kind == 'R') {
        if (out.fields.size() < 2) {
            malformed(out, "an answer without its result");
            return;
        }
        out.fields.erase(out.fields.begin());
        out.kind = StationLine::Kind::Answer;
        return;
    }
    if (out.fields.size() < 3 || !readNumber(out.fields[1], out.number)) {
        malformed(out, "a failure needs a 32-bit error number and a description");
        return;
    }
    // A description with unquoted commas is taken whole rather than refused.
    out.text = out.fields[2];
    for (std::size_t i = 3; i < out.fields.size(); ++i)
        out.text += "," + out.fields[i];
    out.fields.clear();
    out.kind = StationLine::Kind::Failure;
}

bool parseCommandLine(std::string_view line, CommandLine &out, std::string &error)
{
    if (!line.empty() && line.back() == '\r')
        line.remove_suffix(1);
    if (line.size() < 2 || line[0] != 'C' || line[1] != ',') {
        error = "not a command line";
        return false;
    }
    std::vector<std::string> fields;
    if (!splitCsvFields(line.substr(2), fields, error))
        return false;
    if (fields.size() < 2 || !sequence(fields[0], out.seq) || fields[1].empty()) {
        error = "a command needs a number from 1 to 65535 and an operation";
        return false;
    }
    out.operation = std::move(fields[1]);
    out.arguments.assign(
        std::make_move_iterator(fields.begin() + 2), std::make_move_iterator(fields.end()));
    return true;
}

std::string commandText(
    std::uint16_t seq, std::string_view operation, const std::vector<std::string> &arguments)
{
    std::string out = "C," + std::to_string(seq) + ",";
    appendField(out, operation);
    appendFields(out, arguments);
    out += '\n';
    return out;
}

std::string packetText(const PacketNotification &packet, const NumberLocale &locale)
{
    std::string out = "P,";
    appendPacketFields(out, packet, locale);
    out += '\n';
    return out;
}

std::string answerText(std::uint16_t seq, const std::vector<std::string> &fields)
{
    std::string out = "R," + std::to_string(seq);
    appendFields(out, fields);
    out += '\n';
    return out;
}

std::string failureText(std::uint16_t seq, std::int32_t number, std::string_view description)
{
    std::string out = "E," + std::to_string(seq) + "," + std::to_string(number) + ",";
    appendField(out, description);
    out += '\n';
    return out;
}

} // namespace corvalog::bsp
