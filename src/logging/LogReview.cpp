#include "LogReview.h"

#include "LogCompanions.h"
#include "acquisition/RecordingFormat.h"
#include "runtime/CsvField.h"
#include "runtime/NumberLocale.h"
#include "runtime/ReadNumber.h"

#include <QByteArray>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>

namespace corvalog {

namespace {

constexpr std::size_t kKeptWarnings = 20;

// The file's lines without their CR LF (or LF).
std::vector<std::string_view> splitLines(const QByteArray &bytes)
{
    std::vector<std::string_view> lines;
    const std::string_view all(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    std::size_t start = 0;
    while (start < all.size()) {
        std::size_t end = all.find('\n', start);
        if (end == std::string_view::npos)
            end = all.size();
        std::string_view line = all.substr(start, end - start);
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        lines.push_back(line);
        start = end + 1;
    }
    return lines;
}

// Splits a line by a separator with the log's quoting.
bool splitLine(std::string_view line, char separator, std::vector<std::string> &fields)
{
    std::string error;
    return splitCsvFields(line, fields, error, separator);
}

// A log's Time field (hh:mm:ss with the locale's separator) in ms since midnight.
std::optional<double> timeOfDayMs(std::string_view text)
{
    int parts[3] = { 0, 0, 0 };
    std::size_t count = 0;
    bool inNumber = false;
    for (const char c : text) {
        if (c >= '0' && c <= '9') {
            if (!inNumber && count++ == 3)
                return std::nullopt;
            inNumber = true;
            int &part = parts[count - 1];
            part = part * 10 + (c - '0');
            if (part > 99)
                return std::nullopt;
        } else {
            inNumber = false;
        }
    }
    if (count != 3 || parts[0] > 23 || parts[1] > 59 || parts[2] > 59)
        return std::nullopt;
    return ((parts[0] * 60.0 + parts[1]) * 60.0 + parts[2]) * 1000.0;
}

void warn(ReviewData &data, std::size_t lineNumber, const std::string &why, std::uint64_t &count)
{
    ++count;
    if (data.warnings.size() < kKeptWarnings)
        data.warnings.push_back("line " + std::to_string(lineNumber) + ": " + why);
}

QByteArray readAll(const std::string &path, std::string &error)
{
    QFile file(QString::fromStdString(path));
    if (!file.open(QIODevice::ReadOnly)) {
        error = "cannot open " + path + ": " + file.errorString().toStdString();
        return {};
    }
    return file.readAll();
}

void readMetadata(ReviewData &data)
{
    QFile file(
        QString::fromStdString(LogCompanions::pathBeside(data.path, LogCompanions::kMetaSuffix)));
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QJsonObject meta = QJsonDocument::fromJson(file.readAll()).object();
    data.started = meta.value("started").toString().toStdString();
    const QJsonArray items = meta.value("workspace").toObject().value("items").toArray();
    const auto limit = [](const QJsonValue &v) -> std::optional<float> {
        // The editor's defaults stand for "no limit".
        if (!v.isDouble() || std::abs(v.toDouble()) >= 9999999.0)
            return std::nullopt;
        return static_cast<float>(v.toDouble());
    };
    for (std::size_t n = 0; n < data.captions.size() && n < static_cast<std::size_t>(items.size());
         ++n) {
        const QJsonObject item = items[static_cast<int>(n)].toObject();
        data.underload[n] = limit(item.value("Underload"));
        data.overload[n] = limit(item.value("Overload"));
    }
}

// Where one channel went into error and came out of it, in the order of the events file; asked
// for times in the order of the log's rows.
struct ErrorSpans {
    std::vector<std::pair<double, bool>> changes; // time, and whether in error from then on
    std::size_t next = 0;
    bool error = false;

    bool at(double timeMs)
    {
        while (next < changes.size() && changes[next].first <= timeMs)
            error = changes[next++].second;
        return error;
    }
};

void readEvents(ReviewData &data, char separator, char decimal)
{
    std::string error;
    QFile file(
        QString::fromStdString(LogCompanions::pathBeside(data.path, LogCompanions::kEventsSuffix)));
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QByteArray bytes = file.readAll();
    std::vector<std::string> f;
    const std::vector<std::string_view> lines = splitLines(bytes);
    for (std::size_t i = 1; i < lines.size(); ++i) {
        if (lines[i].empty() || !splitLine(lines[i], separator, f) || f.size() != 8)
            continue;
        const std::optional<double> elapsed = logDouble(f[2], decimal);
        int channel = 0;
        if (!elapsed || !readNumber(f[3], channel) || channel < 1)
            continue;
        data.events.push_back({ *elapsed, channel, f[4], f[5], f[6], f[7] });
    }
}

std::optional<ReviewData> readLog(
    const std::string &path, const std::vector<std::string_view> &lines, std::string &error)
{
    const std::string_view header = lines.front();
    const char separator = header.rfind("Date;Time;Elapsed mS", 0) == 0 ? ';' : ',';
    const char decimal = separator == ';' ? ',' : '.';
    ReviewData data;
    data.path = path;
    std::vector<std::string> f;
    if (!splitLine(header, separator, f) || f.size() < 3) {
        error = path + " is not a Corvalog log: its header does not read";
        return std::nullopt;
    }
    data.captions.assign(f.begin() + 3, f.end());
    const std::size_t columns = data.captions.size();
    data.underload.assign(columns, std::nullopt);
    data.overload.assign(columns, std::nullopt);
    data.history = TrendHistory(std::max<std::size_t>(lines.size(), 1));
    data.history.reset(static_cast<int>(columns), 0.0);
    readEvents(data, separator, decimal);
    // A channel in error logs its Default (or its last value): the events tell which rows
    // those are, so they show as errors rather than as readings.
    std::vector<ErrorSpans> inError(columns);
    for (const ReviewEvent &event : data.events) {
        if (event.channel <= static_cast<int>(columns)
            && (event.kind == "error" || event.kind == "recovered"))
            inError[static_cast<std::size_t>(event.channel - 1)].changes.emplace_back(
                event.timeMs, event.kind == "error");
    }
    std::uint64_t bad = 0;
    for (std::size_t i = 1; i < lines.size(); ++i) {
        if (lines[i].empty())
            continue;
        if (!splitLine(lines[i], separator, f) || f.size() != columns + 3) {
            warn(data, i + 1, "not a row of " + std::to_string(columns + 3) + " fields", bad);
            continue;
        }
        const std::optional<double> elapsed = logDouble(f[2], decimal);
        if (!elapsed) {
            warn(data, i + 1, "Elapsed mS '" + f[2] + "' is not a number", bad);
            continue;
        }
        if (data.rows == 0) {
            if (const std::optional<double> clock = timeOfDayMs(f[1]))
                data.clockAtStartMs = *clock - *elapsed;
        }
        for (std::size_t c = 0; c < columns; ++c) {
            const std::optional<float> v = logNumber(f[c + 3], decimal);
            const bool error = !v || inError[c].at(*elapsed);
            data.history.add(static_cast<int>(c + 1), *elapsed, v.value_or(0.0f), error);
        }
        ++data.rows;
    }
    if (bad > data.warnings.size())
        data.warnings.push_back(std::to_string(bad - data.warnings.size()) + " more lines");
    readMetadata(data);
    return data;
}

std::optional<ReviewData> readRecording(
    const std::string &path, const std::vector<std::string_view> &lines)
{
    ReviewData data;
    data.path = path;
    data.recording = true;
    // The series of each tag in the order of the tags, values in recorded order.
    std::map<std::int32_t, std::vector<std::pair<double, std::optional<float>>>> tags;
    RecordedPacket packet;
    std::string why;
    std::uint64_t bad = 0;
    const NumberLocale point = NumberLocale::point();
    for (std::size_t i = 0; i < lines.size(); ++i) {
        switch (parseRecordingLine(lines[i], true, packet, why, point)) {
        case LineKind::Packet:
            tags[packet.packet.Datatag].emplace_back(
                packet.timeMs, logNumber(packet.packet.Value, '.'));
            ++data.rows;
            break;
        case LineKind::Malformed:
            warn(data, i + 1, why, bad);
            break;
        case LineKind::Skip:
            break;
        }
    }
    std::size_t longest = 1;
    for (const auto &[tag, series] : tags) {
        char name[8];
        std::snprintf(name, sizeof name, "%04X", static_cast<unsigned>(tag));
        data.captions.push_back(name);
        longest = std::max(longest, series.size());
    }
    data.underload.assign(data.captions.size(), std::nullopt);
    data.overload.assign(data.captions.size(), std::nullopt);
    data.history = TrendHistory(longest);
    data.history.reset(static_cast<int>(tags.size()), 0.0);
    int n = 0;
    for (const auto &[tag, series] : tags) {
        ++n;
        for (const auto &[t, v] : series)
            data.history.add(n, t, v.value_or(0.0f), !v);
    }
    return data;
}

} // namespace

std::optional<float> logNumber(std::string_view text, char decimal)
{
    const std::optional<double> value = logDouble(text, decimal);
    if (!value)
        return std::nullopt;
    return static_cast<float>(*value);
}

std::optional<double> logDouble(std::string_view text, char decimal)
{
    const char group = decimal == ',' ? '.' : ',';
    char plain[64];
    std::size_t n = 0;
    for (const char c : text) {
        if (c == group || c == ' ')
            continue;
        if (n + 1 >= sizeof plain)
            return std::nullopt;
        plain[n++] = c == decimal ? '.' : c;
    }
    std::string_view number(plain, n);
    if (!number.empty() && number.front() == '+')
        number.remove_prefix(1);
    double value = 0;
    if (!readNumber(number, value) || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::optional<ReviewData> readForReview(const std::string &path, std::string &error)
{
    const QByteArray bytes = readAll(path, error);
    if (!error.empty())
        return std::nullopt;
    const std::vector<std::string_view> lines = splitLines(bytes);
    if (lines.empty()) {
        error = path + " is empty";
        return std::nullopt;
    }
    if (lines.front().rfind("Date,Time,Elapsed mS", 0) == 0
        || lines.front().rfind("Date;Time;Elapsed mS", 0) == 0)
        return readLog(path, lines, error);
    if (lines.front() == "# Corvalog packet recording 1")
        return readRecording(path, lines);
    error = path + " is neither a Corvalog log nor a packet recording";
    return std::nullopt;
}

} // namespace corvalog
