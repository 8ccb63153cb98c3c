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

class InterfaceInitTest : public ::testing::Test
{
protected:
    ManualClock clock;
    ScriptClass tables { clock };
    PacketHandler handler { tables };
    PacketPump pump { handler };
    std::vector<std::string> calls;
    std::vector<std::int32_t> waits;
    int eventRuns = 0;
    RecordingPrompts prompts;
    WorkspaceClass workspace;
    std::function<void(FakeProvider &)> configure = [](FakeProvider &) {};
    bool factoryFails = false;
    DriverHost host { [this]() -> std::unique_ptr<DataProvider> {
                         calls.push_back("create");
                         if (factoryFails)
                             throw VbError(-2147221005, "Invalid class string");
                         auto p = std::make_unique<FakeProvider>(calls);
                         configure(*p);
                         return p;
                     },
        pump };
    InterfaceInitHooks hooks { [this] { ++eventRuns; },
        [this](std::int32_t ms) { waits.push_back(ms); } };

    std::vector<std::string> texts() const
    {
        std::vector<std::string> t;
        for (const auto &m : prompts.messages) {
            EXPECT_EQ(m.title, "Warning");
            EXPECT_EQ(m.icon, PromptIcon::Critical);
            EXPECT_EQ(m.buttons, PromptButtons::Ok);
            t.push_back(m.text);
        }
        return t;
    }
};

using Texts = std::vector<std::string>;

TEST_F(InterfaceInitTest, AWorkingBaseStationIsOpenedFoundAndTuned)
{
    workspace.BSAddress = 2;
    workspace.RFChannel = 7;
    InterfaceInit(host, workspace, prompts, hooks);
    EXPECT_EQ(calls,
        Texts({ "create", "OpenInterface(0,0)", "DetectBaseStation(2)", "SetRadioChannel(2,7)" }));
    EXPECT_TRUE(prompts.messages.empty());
    EXPECT_EQ(waits, std::vector<std::int32_t>({ 1000, 500 }));
    EXPECT_EQ(eventRuns, 2);

    calls.clear();
    workspace.Interface = 1;
    workspace.Port = 3;
    workspace.Baudrate = 115200;
    InterfaceInit(host, workspace, prompts, hooks);
    EXPECT_EQ(calls,
        Texts({ "CloseInterface()", "create", "OpenInterface(3,115200)", "DetectBaseStation(2)",
            "SetRadioChannel(2,7)" }));
}

TEST_F(InterfaceInitTest, WithoutADriverEveryStepReportsInOrder)
{
    factoryFails = true;
    InterfaceInit(host, workspace, prompts, hooks);
    EXPECT_EQ(texts(),
        Texts({ "Cannot create data provider COM driver!\r\nError: Invalid class string",
            "Cannot attach to USB bus!\r\nError: Object variable not set",
            "Cannot detect basestation!" }));
    EXPECT_EQ(host.driver(), nullptr);

    prompts.messages.clear();
    workspace.Interface = 1;
    workspace.Port = 3;
    InterfaceInit(host, workspace, prompts, hooks);
    EXPECT_EQ(
        texts()[1], "Cannot open COM port 3 at 115200 baud!\r\nError: Object variable not set");
}

TEST_F(InterfaceInitTest, EachFailingStepHasItsMessage)
{
    const struct {
        const char *name;
        std::function<void(FakeProvider &, WorkspaceClass &)> set;
        Texts expected;
    } cases[] = {
        { "serial port refused",
            [](FakeProvider &p, WorkspaceClass &w) {
                w.Interface = 1, w.Port = 3, p.openStatus = 5;
            },
            { "Cannot open COM port 3 at 115200 baud!" } },
        { "USB raises",
            [](FakeProvider &p, WorkspaceClass &) {
                p.raises["OpenInterface"] = { -2147467259, "Unspecified error" };
            },
            { "Cannot attach to USB bus!\r\nError: Unspecified error" } },
        { "nothing answers", [](FakeProvider &p, WorkspaceClass &) { p.detectResult = 0; },
            { "Cannot detect basestation!" } },
        { "detect raises",
            [](FakeProvider &p, WorkspaceClass &) {
                p.raises["DetectBaseStation"] = { 1, "x" };
            },
            { "Cannot detect basestation!" } },
        { "address beyond a byte", [](FakeProvider &, WorkspaceClass &w) { w.BSAddress = 256; },
            { "Cannot detect basestation!" } },
        { "channel beyond a byte", [](FakeProvider &, WorkspaceClass &w) { w.RFChannel = 300; },
            { "Cannot read channel number from basestation!" } },
        { "channel raises",
            [](FakeProvider &p, WorkspaceClass &) {
                p.raises["SetRadioChannel"] = { 1, "x" };
            },
            { "Cannot read channel number from basestation!" } },
        { "close raises",
            [](FakeProvider &p, WorkspaceClass &) {
                p.raises["CloseInterface"] = { 1, "x" };
            },
            {} },
    };
    for (const auto &c : cases) {
        WorkspaceClass w;
        configure = [&](FakeProvider &p) { c.set(p, w); };
        InterfaceInit(host, w, prompts, hooks); // the first run creates the configured driver
        prompts.messages.clear();
        InterfaceInit(host, w, prompts, hooks); // the second also closes it
        EXPECT_EQ(texts(), c.expected) << c.name;
    }
}

TEST_F(InterfaceInitTest, PacketsWaitWhileTheOldDriverIsHalfReleased)
{
    InterfaceInit(host, workspace, prompts, hooks);
    auto *old = static_cast<FakeProvider *>(host.driver());
    PacketNotification p;
    p.Datatag = 7;
    p.Value = "1.5";
    int run = 0;
    bool seenDuringRelease = true;
    hooks.processEvents = [&] {
        if (++run == 1) {
            old->send({ p }); // the first event run: the old driver still delivers
            p.Value = "2.5";
        } else {
            pump.apply({ p }); // a batch that reaches the pump while the driver is released
            seenDuringRelease = tables.T(7) == 2.5f;
        }
    };
    InterfaceInit(host, workspace, prompts, hooks);
    EXPECT_FALSE(seenDuringRelease);
    EXPECT_EQ(tables.T(7), 2.5f); // applied once the new driver is attached
    EXPECT_FALSE(pump.isHeld());
}

TEST(Delay, WaitsAtLeastItsTimeAndNoLongerThanNeeded)
{
    const auto start = std::chrono::steady_clock::now();
    Delay(0);
    Delay(-5);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(5));
    Delay(50);
    const auto elapsed = std::chrono::steady_clock::now() - start;
    EXPECT_GE(elapsed, std::chrono::milliseconds(50));
    EXPECT_LT(elapsed, std::chrono::milliseconds(150));
}

} // namespace
