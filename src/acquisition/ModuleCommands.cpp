#include "ModuleCommands.h"

#include "InterfaceInit.h"
#include "runtime/Convert.h"
#include "runtime/Val.h"
#include "runtime/VbError.h"
#include "values/TagReplace.h"

#include <cstdio>

namespace corvalog {

void WakeModules(DriverHost &host, const WorkspaceClass &workspace)
{
    try {
        driverOf(host).WakeAll(toByte(workspace.BSAddress));
    } catch (const VbError &) {
    }
}

void SleepModules(DriverHost &host)
{
    try {
        driverOf(host).SleepAll();
    } catch (const VbError &) {
    }
}

void StayAwakeTick(DriverHost &host, const WorkspaceClass &workspace)
{
    if (!host.driver() || workspace.KeepAwake == 0)
        return;
    try {
        host.driver()->KeepAwakeAll();
    } catch (const VbError &) {
    }
}

ModuleChoice moduleOfChannel(const WorkspaceClass &workspace, const std::string &typed)
{
    const double number = Val(typed);
    if (!(number >= 1 && number < workspace.Channels + 1))
        return { 0, -1, "There is no channel " + typed + "." };
    const int channel = static_cast<int>(number);
    const std::int32_t tag = firstDataTag(workspace.item(channel).DataTagList);
    if (tag < 0)
        return { channel, -1,
            "Channel " + std::to_string(channel) + " does not refer to a module." };
    return { channel, tag, {} };
}

std::string pauseResumeOutcome(int channel, bool pause, bool acknowledged)
{
    return "Channel " + std::to_string(channel)
        + (acknowledged ? (pause ? ": the module is paused." : ": the module is running again.")
                        : ": the module did not answer.");
}

bool PauseResume(DriverHost &host, const WorkspaceClass &workspace, StatusDisplay &status,
    std::int16_t Pause, std::int32_t ID, std::int16_t Channel,
    const std::function<void(std::int32_t)> &delay)
{
    const std::uint8_t code = Pause != 0 ? kPauseCommand : kResumeCommand;
    const char *verb = Pause != 0 ? " pausing" : " resuming";
    char hexId[12];
    std::snprintf(hexId, sizeof hexId, "%X", static_cast<unsigned>(ID));
    std::int16_t result = 1;
    std::int16_t attempt = 0;
    while (result != 0 && !status.StatusClosed() && attempt < 101) {
        std::uint8_t address = toByte(workspace.BSAddress);
        std::uint8_t command = code;
        std::string data = "0";
        result = toInteger(driverOf(host).SendCommand(address, ID, command, data));
        status.ShowMessage("!Channel " + std::to_string(Channel) + " ID:" + hexId + verb
                + ". Attempt " + std::to_string(attempt),
            kModuleCommandTitle);
        ++attempt;
        if (delay)
            delay(50);
        else
            Delay(50);
    }
    // The limit of the loop (101) and of success (100) differ, and the difference is kept.
    return attempt < 100;
}

} // namespace corvalog
