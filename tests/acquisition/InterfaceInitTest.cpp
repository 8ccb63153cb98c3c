#include "acquisition/InterfaceInit.h"

#include "FakeProvider.h"
#include "RecordingPrompts.h"
#include "runtime/Clock.h"
#include "runtime/VbError.h"
#include "values/ScriptClass.h"

#include <gtest/gtest.h>
#include <memory>

using namespace corvalog;

namespace {

using Texts = std::vector<std::string>;

class InterfaceInitTest : public ::testing::Test
{
protected:
    void useSerialPort3()
    {
        workspace.Interface = 1;
        workspace.Port = 3;
        workspace.Baudrate = 115200;
    }

    // The message texts, each checked to be a critical "Warning" with an OK button.
    Texts texts() const
    {
        Texts t;
        for (const auto &m : prompts.messages) {
            EXPECT_EQ(m.title, "Warning");
            EXPECT_EQ(m.icon, PromptIcon::Critical);
            EXPECT_EQ(m.buttons, PromptButtons::Ok);
            t.push_back(m.text);
        }
        return t;
    }

    ManualClock clock;
    ScriptClass tables { clock };
    PacketHandler handler { tables };
    PacketPump pump { handler };
    Texts calls;
    std::vector<std::int32_t> waits;
    int eventRuns = 0;
    RecordingPrompts prompts;
    WorkspaceClass workspace;
    // What the drivers made from now on do: the operation that raises ("create": the factory).
    std::string raises;
    std::int16_t openStatus = 0;
    std::int32_t detected = 1;
    DriverHost host { [this]() -> std::unique_ptr<DataProvider> {
                         calls.push_back("create");
                         if (raises == "create")
                             throw VbError(-2147221005, "Invalid class string");
                         auto p = std::make_unique<FakeProvider>(calls);
                         p->raises[raises] = { -2147418113, "Catastrophic failure" };
                         p->openStatus = openStatus;
                         p->detectResult = detected;
                         return p;
                     },
        pump };
    InterfaceInitHooks hooks { [this] { ++eventRuns; },
        [this](std::int32_t ms) { waits.push_back(ms); } };
};

TEST_F(InterfaceInitTest, AWorkingBaseStationIsOpenedFoundAndTuned)
{
    workspace.BSAddress = 2;
    workspace.RFChannel = 7;
    InterfaceInit(host, workspace, prompts, hooks);
    EXPECT_EQ(calls,
        Texts({ "create", "OpenInterface(0,0)", "DetectBaseStation(2)", "SetRadioChannel(2,7)" }));
    EXPECT_TRUE(prompts.messages.empty());
    // Nothing was open before, so nothing needs time to let go.
    EXPECT_TRUE(waits.empty());
    EXPECT_EQ(eventRuns, 2);

    calls.clear();
    useSerialPort3();
    InterfaceInit(host, workspace, prompts, hooks);
    EXPECT_EQ(calls,
        Texts({ "CloseInterface()", "create", "OpenInterface(3,115200)", "DetectBaseStation(2)",
            "SetRadioChannel(2,7)" }));
    EXPECT_EQ(waits, std::vector<std::int32_t>({ 1000, 500 }));
    EXPECT_EQ(eventRuns, 4);
}

TEST_F(InterfaceInitTest, EachFailingStepHasItsMessage)
{
    const struct {
        const char *name;
        bool serial;
        const char *raises;
        std::int16_t openStatus;
        std::int32_t detected, address, channel;
        Texts expected;
    } cases[] = {
        { "no driver, USB", false, "create", 0, 1, 1, 1,
            { "Cannot create data provider COM driver!\r\nError: Invalid class string",
                // Every message of the cascade says why there is no driver.
                "Cannot attach to USB bus!\r\nError: Object variable not set (no data provider: "
                "Invalid class string)",
                "Cannot detect basestation!" } },
        { "serial port raises", true, "OpenInterface", 0, 1, 1, 1,
            { "Cannot open COM port 3 at 115200 baud!\r\nError: Catastrophic failure" } },
        { "USB refused", false, "", 5, 1, 1, 1, { "Cannot attach to USB bus!" } },
        { "nothing answers", false, "", 0, 0, 1, 1, { "Cannot detect basestation!" } },
        { "detect raises", false, "DetectBaseStation", 0, 1, 1, 1,
            { "Cannot detect basestation!" } },
        { "address beyond a byte", false, "", 0, 1, 256, 1, { "Cannot detect basestation!" } },
        { "channel beyond a byte", false, "", 0, 1, 1, 300,
            { "Cannot read channel number from basestation!" } },
        { "channel raises", false, "SetRadioChannel", 0, 1, 1, 1,
            { "Cannot read channel number from basestation!" } },
        { "close raises", false, "CloseInterface", 0, 1, 1, 1, {} },
    };
    for (const auto &c : cases) {
        workspace = WorkspaceClass();
        if (c.serial)
            useSerialPort3();
        workspace.BSAddress = c.address;
        workspace.RFChannel = c.channel;
        raises = c.raises;
        openStatus = c.openStatus;
        detected = c.detected;
        InterfaceInit(host, workspace, prompts, hooks); // the first run creates the driver
        prompts.messages.clear();
        InterfaceInit(host, workspace, prompts, hooks); // the second also closes it
        EXPECT_EQ(texts(), c.expected) << c.name;
    }
}

TEST_F(InterfaceInitTest, PacketsWaitWhileTheOldDriverIsReleased)
{
    PacketNotification p;
    p.Datatag = 7;
    p.Value = "2.5";
    bool appliedWhileReleased = true;
    hooks.processEvents = [&] {
        if (++eventRuns == 2) { // the old driver is released, the new one not yet made
            pump.apply({ p });
            appliedWhileReleased = tables.T(7) == 2.5f;
        }
    };
    InterfaceInit(host, workspace, prompts, hooks);
    EXPECT_FALSE(appliedWhileReleased);
    EXPECT_EQ(tables.T(7), 2.5f); // applied once the new driver is attached
    EXPECT_FALSE(pump.isHeld());
}

TEST(Delay, WaitsAtLeastItsTimeAndNoLongerThanNeeded)
{
    const auto start = std::chrono::steady_clock::now();
    Delay(-5);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(5));
    Delay(50);
    const auto elapsed = std::chrono::steady_clock::now() - start;
    EXPECT_GE(elapsed, std::chrono::milliseconds(50));
    EXPECT_LT(elapsed, std::chrono::milliseconds(150));
}

} // namespace
