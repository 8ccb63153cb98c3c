#include "acquisition/ModuleCommands.h"

#include "FakeProvider.h"
#include "runtime/Clock.h"
#include "runtime/VbError.h"
#include "values/ScriptClass.h"

#include <gtest/gtest.h>
#include <memory>

using namespace corvalog;

namespace {

class LinesDisplay final : public StatusDisplay
{
public:
    std::vector<std::string> lines;
    std::size_t closeAfter = SIZE_MAX; // the close button is pressed after this many lines

    void ShowMessage(const std::string &message, const std::string &title) override
    {
        EXPECT_EQ(title, kModuleCommandTitle);
        lines.push_back(message);
    }
    bool StatusClosed() const override { return lines.size() >= closeAfter; }
};

class ModuleCommandsTest : public ::testing::Test
{
protected:
    ManualClock clock;
    ScriptClass tables { clock };
    PacketHandler handler { tables };
    PacketPump pump { handler };
    std::vector<std::string> calls;
    int acknowledgeOn = 0;
    DriverHost host { [this] {
                         auto p = std::make_unique<FakeProvider>(calls);
                         p->acknowledgeOnAttempt = acknowledgeOn;
                         return p;
                     },
        pump };
    WorkspaceClass workspace;
    LinesDisplay display;
    std::vector<std::int32_t> delays;
    std::function<void(std::int32_t)> recordDelay
        = [this](std::int32_t ms) { delays.push_back(ms); };
};

TEST_F(ModuleCommandsTest, AttemptsAndResultFollowTheAcknowledgement)
{
    const struct {
        int acknowledgeOn; // -1: never
        std::size_t lines;
        bool result;
    } cases[] = {
        { 0, 1, true },
        { 5, 6, true },
        { 98, 99, true },
        { 99, 100, false }, // acknowledged, yet the limit of success is 100 attempts
        { 100, 101, false },
        { -1, 101, false },
    };
    for (const auto &c : cases) {
        acknowledgeOn = c.acknowledgeOn;
        host.create();
        display.lines.clear();
        delays.clear();
        EXPECT_EQ(PauseResume(host, workspace, display, 1, 0xFF12, 3, recordDelay), c.result)
            << c.acknowledgeOn;
        ASSERT_EQ(display.lines.size(), c.lines) << c.acknowledgeOn;
        EXPECT_EQ(display.lines.back(),
            "!Channel 3 ID:FF12 pausing. Attempt " + std::to_string(c.lines - 1));
        EXPECT_EQ(delays, std::vector<std::int32_t>(c.lines, 50)); // also after the last attempt
    }
}

TEST_F(ModuleCommandsTest, LinesNameTheChannelTheModuleAndTheCommand)
{
    workspace.BSAddress = 4;
    host.create();
    PauseResume(host, workspace, display, 0, 255, 12, recordDelay);
    host.create();
    PauseResume(host, workspace, display, -1, 0, 1, recordDelay);
    EXPECT_EQ(display.lines,
        std::vector<std::string>(
            { "!Channel 12 ID:FF resuming. Attempt 0", "!Channel 1 ID:0 pausing. Attempt 0" }));
    EXPECT_EQ(
        calls, std::vector<std::string>({ "SendCommand(4,255,59,0)", "SendCommand(4,0,57,0)" }));
}

TEST_F(ModuleCommandsTest, ClosingTheStatusWindowEndsTheRetries)
{
    acknowledgeOn = -1;
    host.create();
    display.closeAfter = 3;
    EXPECT_TRUE(
        PauseResume(host, workspace, display, 1, 1, 1, recordDelay)); // fewer than 100 attempts
    EXPECT_EQ(display.lines.size(), 3u);
}

TEST_F(ModuleCommandsTest, FailuresReachTheCaller)
{
    EXPECT_THROW(PauseResume(host, workspace, display, 1, 1, 1, recordDelay), VbError); // no driver
    host.create();
    workspace.BSAddress = 300;
    EXPECT_THROW(PauseResume(host, workspace, display, 1, 1, 1, recordDelay), VbError);
}

TEST_F(ModuleCommandsTest, WakeSleepAndKeepAwake)
{
    StayAwakeTick(host, workspace); // no driver: nothing
    WakeModules(host, workspace); // no driver: no error either
    host.create();
    workspace.BSAddress = 9;
    WakeModules(host, workspace);
    SleepModules(host);
    StayAwakeTick(host, workspace); // KeepAwake is 0: nothing
    workspace.KeepAwake = 1;
    StayAwakeTick(host, workspace);
    workspace.BSAddress = 256;
    WakeModules(host, workspace); // the byte conversion fails silently
    EXPECT_EQ(calls, std::vector<std::string>({ "WakeAll(9)", "SleepAll()", "KeepAwakeAll()" }));
}

} // namespace
