#include "InterfaceInit.h"

#include "runtime/Convert.h"
#include "runtime/VbError.h"

#include <chrono>
#include <optional>
#include <string>
#include <thread>

namespace corvalog {

namespace {

void warn(UserPrompts &prompts, const std::string &text)
{
    prompts.message("Warning", text, PromptIcon::Critical, PromptButtons::Ok);
}

// "\r\nError: <description>" for a caught error, nothing when there was none.
std::string errorSuffix(const std::optional<VbError> &error)
{
    return error ? "\r\nError: " + error->description() : std::string();
}

} // namespace

void Delay(std::int32_t milliseconds)
{
    if (milliseconds <= 0)
        return;
    // Sleeping rather than spinning: nothing else runs on this thread either way.
    std::this_thread::sleep_until(
        std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds));
}

void InterfaceInit(DriverHost &host, const WorkspaceClass &workspace, UserPrompts &prompts,
    const InterfaceInitHooks &hooks)
{
    const auto wait = hooks.wait ? hooks.wait : Delay;
    using Clock = std::chrono::steady_clock;

    // 1, 2. Close the old interface, let events run once, and wait out one second from before them.
    // The waits give an old driver time to let go of its port; with none there is nothing to
    // wait for, so the first activation shows the panels at once.
    const bool hadDriver = host.driver() != nullptr;
    if (hadDriver) {
        try {
            host.driver()->CloseInterface();
        } catch (const VbError &) {
        }
    }
    const auto closed = Clock::now();
    hooks.processEvents();
    const auto spent
        = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - closed).count();
    if (hadDriver)
        wait(static_cast<std::int32_t>(spent >= 1000 ? 0 : 1000 - spent));

    // 3, 4. Release the old object. Packets arriving meanwhile wait until the new one is attached.
    host.pump().hold();
    host.release();
    hooks.processEvents();
    if (hadDriver)
        wait(500);

    // 5. A new driver object.
    try {
        host.create();
    } catch (const VbError &e) {
        warn(prompts, "Cannot create data provider COM driver!\r\nError: " + e.description());
    }
    host.pump().release();

    // 6, 7. Open USB or the serial port.
    const bool serial = workspace.Interface != 0;
    std::int16_t status = 0;
    std::optional<VbError> error;
    try {
        status = serial ? driverOf(host).OpenInterface(workspace.Port, workspace.Baudrate)
                        : driverOf(host).OpenInterface(0, 0);
    } catch (const VbError &e) {
        error = e;
    }
    if (status != 0 || error) {
        if (serial)
            warn(prompts,
                "Cannot open COM port " + std::to_string(workspace.Port) + " at "
                    + std::to_string(workspace.Baudrate) + " baud!" + errorSuffix(error));
        else
            warn(prompts, "Cannot attach to USB bus!" + errorSuffix(error));
    }

    // 8. Find the base station; a failed call reads as no answer.
    std::int32_t detected = 0;
    try {
        detected = driverOf(host).DetectBaseStation(toByte(workspace.BSAddress));
    } catch (const VbError &) {
    }
    if (detected == 0) {
        warn(prompts, "Cannot detect basestation!");
        return;
    }

    // 9. Set the radio channel (the message speaks of reading it; users know it by that text).
    try {
        driverOf(host).SetRadioChannel(toByte(workspace.BSAddress), toByte(workspace.RFChannel));
    } catch (const VbError &) {
        warn(prompts, "Cannot read channel number from basestation!");
    }
}

} // namespace corvalog
