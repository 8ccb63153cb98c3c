#pragma once

#include "acquisition/DriverHost.h"
#include "acquisition/PacketHandler.h"
#include "acquisition/PacketPump.h"
#include "acquisition/ProviderSource.h"
#include "acquisition/SourceLosses.h"
#include "runtime/Clock.h"
#include "runtime/UserPrompts.h"
#include "values/ScriptClass.h"
#include "workspace/WorkspaceClass.h"

#include <memory>

namespace corvalog::cli {

// The driver of a source with the program's packet path behind it (fresh tables, handler,
// pump), for the commands that talk to a base station without logging: its notices go to
// standard error.
class ToolDriver
{
public:
    ToolDriver(const ProviderSource &source, UserPrompts &prompts);

    // Brings the base station up as the program does (InterfaceInit, its warnings through the
    // prompts), without the pauses that give a real driver time to let go of its port; the
    // driver, or nothing when it could not be made.
    DataProvider *activate(const WorkspaceClass &workspace);
    DriverHost &host() { return m_host; }
    // What the source lost since it was made.
    SourceLosses losses() const;

private:
    UserPrompts &m_prompts;
    SystemClock m_clock;
    std::unique_ptr<ScriptClass> m_tables;
    PacketHandler m_handler;
    PacketPump m_pump;
    DriverHost m_host;
};

} // namespace corvalog::cli
