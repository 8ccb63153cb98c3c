#include "DataLogger.h"

#include "LogFormat.h"
#include "runtime/Format.h"
#include "runtime/NumberText.h"
#include "runtime/TimerPeriods.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace corvalog {

std::string logIntervalProblem(const WorkspaceClass &workspace)
{
    if (workspace.LogInterval >= 1)
        return {};
    return "Cannot log at an interval of " + std::to_string(workspace.LogInterval)
        + " ms. Set a log interval of at least 1 ms first.";
}

std::string loggingLabel(std::int32_t logIntervalMs, const std::string &path)
{
    const double rate = 1.0 / (static_cast<double>(logIntervalMs) / 1000.0);
    return "Logging at " + Format(Variant::dbl(rate), "0.0") + "Hz to " + path;
}

std::string loggingProgressLabel(
    std::int32_t logIntervalMs, int channels, float achievedMs, const std::string &path)
{
    const double readings
        = std::floor(1.0 / (static_cast<double>(logIntervalMs) / 1000.0) * channels);
    return "Logging requested at " + Format(Variant::longValue(logIntervalMs), "000") + "ms ("
        + doubleText(readings) + " channel readings per sec) to " + path + " and achieving "
        + Format(Variant::single(achievedMs), "000") + "ms";
}

bool screenTickReadsValues(bool logging, std::int32_t logIntervalMs)
{
    return !(logging && logIntervalMs <= kScreenIntervalMs);
}

DataLogger::DataLogger(Context context, bool semicolons, std::string rescueFolder)
    : m_ctx(context)
    , m_semicolons(semicolons)
    , m_rescueFolder(std::move(rescueFolder))
{
}

void DataLogger::configure(bool semicolons, std::string rescueFolder)
{
    m_semicolons = semicolons;
    m_rescueFolder = std::move(rescueFolder);
}

void DataLogger::DoLogging(const std::function<std::string()> &chooseFile)
{
    if (isLogging()) {
        stop();
        return;
    }
    // Asked before the dialog, so nobody picks a file for a log that cannot run.
    const std::string problem = logIntervalProblem(m_ctx.workspace);
    if (!problem.empty()) {
        m_ctx.prompts.message(kTitle, problem, PromptIcon::Exclamation);
        return;
    }
    start(chooseFile());
}

bool DataLogger::start(const std::string &path)
{
    const std::string problem = logIntervalProblem(m_ctx.workspace);
    if (!problem.empty()) {
        m_ctx.prompts.message(kTitle, problem, PromptIcon::Exclamation);
        return false;
    }
    m_ctx.view.setLogLabel("");
    m_file.close();
    m_lastInterval = m_ctx.workspace.LogInterval;
    if (path.empty())
        return false;

    if (const std::optional<FileError> error = m_file.open(path)) {
        m_ctx.prompts.message(kTitle,
            "Cannot create the log file " + path + ": " + error->description + " (error "
                + std::to_string(error->number) + ").",
            PromptIcon::Exclamation);
        return false;
    }
    const WorkspaceClass &ws = m_ctx.workspace;
    std::vector<std::string> captions;
    const int channels = std::min<int>(ws.Channels, static_cast<int>(ws.Items.size()));
    for (int n = 1; n <= channels; ++n)
        captions.push_back(m_ctx.host.panelTitle(n));
    if (const std::optional<LogFile::Failure> failure
        = m_file.write(logHeader(captions, m_semicolons), m_rescueFolder)) {
        m_ctx.prompts.message(kTitle,
            "Cannot write the log file " + path + ": " + failure->error.description + " (error "
                + std::to_string(failure->error.number) + ").",
            PromptIcon::Exclamation);
        return false;
    }

    m_fileName = path;
    m_truncationTold = false;
    m_watch.reset();
    if (m_file.isRegularFile())
        openCompanions(path, captions);
    const std::string label = loggingLabel(ws.LogInterval, path);
    m_ctx.view.setLogLabel(label);
    m_ctx.view.setLogLabelToolTip(label);
    m_elapsed = 0;
    m_tickAccumulator = 0;
    m_rows = 0;
    m_ctx.view.enableMenu(LogMenu::StartLog, false);
    m_ctx.view.enableMenu(LogMenu::EditWorkspace, false);
    m_ctx.view.enableMenu(LogMenu::StopLog, true);
    m_ctx.view.enableMenu(LogMenu::ViewLog, false);
    m_startDate = Format(Variant::date(m_ctx.clock.now()), "DD/MM/YYYY");
    m_ctx.timer.start(ws.LogInterval);
    m_firstRowPending = true;
    m_ctx.view.enableMenu(LogMenu::EditWorkspace, false);
    m_ctx.view.enableMenu(LogMenu::Open, false);
    return true;
}

