#pragma once

#include "LogFile.h"
#include "values/ChannelValues.h"
#include "values/LimitEvents.h"
#include "workspace/WorkspaceClass.h"

#include <optional>
#include <string>
#include <vector>

namespace corvalog {

// Where a log's packets came from, for its metadata.
struct LogMetadata {
    std::string source; // as the user named it ("sim", "serial:/dev/ttyUSB0")
    std::string driver; // the driver's name
};

// The files beside a log NAME.csv: NAME.events.csv, a row per limit event in the log's
// separator and date and time formats, and NAME.meta.json, what is needed to read the log
// later (program and version, start with its UTC offset, source, decimal mode, the workspace
// with its tares). Each is written as the log is, a line at a time, so a crash loses at most
// the line being written.
class LogCompanions
{
public:
    static constexpr const char *kEventsSuffix = ".events.csv";
    static constexpr const char *kMetaSuffix = ".meta.json";

    // A companion's path: the log's without its ".csv" (any letter case), and the suffix.
    static std::string pathBeside(const std::string &logPath, const char *suffix);

    // Writes the metadata and the events header beside the log; the path and the system's
    // reason of the first file that could not be written (nothing then stays open).
    std::optional<std::string> open(const std::string &logPath, const WorkspaceClass &workspace,
        const std::vector<std::string> &captions, const LogMetadata &metadata, double startDate,
        bool semicolons);
    bool isOpen() const { return m_events.isOpen(); }
    // The events of one row; why the events file could not be written (it is closed then).
    std::optional<std::string> write(const std::vector<LimitEvent> &events, double date,
        double elapsedMs, const WorkspaceClass &workspace);
    void close() { m_events.close(); }

    // The events file's header, ended by CR LF.
    static std::string eventsHeader(bool semicolons);
    // One event row, ended by CR LF: Date, Time, Elapsed mS, Channel, Caption, Event, Value (in
    // the channel's format) and Limit (empty for error and recovered).
    static std::string eventRow(double date, double elapsedMs, const LimitEvent &event,
        const std::string &caption, const std::string &format, bool semicolons);
    // The metadata document.
    static std::string metadataJson(const WorkspaceClass &workspace, const LogMetadata &metadata,
        double startDate, bool semicolons);

private:
    LogFile m_events;
    std::vector<std::string> m_captions;
    bool m_semicolons = false;
};

} // namespace corvalog
