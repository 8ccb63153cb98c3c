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
    // PauseResume with a fresh driver that acknowledges on the given attempt (-1: never).
    bool pauseResume(int acknowledgeOn, std::int16_t pause, std::int32_t id, std::int16_t channel)
    {
        acknowledge = acknowledgeOn;
        host.create();
        return PauseResume(host, workspace, display, pause, id, channel,
            [this](std::int32_t ms) { delays.push_back(ms); });
    }

    ManualClock clock;
    ScriptClass tables { clock };
    PacketHandler handler { tables };
    PacketPump pump { handler };
    std::vector<std::string> calls;
    int acknowledge = 0;
    DriverHost host { [this] {
                         auto p = std::make_unique<FakeProvider>(calls);
                         p->acknowledgeOnAttempt = acknowledge;
                         return p;
                     },
        pump };
    WorkspaceClass workspace;
    LinesDisplay display;
    std::vector<std::int32_t> delays;
};

TEST_F(ModuleCommandsTest, AttemptsAndResultFollowTheAcknowledgementAndTheWindow)
{
    const struct {
        int acknowledgeOn; // -1: never
        std::size_t closeAfter;
        std::size_t lines;
        bool result;
    } cases[] = {
        { 0, SIZE_MAX, 1, true }, { 98, SIZE_MAX, 99, true },
        { 99, SIZE_MAX, 100, false }, // acknowledged, yet the limit of success is 100 attempts
        { -1, SIZE_MAX, 101, false }, { -1, 3, 3, true }, // the status window was closed
    };
    for (const auto &c : cases) {
        display.lines.clear();
        display.closeAfter = c.closeAfter;
        delays.clear();
        EXPECT_EQ(pauseResume(c.acknowledgeOn, 1, 0xFF12, 3), c.result) << c.acknowledgeOn;
        ASSERT_EQ(display.lines.size(), c.lines) << c.acknowledgeOn;
        EXPECT_EQ(display.lines.back(),
            "!Channel 3 ID:FF12 pausing. Attempt " + std::to_string(c.lines - 1));
        EXPECT_EQ(delays, std::vector<std::int32_t>(c.lines, 50)); // also after the last attempt
    }
}

TEST_F(ModuleCommandsTest, LinesNameTheChannelTheModuleAndTheCommand)
{
    workspace.BSAddress = 4;
    pauseResume(0, 0, 255, 12);
    pauseResume(0, -1, 0, 1);
    EXPECT_EQ(display.lines,
        std::vector<std::string>(
            { "!Channel 12 ID:FF resuming. Attempt 0", "!Channel 1 ID:0 pausing. Attempt 0" }));
    EXPECT_EQ(
        calls, std::vector<std::string>({ "SendCommand(4,255,59,0)", "SendCommand(4,0,57,0)" }));
}

TEST_F(ModuleCommandsTest, FailuresReachTheCaller)
{
    EXPECT_THROW(PauseResume(host, workspace, display, 1, 1, 1, [](std::int32_t) {}),
        VbError); // no driver
    workspace.BSAddress = 300;
    EXPECT_THROW(pauseResume(0, 1, 1, 1), VbError);
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

TEST(ModuleOfChannel, TheTypedNumberMustNameAChannelThatReadsAModule)
{
    WorkspaceClass workspace;
    workspace.Channels = 3;
    workspace.Items.resize(3);
    workspace.item(1).DataTagList = "(<ff12>+<0012>)/2";
    workspace.item(2).DataTagList = "<1>*2";
    workspace.item(3).DataTagList = "<3>+<00A0>";
    const struct {
        const char *typed;
        int channel;
        std::int32_t tag;
        const char *error;
    } cases[] = {
        { "1", 1, 0x0012, "" }, // the first tag as rewriting reads it: upper case only
        { " 3.9", 3, 0x00A0, "" },
        { "&H2", 2, -1, "Channel 2 does not refer to a module." },
        { "0", 0, -1, "There is no channel 0." },
        { "0.99", 0, -1, "There is no channel 0.99." },
        { "4", 0, -1, "There is no channel 4." },
        { "-1", 0, -1, "There is no channel -1." },
        { "1e30", 0, -1, "There is no channel 1e30." },
        { "two", 0, -1, "There is no channel two." },
    };
    for (const auto &c : cases) {
        const ModuleChoice choice = moduleOfChannel(workspace, c.typed);
        EXPECT_EQ(choice.channel, c.channel) << c.typed;
        EXPECT_EQ(choice.tag, c.tag) << c.typed;
        EXPECT_EQ(choice.error, c.error) << c.typed;
    }
}
