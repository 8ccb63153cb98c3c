#pragma once

#include "acquisition/DriverHost.h"
#include "acquisition/InterfaceInit.h"
#include "acquisition/PacketHandler.h"
#include "acquisition/PacketPump.h"
#include "acquisition/SourceLosses.h"
#include "logging/DataLogger.h"
#include "runtime/Clock.h"
#include "runtime/NumberLocale.h"
#include "values/ChannelValues.h"
#include "values/ScriptClass.h"
#include "values/ScriptEngine.h"
#include "values/TrendHistory.h"
#include "workspace/WorkspaceClass.h"

#include <memory>
#include <string>

namespace corvalog {

// How a session is made: where its packets come from, its clock and its number locale.
struct SessionOptions {
    ProviderFactory factory; // makes the driver object at each activation
    const Clock *clock = nullptr; // the system clock when null
    NumberLocale locale; // of the packets' value texts
    bool semicolons = false; // the log separates its fields with ";" (decimal commas)
    std::string rescueFolder; // where the rows of a log file deleted while logging go
    bool keepHistory = false; // every evaluation is kept for the trends
};

// What the owner of a session provides: the window (or its stand-in) the evaluation cycle and
// the logger talk to, the log timer and the prompts.
struct SessionHost {
    ReadValuesHost &readValues;
    LoggingView &loggingView;
    TickTimer &logTimer;
    UserPrompts &prompts;
};

// One logging set-up at work: the clock, the value tables and the script engine, the packet
// handler and pump, the driver, the active workspace with its channel values, and the logger.
// The desktop program and corvalog-cli log each hold one, so the log the tool writes is the log
// the program would have written by construction. Lives on one thread (the GUI thread).
class Session
{
public:
    Session(SessionOptions options, SessionHost host);
    ~Session();
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    const Clock &clock() const { return m_clock; }
    const NumberLocale &locale() const { return m_options.locale; }
    ScriptClass &tables() { return *m_tables; }
    ScriptEngine &engine() { return m_engine; }
    PacketHandler &handler() { return m_handler; }
    const PacketHandler &handler() const { return m_handler; }
    PacketPump &pump() { return m_pump; }
    DriverHost &driverHost() { return m_driverHost; }
    DataProvider *driver() const { return m_driverHost.driver(); }
    WorkspaceClass &workspace() { return m_workspace; }
    const WorkspaceClass &workspace() const { return m_workspace; }
    ChannelValues &values() { return m_values; }
    const ChannelValues &values() const { return m_values; }
    DataLogger &logger() { return m_logger; }
    const DataLogger &logger() const { return m_logger; }

    // Sets how the log is written, once the program knows (its locale probe and log folder).
    void configureLogging(bool semicolons, std::string rescueFolder);

    // Makes the workspace active: re-opens the base station (InterfaceInit with the hooks' waits
    // and event points), then rewrites every channel's expression into its scripts.
    void activate(const InterfaceInitHooks &hooks);

    // The display refresh's evaluation: every channel, unless a log at the refresh interval or
    // faster already evaluates them for each row.
    void screenTick();
    // The log timer's tick: a fresh evaluation and one row.
    void logTick(std::int32_t milliseconds);
    // What the refresh and log ticks evaluated since the workspace was activated (empty unless
    // the options keep it).
    const TrendHistory &history() const { return m_history; }

    // What the source lost since the workspace was last activated.
    SourceLosses lossesSinceActivation() const;

private:
    SessionOptions m_options;
    SessionHost m_host;
    std::unique_ptr<Clock> m_ownClock;
    const Clock &m_clock;
    std::unique_ptr<ScriptClass> m_tables;
    ScriptEngine m_engine;
    PacketHandler m_handler;
    PacketPump m_pump;
    DriverHost m_driverHost;
    WorkspaceClass m_workspace;
    ChannelValues m_values;
    DataLogger m_logger;
    TrendHistory m_history;
    std::uint64_t m_unstoredAtActivation = 0;
    std::uint64_t m_droppedHeldAtActivation = 0;
};

} // namespace corvalog
