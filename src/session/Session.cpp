#include "Session.h"

#include "values/ReadValues.h"

namespace corvalog {

Session::Session(SessionOptions options, SessionHost host)
    : m_options(std::move(options))
    , m_host(host)
    , m_ownClock(m_options.clock ? nullptr : std::make_unique<SystemClock>())
    , m_clock(m_options.clock ? *m_options.clock : *m_ownClock)
    , m_tables(std::make_unique<ScriptClass>(m_clock))
    , m_engine(*m_tables)
    , m_handler(*m_tables, m_options.locale)
    , m_pump(m_handler)
    , m_driverHost(m_options.factory, m_pump)
    , m_logger(DataLogger::Context { m_workspace, m_values, m_engine, host.readValues,
                   host.loggingView, host.logTimer, m_clock, host.prompts },
          m_options.semicolons, m_options.rescueFolder)
{
}

Session::~Session()
{
    m_logger.stop();
}

void Session::configureLogging(bool semicolons, std::string rescueFolder)
{
    m_logger.configure(semicolons, std::move(rescueFolder));
}

void Session::activate(const InterfaceInitHooks &hooks)
{
    // Packets the pump drops while held belong to the driver being made.
    m_droppedHeldAtActivation = m_pump.droppedWaiting();
    InterfaceInit(m_driverHost, m_workspace, m_host.prompts, hooks);
    m_unstoredAtActivation = m_handler.droppedCount();
    prepareChannels(m_workspace, m_values);
    if (m_options.keepHistory)
        m_history.reset(m_workspace.Channels, m_clock.now());
}

void Session::screenTick()
{
    if (!screenTickReadsValues(m_logger.isLogging(), m_workspace.LogInterval))
        return;
    ReadValues(m_workspace, m_values, m_engine, m_host.readValues);
    if (m_options.keepHistory)
        m_history.record(m_clock.now(), m_values);
}

void Session::logTick(std::int32_t milliseconds)
{
    const std::uint64_t rows = m_logger.rowsWritten();
    m_logger.LogTimer_Timer(milliseconds);
    // Each row's evaluation belongs to the trends as well.
    if (m_options.keepHistory && m_logger.rowsWritten() != rows)
        m_history.record(m_clock.now(), m_values);
}

SourceLosses Session::lossesSinceActivation() const
{
    const DataProvider *driver = m_driverHost.driver();
    if (!driver)
        return {};
    return sourceLosses(*driver, m_handler.droppedCount() - m_unstoredAtActivation,
        m_pump.droppedWaiting() - m_droppedHeldAtActivation);
}

} // namespace corvalog
