#include "FakeProvider.h"
#include "RecordingPrompts.h"
#include "acquisition/InterfaceInit.h"
#include "acquisition/ModuleCommands.h"
#include "runtime/Clock.h"
#include "runtime/VbError.h"
#include "values/ScriptClass.h"

#include <gtest/gtest.h>
#include <memory>

namespace corvalog {
namespace {

using Texts = std::vector<std::string>;

// A driver host whose drivers record their calls into `calls` and do what the fields below
// script at the time each driver is made.
class DriverHostTest : public ::testing::Test, public StatusDisplay
{
protected:
    // Runs InterfaceInit; its messages as "title: text", each to be critical with an OK button.
    Texts interfaceInit()
    {
        prompts.messages.clear();
        InterfaceInit(host, workspace, prompts, hooks);
        Texts t;
        for (const auto &m : prompts.messages)
            t.push_back(m.title + (m.icon == PromptIcon::Critical ? ": " : ": not critical: ")
                + (m.buttons == PromptButtons::Ok ? "" : "not OK: ") + m.text);
        return t;
    }

    // PauseResume with a fresh driver that acknowledges on the given attempt (-1: never).
    bool pauseResume(int acknowledgeOn, std::int16_t pause, std::int32_t id)
    {
        acknowledge = acknowledgeOn;
        host.create();
        return PauseResume(
            host, workspace, *this, pause, id, 3, [this](std::int32_t ms) { waits.push_back(ms); });
    }

    // The status window of PauseResume.
    void ShowMessage(const std::string &message, const std::string &title) override
    {
        EXPECT_EQ(title, kModuleCommandTitle);
        lines.push_back(message);
    }
    bool StatusClosed() const override { return lines.size() >= closeAfter; }

