#include "RecordingFormat.h"

#include "runtime/Ascii.h"
#include "runtime/CsvField.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>

namespace corvalog {

namespace {

constexpr std::string_view kColumnsWithTime
    = "time_ms,base_station,data_tag,value,status,rssi,cv,batt_low,error";
constexpr std::string_view kColumns = kColumnsWithTime.substr(8);
constexpr std::array<const char *, 9> kFieldNames = { "time_ms", "base_station", "data_tag",
    "value", "status", "rssi", "cv", "batt_low", "error" };

// Thousandths of a millisecond. Below 2^50, so the value survives a trip through the double
// of RecordedPacket and back without changing.
constexpr std::uint64_t kMaxTimeThousandths = 999'999'999'999'999;

constexpr std::string_view kHexPrefix = "hex:";

// Field text as an error message shows it: short, and without bytes that upset a terminal.
std::string shown(std::string_view field)
{
    constexpr std::size_t kShown = 24;
    std::string s;
    const std::size_t n = std::min(field.size(), kShown);
    for (std::size_t i = 0; i < n; ++i) {
        const auto c = static_cast<unsigned char>(field[i]);
        s += c >= 0x20 && c < 0x7F ? static_cast<char>(c) : '?';
    }
    if (field.size() > kShown)
        s += "...";
    return s;
}

std::string fieldError(std::size_t column, std::string_view field, const char *what)
{
    return std::string(kFieldNames[column]) + " '" + shown(field) + "' " + what;
}

// The fields of one line, split by RFC 4180 rules. Quoted fields with "" escapes are unescaped
// into `storage`; every other field is a view into the line.
struct Fields {
    static constexpr std::size_t kKept = 9;
    std::array<std::string_view, kKept> field;
    std::array<std::string, kKept> storage;
    std::size_t count = 0;
};

bool splitFields(std::string_view line, Fields &f, std::string &error)
{
    const char *p = line.data();
    const char *const end = p + line.size();
    for (;;) {
        std::string_view field;
        if (p < end && *p == '"') {
            const char *q = p + 1;
            bool escaped = false;
            for (;;) {
                q = static_cast<const char *>(
                    std::memchr(q, '"', static_cast<std::size_t>(end - q)));
                if (!q) {
                    error = "a quote is not closed";
                    return false;
                }
                if (q + 1 < end && q[1] == '"') {
                    escaped = true;
                    q += 2;
                    continue;
                }
                break;
            }
            field = std::string_view(p + 1, static_cast<std::size_t>(q - p - 1));
            p = q + 1;
            if (p < end && *p != ',') {
                error = "text follows a closing quote";
                return false;
            }
            if (escaped && f.count < Fields::kKept) {
                std::string &s = f.storage[f.count];
                s.clear();
                for (std::size_t i = 0; i < field.size(); ++i) {
                    s += field[i];
                    if (field[i] == '"')
                        ++i;
                }
                field = s;
            }
        } else {
            const auto *comma
                = static_cast<const char *>(std::memchr(p, ',', static_cast<std::size_t>(end - p)));
            const char *fieldEnd = comma ? comma : end;
            field = std::string_view(p, static_cast<std::size_t>(fieldEnd - p));
            if (field.find('"') != std::string_view::npos) {
                error = "a quote inside a field that does not start with one";
                return false;
            }
            p = fieldEnd;
        }
        if (f.count < Fields::kKept)
            f.field[f.count] = field;
        ++f.count;
        if (p == end)
            return true;
        ++p; // the comma
    }
}

bool isBlank(std::string_view line)
{
    for (const char c : line) {
        if (c != ' ' && c != '\t')
            return false;
    }
    return true;
}

bool allDigits(std::string_view s)
{
    for (const char c : s) {
        if (c < '0' || c > '9')
            return false;
    }
    return true;
}

// Digits with an optional minus sign, within [min, max].
bool parseInteger(std::string_view s, std::int64_t min, std::int64_t max, std::int64_t &out)
{
    bool negative = false;
    if (!s.empty() && s[0] == '-') {
        negative = true;
        s.remove_prefix(1);
    }
    if (s.empty())
        return false;
    std::int64_t v = 0;
    for (const char c : s) {
        if (c < '0' || c > '9')
            return false;
        v = v * 10 + (c - '0');
        if (v > (std::int64_t(1) << 40)) // far beyond every column's range; stops the overflow
            return false;
    }
    out = negative ? -v : v;
    return out >= min && out <= max;
}

enum class TimeResult { Ok, NotANumber, TooLarge };

// Digits, optionally "." and more digits, rounded half up to the thousandth.
TimeResult parseTime(std::string_view s, std::uint64_t &thousandths)
{
    const std::size_t dot = s.find('.');
    const std::string_view whole = s.substr(0, dot);
    const std::string_view fraction
        = dot == std::string_view::npos ? std::string_view() : s.substr(dot + 1);
    if (whole.empty() || !allDigits(whole) || !allDigits(fraction)
        || (dot != std::string_view::npos && fraction.empty()))
        return TimeResult::NotANumber;
    std::uint64_t v = 0;
    for (const char c : whole) {
        v = v * 10 + static_cast<std::uint64_t>(c - '0');
        if (v > kMaxTimeThousandths)
            return TimeResult::TooLarge;
    }
    for (std::size_t i = 0; i < 3; ++i)
        v = v * 10 + (i < fraction.size() ? static_cast<std::uint64_t>(fraction[i] - '0') : 0);
    if (fraction.size() > 3 && fraction[3] >= '5')
        ++v;
    if (v > kMaxTimeThousandths)
        return TimeResult::TooLarge;
    thousandths = v;
    return TimeResult::Ok;
}

// A number as the locale's number conversion reads it: sign, digits with at most one decimal
// separator, exponent. Only these texts have their separator swapped between file and locale.
bool isPlainDecimal(std::string_view s, char decimal)
{
    std::size_t i = 0;
    if (i < s.size() && (s[i] == '+' || s[i] == '-'))
        ++i;
    std::size_t digits = 0;
    while (i < s.size() && s[i] >= '0' && s[i] <= '9')
        ++i, ++digits;
    if (i < s.size() && s[i] == decimal) {
        ++i;
        while (i < s.size() && s[i] >= '0' && s[i] <= '9')
            ++i, ++digits;
    }
    if (digits == 0)
        return false;
    if (i < s.size() && (s[i] == 'e' || s[i] == 'E')) {
        ++i;
        if (i < s.size() && (s[i] == '+' || s[i] == '-'))
            ++i;
        const std::size_t start = i;
        while (i < s.size() && s[i] >= '0' && s[i] <= '9')
            ++i;
        if (i == start)
            return false;
    }
    return i == s.size();
}

bool parseValue(std::string_view s, std::string &out, char decimal)
{
    if (s.substr(0, kHexPrefix.size()) != kHexPrefix) {
        out.assign(s.data(), s.size());
        if (decimal != '.' && isPlainDecimal(out, '.')) {
            const std::size_t dot = out.find('.');
            if (dot != std::string::npos)
                out[dot] = decimal;
        }
        return true;
    }
    s.remove_prefix(kHexPrefix.size());
    if (s.size() % 2 != 0)
        return false;
    out.resize(s.size() / 2);
    for (std::size_t i = 0; i < out.size(); ++i) {
        const int hi = hexDigitValue(s[2 * i]);
        const int lo = hexDigitValue(s[2 * i + 1]);
        if (hi > 15 || lo > 15)
            return false;
        out[i] = static_cast<char>(hi * 16 + lo);
    }
    return true;
}

void appendInt(std::string &out, std::int64_t v)
{
    char buf[24];
    const auto res = std::to_chars(buf, buf + sizeof buf, v);
    out.append(buf, res.ptr);
}

void appendHexByte(std::string &out, unsigned char c)
{
    static constexpr char kDigits[] = "0123456789ABCDEF";
    out += kDigits[c >> 4];
    out += kDigits[c & 15];
}

// Text that reads back as itself; anything else is written as bytes.
bool writableAsText(std::string_view value, char decimal)
{
    if (value.size() == 117 || value.substr(0, kHexPrefix.size()) == kHexPrefix)
        return false;
    for (const char c : value) {
        const auto u = static_cast<unsigned char>(c);
        if (u < 0x20 || u >= 0x7F)
            return false;
    }
    // In a comma locale a file's "1.5" reads as "1,5", so a value that is literally "1.5"
    // (it came as bytes) must stay bytes.
    return decimal == '.' || !isPlainDecimal(value, '.');
}

// The value's field unquoted: its text (with "." for the locale's decimal separator) or "hex:".
void appendValueText(std::string &out, const std::string &value, char decimal)
{
    if (!writableAsText(value, decimal)) {
        out += kHexPrefix;
        for (const char c : value)
            appendHexByte(out, static_cast<unsigned char>(c));
        return;
    }
    const std::size_t start = out.size();
    out += value;
    if (decimal != '.' && isPlainDecimal(value, decimal))
        out[start + value.find(decimal)] = '.';
}

void appendValue(std::string &out, const std::string &value, char decimal)
{
    std::string text;
    appendValueText(text, value, decimal);
    if (text.compare(0, kHexPrefix.size(), kHexPrefix) == 0)
        out += text;
    else
        appendCsvField(out, text, ',');
}

} // namespace

std::string recordedValue(const std::string &value, const NumberLocale &locale)
{
    std::string text;
    appendValueText(text, value, locale.decimal);
    return text;
}

bool readRecordedValue(std::string_view text, std::string &value, const NumberLocale &locale)
{
    return parseValue(text, value, locale.decimal);
}

std::string recordingHeader()
{
    std::string s = "# Corvalog packet recording 1\n";
    s += kColumnsWithTime;
    s += '\n';
    return s;
}

LineKind parseRecordingLine(std::string_view line, bool withTime, RecordedPacket &out,
    std::string &error, const NumberLocale &locale)
{
    if (!line.empty() && line.back() == '\r')
        line.remove_suffix(1);
    if (isBlank(line) || line[0] == '#' || line == kColumnsWithTime || line == kColumns)
        return LineKind::Skip;

    Fields f;
    if (!splitFields(line, f, error))
        return LineKind::Malformed;
    const std::size_t expected = withTime ? 9 : 8;
    if (f.count != expected) {
        error = std::to_string(f.count) + (f.count == 1 ? " field" : " fields") + ", expected "
            + std::to_string(expected);
        return LineKind::Malformed;
    }

    // Column numbers below count as in the 9-column layout, whichever layout the line has.
    const std::size_t shift = withTime ? 0 : 1;
    const auto at = [&](std::size_t column) { return f.field[column - shift]; };
    if (withTime) {
        std::uint64_t thousandths = 0;
        switch (parseTime(at(0), thousandths)) {
        case TimeResult::NotANumber:
            error = fieldError(0, at(0), "is not a non-negative number");
            return LineKind::Malformed;
        case TimeResult::TooLarge:
            error = fieldError(0, at(0), "is too large");
            return LineKind::Malformed;
        case TimeResult::Ok:
            break;
        }
        out.timeMs = static_cast<double>(thousandths) / 1000.0;
    } else {
        out.timeMs = 0;
    }

    PacketNotification &p = out.packet;
    std::int64_t v = 0;
    if (!parseInteger(at(1), INT32_MIN, INT32_MAX, v)) {
        error = fieldError(1, at(1), "is not a 32-bit integer");
        return LineKind::Malformed;
    }
    p.BaseStation = static_cast<std::int32_t>(v);

    const std::string_view tag = at(2);
    int tagValue = 0;
    bool tagOk = !tag.empty() && tag.size() <= 4;
    for (std::size_t i = 0; tagOk && i < tag.size(); ++i) {
        const int d = hexDigitValue(tag[i]);
        tagOk = d <= 15;
        tagValue = tagValue * 16 + d;
    }
    if (!tagOk) {
        error = fieldError(2, tag, "is not 1 to 4 hexadecimal digits");
        return LineKind::Malformed;
    }
    p.Datatag = tagValue;

    if (!parseValue(at(3), p.Value, locale.decimal)) {
        error = fieldError(3, at(3), "is not hex: and pairs of hexadecimal digits");
        return LineKind::Malformed;
    }

    std::int16_t *const words[] = { &p.Status, &p.RSSI, &p.CV, &p.BattLow, &p.Error };
    for (std::size_t column = 4; column < 9; ++column) {
        const bool flags = column >= 7;
        // Flag words are bit patterns: 65535 and -1 are the same word.
        if (!parseInteger(at(column), INT16_MIN, flags ? UINT16_MAX : INT16_MAX, v)) {
            error = fieldError(column, at(column),
                flags ? "is not a 16-bit flag word (-32768 to 65535)" : "is not a 16-bit integer");
            return LineKind::Malformed;
        }
        *words[column - 4] = static_cast<std::int16_t>(static_cast<std::uint16_t>(v));
    }
    return LineKind::Packet;
}

std::string recordingTime(double timeMs)
{
    double t = timeMs >= 0 ? timeMs : 0; // also catches NaN
    t = std::min(t, static_cast<double>(kMaxTimeThousandths) / 1000.0);
    const auto thousandths = static_cast<std::uint64_t>(std::llround(t * 1000.0));
    std::string s;
    appendInt(s, static_cast<std::int64_t>(thousandths / 1000));
    unsigned fraction = static_cast<unsigned>(thousandths % 1000);
    if (fraction != 0) {
        char digits[4] = { '.', static_cast<char>('0' + fraction / 100),
            static_cast<char>('0' + fraction / 10 % 10), static_cast<char>('0' + fraction % 10) };
        std::size_t n = 4;
        while (digits[n - 1] == '0')
            --n;
        s.append(digits, n);
    }
    return s;
}

void appendPacketFields(std::string &out, const PacketNotification &p, const NumberLocale &locale)
{
    appendInt(out, p.BaseStation);
    out += ',';
    if (p.Datatag >= 0 && p.Datatag <= 0xFFFF) {
        appendHexByte(out, static_cast<unsigned char>(p.Datatag >> 8));
        appendHexByte(out, static_cast<unsigned char>(p.Datatag & 0xFF));
    } else {
        // Eight digits read back as malformed: a tag no module can have is reported where the
        // recording is played, never folded onto a real module's tag.
        const auto bits = static_cast<std::uint32_t>(p.Datatag);
        for (int shift = 24; shift >= 0; shift -= 8)
            appendHexByte(out, static_cast<unsigned char>(bits >> shift));
    }
    out += ',';
    appendValue(out, p.Value, locale.decimal);
    for (const std::int16_t word : { p.Status, p.RSSI, p.CV, p.BattLow, p.Error }) {
        out += ',';
        appendInt(out, word);
    }
}

std::string recordingLine(const RecordedPacket &packet, const NumberLocale &locale)
{
    const PacketNotification &p = packet.packet;
    std::string out;
    out.reserve(64 + (p.Value.size() <= 16 ? p.Value.size() : 2 * p.Value.size()));
    out += recordingTime(packet.timeMs);
    out += ',';
    appendPacketFields(out, p, locale);
    out += '\n';
    return out;
}

} // namespace corvalog
