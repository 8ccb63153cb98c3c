#pragma once

#include "DriverHost.h"
#include "values/StatusDisplay.h"
#include "workspace/WorkspaceClass.h"

#include <cstdint>
#include <functional>
#include <string>

namespace corvalog {

// The title of the progress lines of pause and resume.
inline constexpr const char *kModuleCommandTitle = "Module Commands";

// Command codes of SendCommand.
inline constexpr std::uint8_t kPauseCommand = 57;
inline constexpr std::uint8_t kResumeCommand = 59;

// The Wake menu: wakes every module at the workspace's base-station address. Shows nothing;
// driver errors are not reported.
void WakeModules(DriverHost &host, const WorkspaceClass &workspace);
// The Sleep menu: sends every module to sleep. Shows nothing; driver errors are not reported.
void SleepModules(DriverHost &host);
// The keep-awake timer's tick: broadcasts keep-awake when there is a driver and the workspace
// asks for it.
void StayAwakeTick(DriverHost &host, const WorkspaceClass &workspace);

// The module a pause or resume is meant for, from the channel number the user typed: the
// channel and the first Data Tag of its expression, or why there is none ("There is no
// channel 7.").
struct ModuleChoice {
    int channel = 0;
    std::int32_t tag = -1;
    std::string error; // empty when the choice stands
};
ModuleChoice moduleOfChannel(const WorkspaceClass &workspace, const std::string &typed);

// The progress line once a pause or resume has ended.
std::string pauseResumeOutcome(int channel, bool pause, bool acknowledged);

// Pauses (Pause non-zero) or resumes one module, retrying until it acknowledges, the status
// window is closed or 101 attempts were made, with a progress line after every attempt and
// 50 ms between attempts (`delay`, Delay by default). True when fewer than 100 attempts were
// made: a module that acknowledged on the 100th or 101st attempt counts as failed, and a closed
// window as success. Driver errors and a BSAddress beyond a byte raise VbError to the caller.
bool PauseResume(DriverHost &host, const WorkspaceClass &workspace, StatusDisplay &status,
    std::int16_t Pause, std::int32_t ID, std::int16_t Channel,
    const std::function<void(std::int32_t)> &delay = {});

} // namespace corvalog