    ManualClock clock;
    ScriptClass tables { clock };
    PacketHandler handler { tables, NumberLocale::point() };
    PacketPump pump { handler };
    Texts calls, lines;
    std::size_t closeAfter = SIZE_MAX; // the status window is closed after this many lines
    std::vector<std::int32_t> waits;
    int eventRuns = 0;
    RecordingPrompts prompts;
    WorkspaceClass workspace;
    std::string raises; // the operation that raises ("create": the factory)
    std::int16_t openStatus = 0;
    std::int32_t detected = 1;
    int acknowledge = 0;
    DriverHost host { [this]() -> std::unique_ptr<DataProvider> {
                         calls.push_back("create");
                         if (raises == "create")
                             throw VbError(-2147221005, "Invalid class string");
                         auto p = std::make_unique<FakeProvider>(calls);
                         p->raises[raises] = { -2147418113, "Catastrophic failure" };
                         p->openStatus = openStatus;
                         p->detectResult = detected;
                         p->acknowledgeOnAttempt = acknowledge;
                         return p;
                     },
        pump };
    InterfaceInitHooks hooks { [this] { ++eventRuns; },
        [this](std::int32_t ms) { waits.push_back(ms); } };
};

// The waits between activations are checked where the main window activates.
TEST_F(DriverHostTest, InterfaceInitOpensFindsAndTunesAWorkingBaseStation)
{
    workspace.BSAddress = 2;
    workspace.RFChannel = 7;
    workspace.Port = 3;
    workspace.Baudrate = 115200;
    EXPECT_EQ(interfaceInit(), Texts());
    workspace.Interface = 1;
    EXPECT_EQ(interfaceInit(), Texts());
    EXPECT_EQ(calls,
        Texts({ "create", "OpenInterface(0,0)", "DetectBaseStation(2)", "SetRadioChannel(2,7)",
            "CloseInterface()", "create", "OpenInterface(3,115200)", "DetectBaseStation(2)",
            "SetRadioChannel(2,7)" }));
}

TEST_F(DriverHostTest, InterfaceInitGivesEachFailingStepItsMessage)
{
    const struct {
        bool serial;
        const char *raises;
        std::int16_t openStatus;
        std::int32_t detected, channel;
        Texts expected;
    } cases[] = {
        { false, "create", 0, 1, 1,
            { "Warning: Cannot create data provider COM driver!\r\nError: Invalid class string",
                // Every message of the cascade says why there is no driver.
                "Warning: Cannot attach to USB bus!\r\nError: Object variable not set "
                "(no data provider: Invalid class string)",
                "Warning: Cannot detect basestation!" } },
        { true, "OpenInterface", 0, 1, 1,
            { "Warning: Cannot open COM port 3 at 115200 baud!\r\nError: Catastrophic failure" } },
        { false, "", 5, 1, 1, { "Warning: Cannot attach to USB bus!" } },
        { false, "", 0, 0, 1, { "Warning: Cannot detect basestation!" } },
        { false, "DetectBaseStation", 0, 1, 1, { "Warning: Cannot detect basestation!" } },
        { false, "", 0, 1, 300, { "Warning: Cannot read channel number from basestation!" } },
        { false, "CloseInterface", 0, 1, 1, {} },
    };
    workspace.Port = 3;
    workspace.Baudrate = 115200;
    for (const auto &c : cases) {
        workspace.Interface = c.serial;
        workspace.RFChannel = c.channel;
        raises = c.raises;
        openStatus = c.openStatus;
        detected = c.detected;
        interfaceInit(); // the first run creates the driver, the second also closes it
        EXPECT_EQ(interfaceInit(), c.expected) << c.raises << " " << c.openStatus;
    }
}

TEST_F(DriverHostTest, PacketsWaitWhileTheOldDriverIsReleased)
{
    bool appliedWhileReleased = true;
    hooks.processEvents = [&] {
        if (++eventRuns == 2) { // the old driver is released, the new one not yet made
            pump.apply({ PacketNotification { 1, 7, "2.5" } });
            appliedWhileReleased = tables.T(7) == 2.5f;
        }
    };
    interfaceInit();
    EXPECT_FALSE(appliedWhileReleased);
    EXPECT_EQ(tables.T(7), 2.5f); // applied once the new driver is attached
}

// Success is an acknowledgement within 100 attempts, though the loop makes a 101st.
TEST_F(DriverHostTest, PauseResumeTriesUntilAcknowledgedOrClosed)
{
    const struct {
        int acknowledgeOn; // -1: never
        std::size_t closeAfter, attempts;
        std::int16_t pause;
        std::int32_t id;
        const char *lastLine;
        bool result;
    } cases[] = {
        { 98, SIZE_MAX, 99, 1, 0xFF12, "!Channel 3 ID:FF12 pausing. Attempt 98", true },
        { 99, SIZE_MAX, 100, 0, 255, "!Channel 3 ID:FF resuming. Attempt 99", false },
        { -1, SIZE_MAX, 101, -1, 0, "!Channel 3 ID:0 pausing. Attempt 100", false },
        { -1, 3, 3, 1, 1, "!Channel 3 ID:1 pausing. Attempt 2", true },
    };
    for (const auto &c : cases) {
        lines.clear();
        waits.clear();
        closeAfter = c.closeAfter;
        EXPECT_EQ(pauseResume(c.acknowledgeOn, c.pause, c.id), c.result) << c.lastLine;
        ASSERT_EQ(lines.size(), c.attempts) << c.lastLine;
        EXPECT_EQ(lines.back(), c.lastLine);
        EXPECT_EQ(waits, std::vector<std::int32_t>(c.attempts, 50)); // also after the last
    }
}

// Keep-awake goes out only when the workspace asks for it; a wake that cannot be sent (an
// address beyond a byte) is passed over in silence, where a pause or resume raises.
TEST_F(DriverHostTest, KeepAwakeOnlyWhenAskedAndOnlyPauseResumeRaises)
{
    host.create();
    StayAwakeTick(host, workspace);
    workspace.KeepAwake = 1;
    StayAwakeTick(host, workspace);
    workspace.BSAddress = 256;
    WakeModules(host, workspace);
    EXPECT_EQ(calls, Texts({ "create", "KeepAwakeAll()" }));
    EXPECT_THROW(pauseResume(0, 1, 1), VbError);
}

TEST(ModuleOfChannel, TheTypedNumberMustNameAChannelThatReadsAModule)
{
    WorkspaceClass workspace;
    workspace.Channels = 3;
    workspace.Items.resize(3);
    workspace.item(1).DataTagList = "(<ff12>+<0012>)/2";
    workspace.item(2).DataTagList = "<1>*2";
    workspace.item(3).DataTagList = "<3>+<00A0>";
    // "channel tag error"
    const std::pair<const char *, std::string> cases[] = {
        { "1", "1 18 " }, // 0x0012: the first tag as rewriting reads it, upper case only
        { " 3.9", "3 160 " },
        { "&H2", "2 -1 Channel 2 does not refer to a module." },
        { "0.99", "0 -1 There is no channel 0.99." },
        { "4", "0 -1 There is no channel 4." },
    };
    for (const auto &[typed, expected] : cases) {
        const ModuleChoice c = moduleOfChannel(workspace, typed);
        EXPECT_EQ(
            std::to_string(c.channel) + " " + std::to_string(c.tag) + " " + c.error, expected);
    }
}

} // namespace
} // namespace corvalog
