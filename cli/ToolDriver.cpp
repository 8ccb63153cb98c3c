#include "ToolDriver.h"

#include "SourceOptions.h"
#include "acquisition/InterfaceInit.h"
#include "acquisition/ProviderFactory.h"

#include <QCoreApplication>

namespace corvalog::cli {

ToolDriver::ToolDriver(const ProviderSource &source, UserPrompts &prompts)
    : m_prompts(prompts)
    , m_tables(std::make_unique<ScriptClass>(m_clock))
    , m_handler(*m_tables, numberLocale())
    , m_pump(m_handler)
    , m_host(
          [source, settings = driverSettings(prompts)] {
              return createProvider(source, false, numberLocale(), settings);
          },
          m_pump)
{
    m_host.setNoticeHandler(printNotice);
}

DataProvider *ToolDriver::activate(const WorkspaceClass &workspace)
{
    InterfaceInit(m_host, workspace, m_prompts,
        { [] { QCoreApplication::processEvents(); }, [](std::int32_t) {} });
    return m_host.driver();
}

SourceLosses ToolDriver::losses() const
{
    const DataProvider *driver = m_host.driver();
    return driver ? sourceLosses(*driver, m_handler.droppedCount(), m_pump.droppedWaiting())
                  : SourceLosses {};
}

} // namespace corvalog::cli
