#include "LogCompanions.h"

#include "LogFormat.h"
#include "runtime/CsvField.h"
#include "runtime/DateTime.h"
#include "runtime/Format.h"
#include "runtime/JsonWriter.h"
#include "runtime/NumberText.h"
#include "workspace/WorkspaceJson.h"

#include <QDateTime>
#include <algorithm>
#include <cstdio>
#include <sstream>

namespace corvalog {

namespace {

// The local date-time as ISO 8601 with its offset from UTC: "2026-11-24T07:20:05.250+01:00".
std::string isoWithOffset(double date)
{
    const CivilDateTime dt = civilFromDate(date);
    const QDateTime local(
        QDate(dt.year, dt.month, dt.day), QTime(dt.hour, dt.minute, dt.second), Qt::LocalTime);
    const int offset = local.offsetFromUtc();
    const int minutes = std::abs(offset) / 60;
    const double seconds = (date - std::floor(date)) * 86400.0;
    const int ms = static_cast<int>(std::llround(seconds * 1000.0) % 1000);
    char text[48];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d.%03d%c%02d:%02d", dt.year,
        dt.month, dt.day, dt.hour, dt.minute, dt.second, ms, offset < 0 ? '-' : '+', minutes / 60,
        minutes % 60);
    return text;
}

} // namespace

std::string LogCompanions::pathBeside(const std::string &logPath, const char *suffix)
{
    std::string base = logPath;
    if (base.size() > 4) {
        std::string end = base.substr(base.size() - 4);
        std::transform(end.begin(), end.end(), end.begin(),
            [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        if (end == ".csv")
            base.resize(base.size() - 4);
    }
    return base + suffix;
}

std::optional<std::string> LogCompanions::open(const std::string &logPath,
    const WorkspaceClass &workspace, const std::vector<std::string> &captions,
    const LogMetadata &metadata, double startDate, bool semicolons)
{
    close();
    m_captions = captions;
    m_semicolons = semicolons;
    const auto failed = [](const std::string &path, const FileError &error) {
        return path + ": " + error.description + " (error " + std::to_string(error.number) + ")";
    };

    const std::string metaPath = pathBeside(logPath, kMetaSuffix);
    LogFile meta;
    if (const std::optional<FileError> error = meta.open(metaPath))
        return failed(metaPath, *error);
    if (const std::optional<LogFile::Failure> failure
        = meta.write(metadataJson(workspace, metadata, startDate, semicolons)))
        return failed(metaPath, failure->error);
    meta.close();

    const std::string eventsPath = pathBeside(logPath, kEventsSuffix);
    if (const std::optional<FileError> error = m_events.open(eventsPath))
        return failed(eventsPath, *error);
    if (const std::optional<LogFile::Failure> failure = m_events.write(eventsHeader(semicolons))) {
        m_events.close();
        return failed(eventsPath, failure->error);
    }
    return std::nullopt;
}

std::optional<std::string> LogCompanions::write(const std::vector<LimitEvent> &events, double date,
    double elapsedMs, const WorkspaceClass &workspace)
{
    if (events.empty() || !isOpen())
        return std::nullopt;
    std::string rows;
    for (const LimitEvent &e : events) {
        const std::size_t i = static_cast<std::size_t>(e.channel - 1);
        rows += eventRow(date, elapsedMs, e, i < m_captions.size() ? m_captions[i] : std::string(),
            workspace.item(e.channel).Format, m_semicolons);
    }
    // One write for the row's events, so a crash leaves whole lines.
    if (const std::optional<LogFile::Failure> failure = m_events.write(rows)) {
        const std::string why = m_events.path() + ": " + failure->error.description + " (error "
            + std::to_string(failure->error.number) + ")";
        m_events.close();
        return why;
    }
    return std::nullopt;
}

std::string LogCompanions::eventsHeader(bool semicolons)
{
    std::string header = "Date,Time,Elapsed mS,Channel,Caption,Event,Value,Limit\r\n";
    if (semicolons)
        std::replace(header.begin(), header.end(), ',', ';');
    return header;
}

std::string LogCompanions::eventRow(double date, double elapsedMs, const LimitEvent &event,
    const std::string &caption, const std::string &format, bool semicolons)
{
    const char separator = semicolons ? ';' : ',';
    std::string row;
    appendDateAndTime(row, date, separator);
    row += doubleText(elapsedMs);
    row += separator;
    row += std::to_string(event.channel);
    row += separator;
    appendCsvField(row, caption, separator);
    row += separator;
    row += event.kind;
    row += separator;
    appendCsvField(row, Format(Variant::single(event.value), format), separator);
    row += separator;
    if (event.limit)
        appendCsvField(row, singleText(*event.limit), separator);
    return row + "\r\n";
}

std::string LogCompanions::metadataJson(
    const WorkspaceClass &workspace, const LogMetadata &metadata, double startDate, bool semicolons)
{
    std::ostringstream out;
    JsonWriter json(out);
    json.beginObject();
    json.text("program", "Corvalog");
    json.text("version", CORVALOG_VERSION);
    json.text("started", isoWithOffset(startDate));
    json.text("source", metadata.source);
    json.text("driver", metadata.driver);
    json.text("decimal", semicolons ? "comma" : "point");
    json.text("separator", semicolons ? ";" : ",");
    writeWorkspaceJson(json, workspace, "workspace");
    json.endObject();
    return out.str();
}

} // namespace corvalog
