#pragma once

#include "LogCompanions.h"
#include "LogFile.h"
#include "LoggingView.h"
#include "runtime/Clock.h"
#include "runtime/UserPrompts.h"
#include "values/ReadValues.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace corvalog {

// The main window's logging: one CSV row of every channel per log timer tick, from a fresh
// evaluation cycle, until stopped. Logging switches the menus so that the workspace cannot
// change under a running log. A file that cannot be created, and a row that cannot be written
// (a full disk, a removed folder), are told to the user once and logging stops with every
// earlier row kept.
class DataLogger
{
public:
    struct Context {
        WorkspaceClass &workspace;
        ChannelValues &values;
        ScriptEngine &engine;
        ReadValuesHost &host; // evaluation cycle and the events let run after each row
        LoggingView &view;
        TickTimer &timer;
        const Clock &clock;
        UserPrompts &prompts;
    };
    static constexpr const char *kTitle = "Log File";

    // `semicolons`: the locale writes decimal commas, so fields are separated by ";".
    // `rescueFolder`: where the rows of a log file deleted while logging are saved.
    DataLogger(Context context, bool semicolons, std::string rescueFolder);
    // Changes both, for logs started from now on.
    void configure(bool semicolons, std::string rescueFolder);

    // Stops logging when on; otherwise, when the log interval allows logging, asks for the
    // file with `chooseFile` ("" when cancelled) and starts.
    void DoLogging(const std::function<std::string()> &chooseFile);
    // Starts logging to the path (replacing the file); false (and the user told why) when the
    // interval allows no logging or the file cannot be created. An empty path does nothing.
    bool start(const std::string &path);
    void stop();

    // The log timer's tick: evaluates every channel and writes one row.
    void LogTimer_Timer(std::int32_t milliseconds);
    // Stops logging (and tells the user) when the log is a pipe whose reader has left, rather
    // than at the next row.
    void checkOutput();
    // Asked while a row waits for the reader of a pipe: true gives the row up and stops logging
    // (the user is told). Without one, a reader that takes nothing for two seconds stops it.
    void setInterruption(std::function<bool()> interrupted)
    {
        m_file.setInterruption(std::move(interrupted));
    }

    // What the metadata beside each log says of the source, asked when a log starts.
    void setMetadata(std::function<LogMetadata()> metadata) { m_metadata = std::move(metadata); }

    bool isLogging() const { return !m_fileName.empty(); }
    const std::string &logFileName() const { return m_fileName; }
    double elapsedMs() const { return m_elapsed; }
    // The milliseconds of the latest tick (the log interval until the first row).
    double lastIntervalMs() const { return m_lastInterval; }
    std::uint64_t rowsWritten() const { return m_rows; }
    bool firstRowPending() const { return m_firstRowPending; }
    const std::string &startDate() const { return m_startDate; }

private:
    void stopAndTell(const LogFile::Failure &failure);
    void openCompanions(const std::string &path, const std::vector<std::string> &captions);
    void companionsFailed(const std::string &why);

    Context m_ctx;
    bool m_semicolons;
    std::string m_rescueFolder;
    LogFile m_file;
    std::string m_fileName;
    double m_elapsed = 0;
    double m_tickAccumulator = 0;
    double m_lastInterval = 0;
    std::string m_startDate;
    bool m_firstRowPending = false;
    std::uint64_t m_rows = 0;
    bool m_truncationTold = false;
    LogCompanions m_companions;
    LimitWatch m_watch;
    std::function<LogMetadata()> m_metadata;
};

// Why the workspace's log interval allows no logging ("" when it does): a timer needs at
// least 1 ms.
std::string logIntervalProblem(const WorkspaceClass &workspace);

// The logging status text: "Logging at <rate>Hz to <path>", the rate formatted "0.0".
std::string loggingLabel(std::int32_t logIntervalMs, const std::string &path);

// The line the display refresh shows while logging: "Logging requested at 250ms (96 channel
// readings per sec) to <path> and achieving 087ms".
std::string loggingProgressLabel(
    std::int32_t logIntervalMs, int channels, float achievedMs, const std::string &path);

// True when the display refresh evaluates the channels itself: always, except while logging
// at an interval of 333 ms or less, when the log timer's cycles keep the values fresh.
bool screenTickReadsValues(bool logging, std::int32_t logIntervalMs);

} // namespace corvalog
