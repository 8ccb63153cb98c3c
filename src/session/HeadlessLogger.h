#pragma once

#include "Session.h"
#include "acquisition/DriverSettings.h"
#include "acquisition/ProviderSource.h"

#include <functional>
#include <memory>
#include <optional>

namespace corvalog {

struct HeadlessLogOptions {
    ProviderSource source;
    std::string outPath = "/dev/stdout"; // the log as LogFile opens it
    // How long to log; without it a recording logs to its end, other sources until stopped.
    std::optional<double> durationMs;
    // Packets at their recorded instants, timers at exact multiples of their periods, the
    // clock showing `start` plus the time passed: the same log every run, as fast as it goes.
    bool virtualTime = false;
    double start = 36526.0; // script date of 2000-01-01 00:00:00
    bool semicolons = false;
    std::string rescueFolder; // where rows of a log file deleted while logging are saved
    DriverSettings driverSettings; // the devices a serial source opens
    // Told what the driver says about its line (a base station lost, or back).
    DriverHost::NoticeHandler notices;
};

struct HeadlessProgress {
    std::uint64_t rows = 0;
    double loggedMs = 0; // the log's Elapsed so far
    double wallSeconds = 0;
};

// The main window without a window: a Session whose workspace is activated as the program
// activates it, the display refresh's evaluation on its timer and the log timer writing rows,
// from one packet source.
class HeadlessLogger final : private ReadValuesHost, private LoggingView
{
public:
    HeadlessLogger(WorkspaceClass workspace, HeadlessLogOptions options, UserPrompts &prompts);
    ~HeadlessLogger() override;

    // Logs until the duration has passed, the recording has ended or `stopRequested` turns
    // true; `progress` is told about once a second. The file is closed on return. False when
    // logging could not start (the user was told why).
    bool run(const std::function<bool()> &stopRequested,
        const std::function<void(const HeadlessProgress &)> &progress);

    std::uint64_t rowsWritten() const { return m_rows; }
    const DataProvider *driver() const { return m_session.driver(); }
    SourceLosses losses() const { return m_session.lossesSinceActivation(); }

private:
    class VirtualTimer;

    std::unique_ptr<TickTimer> makeLogTimer();
    bool activate();
    bool runVirtual(const std::function<bool()> &stopRequested,
        const std::function<void(const HeadlessProgress &)> &progress);
    bool runLive(const std::function<bool()> &stopRequested,
        const std::function<void(const HeadlessProgress &)> &progress);

    // ReadValuesHost: no label, so the cycle lets no events run between channels.
    bool suppressReadingLabel() const override { return true; }
    void setReadingLabel(const std::string &) override { }
    void processEvents() override;
    std::string panelTitle(int n) const override;
    // LoggingView: nothing to show.
    void enableMenu(LogMenu, bool) override { }
    void setLogLabel(const std::string &) override { }
    void setLogLabelToolTip(const std::string &) override { }

    HeadlessLogOptions m_options;
    UserPrompts &m_prompts;
    ManualClock m_virtualClock;
    std::unique_ptr<TickTimer> m_logTimer;
    Session m_session;
    std::uint64_t m_rows = 0;
    // A live run with a duration writes exactly the rows due up to its end, as a run on
    // virtual time does, and then ends.
    std::optional<std::uint64_t> m_rowLimit;
    std::function<void()> m_rowLimitReached;
};

} // namespace corvalog