void DataLogger::stop()
{
    if (!isLogging())
        return;
    m_ctx.timer.stop();
    m_fileName.clear();
    m_ctx.view.enableMenu(LogMenu::StartLog, true);
    m_ctx.view.enableMenu(LogMenu::EditWorkspace, true);
    m_ctx.view.enableMenu(LogMenu::StopLog, false);
    m_ctx.view.enableMenu(LogMenu::ViewLog, true);
    m_ctx.view.setLogLabel("");
    m_file.close();
    m_companions.close();
    m_ctx.view.enableMenu(LogMenu::EditWorkspace, true);
    m_ctx.view.enableMenu(LogMenu::Open, true);
}

void DataLogger::LogTimer_Timer(std::int32_t milliseconds)
{
    if (!isLogging())
        return;
    ReadValues(m_ctx.workspace, m_ctx.values, m_ctx.engine, m_ctx.host);
    if (!isLogging())
        return; // stopped while the cycle let events run
    m_tickAccumulator += milliseconds;
    m_elapsed += m_tickAccumulator;
    m_lastInterval = m_tickAccumulator;

    const double now = m_ctx.clock.now();
    const std::string row = logRow(now, m_elapsed, m_ctx.workspace, m_ctx.values, m_semicolons);
    if (const std::optional<LogFile::Failure> failure = m_file.write(row, m_rescueFolder)) {
        stopAndTell(*failure);
        return;
    }
    ++m_rows;
    // The events of the row just written, beside it (a pipe has no files beside it).
    if (m_companions.isOpen()) {
        const std::vector<LimitEvent> events = m_watch.update(m_ctx.workspace, m_ctx.values);
        if (const std::optional<std::string> why
            = m_companions.write(events, now, m_elapsed, m_ctx.workspace))
            companionsFailed(why.value());
    }
    m_ctx.host.processEvents();
    m_tickAccumulator = 0;
    m_firstRowPending = false;
    // Told last, with every count settled: the message lets events (and further ticks) run.
    if (m_file.takeTruncationNotice() && !m_truncationTold) {
        m_truncationTold = true;
        m_ctx.prompts.message(kTitle,
            "The log file " + m_fileName
                + " was emptied by another program while logging. Logging goes on at its new "
                  "end; the rows written before are no longer in it.",
            PromptIcon::Information);
    }
}

void DataLogger::checkOutput()
{
    if (!isLogging())
        return;
    if (const std::optional<LogFile::Failure> failure = m_file.checkReader())
        stopAndTell(*failure);
}

void DataLogger::openCompanions(const std::string &path, const std::vector<std::string> &captions)
{
    const LogMetadata metadata = m_metadata ? m_metadata() : LogMetadata {};
    if (const std::optional<std::string> why = m_companions.open(
            path, m_ctx.workspace, captions, metadata, m_ctx.clock.now(), m_semicolons))
        companionsFailed(why.value());
}

void DataLogger::companionsFailed(const std::string &why)
{
    // The log itself is what must not stop: it goes on without the files beside it.
    m_ctx.prompts.message(kTitle,
        "The events and metadata beside the log could not be written: " + why
            + ". The log goes on without them.",
        PromptIcon::Information);
}

void DataLogger::stopAndTell(const LogFile::Failure &failure)
{
    const std::string path = m_fileName;
    stop();
    std::string text;
    if (failure.readerGone) {
        text = "Logging has stopped: nothing reads " + path
            + " any more (its reader has closed it).";
    } else if (failure.interrupted) {
        text = "Logging has stopped: the row due at " + doubleText(m_elapsed)
            + " ms could not be written, since nothing was reading " + path + ".";
    } else if (failure.removed) {
        text = "Logging has stopped: the log file " + path
            + " was deleted, or its folder removed, while logging.";
        text += failure.rescuedTo.empty()
            ? " The rows written before could not be saved."
            : " The rows written before were saved to " + failure.rescuedTo + ".";
    } else {
        text = "Logging has stopped: the log file " + path
            + " could not be written: " + failure.error.description + " (error "
            + std::to_string(failure.error.number) + "). Every row before this one is in the file.";
    }
    m_ctx.prompts.message(kTitle, text, PromptIcon::Exclamation);
}

} // namespace corvalog
