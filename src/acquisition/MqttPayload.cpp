#include "MqttPayload.h"

#include "RecordingFormat.h"
#include "runtime/ReadNumber.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <ctime>

namespace corvalog {

namespace {

constexpr std::int64_t kMsPerDay = 86400000;

void appendJsonString(std::string &out, std::string_view text)
{
    out += '"';
    for (const char c : text) {
        const auto u = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (u < 0x20) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04x", u);
            out += escaped;
        } else {
            out += c;
        }
    }
    out += '"';
}

void appendNumber(std::string &out, std::int64_t v)
{
    char buf[24];
    const auto r = std::to_chars(buf, buf + sizeof buf, v);
    out.append(buf, r.ptr);
}

// Days since 1970-01-01 of a civil date, and back (proleptic Gregorian).
std::int64_t daysFromCivil(std::int64_t y, unsigned m, unsigned d)
{
    y -= m <= 2;
    const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
    const auto yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<std::int64_t>(doe) - 719468;
}

void civilFromDays(std::int64_t z, std::int64_t &y, unsigned &m, unsigned &d)
{
    z += 719468;
    const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const auto doe = static_cast<unsigned>(z - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    y = static_cast<std::int64_t>(yoe) + era * 400;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    d = doy - (153 * mp + 2) / 5 + 1;
    m = mp < 10 ? mp + 3 : mp - 9;
    y += m <= 2;
}

// An integer field within [min, max]; JSON numbers are doubles, so a fraction is refused.
bool integerField(const QJsonObject &o, const char *key, std::int64_t min, std::int64_t max,
    std::int64_t &out, std::string &error)
{
    const QJsonValue v = o.value(QLatin1String(key));
    const double d = v.toDouble(std::nan(""));
    if (!v.isDouble() || d != std::floor(d) || d < static_cast<double>(min)
        || d > static_cast<double>(max)) {
        error = std::string("\"") + key + "\" is not a whole number from " + std::to_string(min)
            + " to " + std::to_string(max);
        return false;
    }
    out = static_cast<std::int64_t>(d);
    return true;
}

bool readPacket(const QJsonValue &value, std::int64_t &time, PacketNotification &p,
    std::string &error, const NumberLocale &locale)
{
    if (!value.isObject()) {
        error = "not an object";
        return false;
    }
    const QJsonObject o = value.toObject();
    const QJsonValue t = o.value(QLatin1String("t"));
    if (!t.isString() || !readUtcText(t.toString().toStdString(), time)) {
        error = "\"t\" is not a UTC time like 2026-11-23T20:00:00.123Z";
        return false;
    }
    const QJsonValue tag = o.value(QLatin1String("tag"));
    const std::string tagText = tag.toString().toStdString();
    std::uint32_t tagNumber = 0;
    if (!tag.isString() || tagText.empty() || tagText.size() > 4
        || std::from_chars(tagText.data(), tagText.data() + tagText.size(), tagNumber, 16).ptr
            != tagText.data() + tagText.size()) {
        error = "\"tag\" is not one to four hex digits";
        return false;
    }
    p.Datatag = static_cast<std::int32_t>(tagNumber);
    const QJsonValue v = o.value(QLatin1String("value"));
    if (!v.isString() || !readRecordedValue(v.toString().toStdString(), p.Value, locale)) {
        error = "\"value\" is not a value text or hex: and byte pairs";
        return false;
    }
    std::int64_t bs = 0, status = 0, rssi = 0, cv = 0, batt = 0, err = 0;
    if (!integerField(o, "bs", 0, 2147483647, bs, error)
        || !integerField(o, "status", -32768, 32767, status, error)
        || !integerField(o, "rssi", -32768, 32767, rssi, error)
        || !integerField(o, "cv", -32768, 32767, cv, error)
        || !integerField(o, "batt", -32768, 65535, batt, error)
        || !integerField(o, "err", -32768, 65535, err, error))
        return false;
    p.BaseStation = static_cast<std::int32_t>(bs);
    p.Status = static_cast<std::int16_t>(status);
    p.RSSI = static_cast<std::int16_t>(rssi);
    p.CV = static_cast<std::int16_t>(cv);
    // 16-bit words, as a recording keeps them.
    p.BattLow = static_cast<std::int16_t>(static_cast<std::uint16_t>(batt));
    p.Error = static_cast<std::int16_t>(static_cast<std::uint16_t>(err));
    return true;
}

} // namespace

std::string utcText(std::int64_t ms)
{
    const std::int64_t days = ms >= 0 ? ms / kMsPerDay : (ms - kMsPerDay + 1) / kMsPerDay;
    const std::int64_t inDay = ms - days * kMsPerDay;
    std::int64_t y = 0;
    unsigned m = 0, d = 0;
    civilFromDays(days, y, m, d);
    char buf[96];
    std::snprintf(buf, sizeof buf, "%04lld-%02u-%02uT%02lld:%02lld:%02lld.%03lldZ",
        static_cast<long long>(y), m, d, static_cast<long long>(inDay / 3600000),
        static_cast<long long>(inDay / 60000 % 60), static_cast<long long>(inDay / 1000 % 60),
        static_cast<long long>(inDay % 1000));
    return buf;
}

bool readUtcText(std::string_view text, std::int64_t &ms)
{
    // YYYY-MM-DDTHH:MM:SS[.fff]Z
    if (text.size() < 20 || text.back() != 'Z')
        return false;
    const auto number = [&](std::size_t at, std::size_t digits, int &out) {
        if (at + digits > text.size())
            return false;
        out = 0;
        for (std::size_t i = at; i < at + digits; ++i) {
            if (text[i] < '0' || text[i] > '9')
                return false;
            out = out * 10 + (text[i] - '0');
        }
        return true;
    };
    int y, mo, d, h, mi, s, frac = 0;
    if (!number(0, 4, y) || text[4] != '-' || !number(5, 2, mo) || text[7] != '-'
        || !number(8, 2, d) || (text[10] != 'T' && text[10] != 't') || !number(11, 2, h)
        || text[13] != ':' || !number(14, 2, mi) || text[16] != ':' || !number(17, 2, s))
        return false;
    std::size_t at = 19;
    if (text[at] == '.') {
        const std::size_t digits = text.size() - 1 - (at + 1);
        if (digits < 1 || digits > 3 || !number(at + 1, digits, frac))
            return false;
        for (std::size_t i = digits; i < 3; ++i)
            frac *= 10;
        at += 1 + digits;
    }
    if (at != text.size() - 1 || mo < 1 || mo > 12 || d < 1 || d > 31 || h > 23 || mi > 59
        || s > 60)
        return false;
    ms = daysFromCivil(y, static_cast<unsigned>(mo), static_cast<unsigned>(d)) * kMsPerDay
        + ((h * 60LL + mi) * 60 + s) * 1000 + frac;
    return true;
}

std::string encodeRelayMessage(const RelayMessage &message, const NumberLocale &locale)
{
    std::string out;
    out.reserve(64 + message.packets.size() * 130);
    out += "{\"station\":";
    appendJsonString(out, message.station);
    out += ",\"seq\":";
    appendNumber(out, static_cast<std::int64_t>(message.seq));
    out += ",\"packets\":[";
    char tag[8];
    for (std::size_t i = 0; i < message.packets.size(); ++i) {
        const PacketNotification &p = message.packets[i];
        if (i > 0)
            out += ',';
        out += "{\"t\":\"";
        out += utcText(i < message.times.size() ? message.times[i] : 0);
        out += "\",\"bs\":";
        appendNumber(out, p.BaseStation);
        std::snprintf(tag, sizeof tag, "%04X", static_cast<unsigned>(p.Datatag) & 0xFFFFu);
        out += ",\"tag\":\"";
        out += tag;
        out += "\",\"value\":";
        appendJsonString(out, recordedValue(p.Value, locale));
        out += ",\"status\":";
        appendNumber(out, p.Status);
        out += ",\"rssi\":";
        appendNumber(out, p.RSSI);
        out += ",\"cv\":";
        appendNumber(out, p.CV);
        out += ",\"batt\":";
        appendNumber(out, p.BattLow);
        out += ",\"err\":";
        appendNumber(out, p.Error);
        out += '}';
    }
    out += "]}";
    return out;
}

bool decodeRelayMessage(std::string_view payload, RelayMessage &out, std::string &error,
    std::vector<std::string> &badPackets, const NumberLocale &locale)
{
    QJsonParseError parse {};
    const QJsonDocument document = QJsonDocument::fromJson(
        QByteArray::fromRawData(payload.data(), static_cast<qsizetype>(payload.size())), &parse);
    if (parse.error != QJsonParseError::NoError || !document.isObject()) {
        error = parse.error != QJsonParseError::NoError
            ? "not JSON (" + parse.errorString().toStdString() + " at byte "
                + std::to_string(parse.offset) + ")"
            : "not a JSON object";
        return false;
    }
    const QJsonObject o = document.object();
    const QJsonValue station = o.value(QLatin1String("station"));
    if (!station.isString() || station.toString().isEmpty()) {
        error = "\"station\" is missing or not a name";
        return false;
    }
    std::int64_t seq = 0;
    if (!integerField(o, "seq", 1, (std::int64_t { 1 } << 53), seq, error))
        return false;
    const QJsonValue packets = o.value(QLatin1String("packets"));
    if (!packets.isArray()) {
        error = "\"packets\" is not a list";
        return false;
    }
    out.station = station.toString().toStdString();
    out.seq = static_cast<std::uint64_t>(seq);
    out.times.clear();
    out.packets.clear();
    const QJsonArray list = packets.toArray();
    out.packets.reserve(static_cast<std::size_t>(list.size()));
    std::string why;
    for (qsizetype i = 0; i < list.size(); ++i) {
        std::int64_t time = 0;
        PacketNotification p;
        if (readPacket(list[i], time, p, why, locale)) {
            out.times.push_back(time);
            out.packets.push_back(std::move(p));
        } else {
            badPackets.push_back("packet " + std::to_string(i + 1) + ": " + why);
        }
    }
    return true;
}

} // namespace corvalog
