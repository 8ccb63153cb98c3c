#pragma once

#include "DriverHost.h"
#include "runtime/UserPrompts.h"
#include "workspace/WorkspaceClass.h"

#include <cstdint>
#include <functional>

namespace corvalog {

// What InterfaceInit needs of the world around it: letting pending window events run once,
// and waiting (Delay by default; tests record the waits instead).
struct InterfaceInitHooks {
    std::function<void()> processEvents = [] {};
    std::function<void(std::int32_t milliseconds)> wait;
};

// Re-creates the driver object and brings the base station up with the workspace's settings:
// close the old interface, wait 1 s (events run once first), release the old object (events
// run once, with its packets held back), wait 0.5 s (both waits only when there was an old
// object to let go of), create a new object, open USB or the
// serial port, detect the base station at BSAddress and set RFChannel. Every failure shows its
// "Warning" message (critical icon) and the program carries on.
void InterfaceInit(DriverHost &host, const WorkspaceClass &workspace, UserPrompts &prompts,
    const InterfaceInitHooks &hooks = {});

// Returns when the milliseconds have passed on a monotonic clock, dispatching nothing
// meanwhile; 0 or less returns at once.
void Delay(std::int32_t milliseconds);

} // namespace corvalog
