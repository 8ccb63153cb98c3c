#include "values/ZeroChannel.h"

#include "FileText.h"
#include "RecordingPrompts.h"
#include "values/ChannelValues.h"
#include "workspace/INIFileModule.h"
#include "workspace/WorkspaceClass.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <optional>
#include <string>

namespace corvalog {
namespace {

TEST(ZeroChannel, PressGivesTheExpectedChannelState)
{
    // A tare from an earlier run, so "nothing written" is visible as unchanged bytes.
    const std::string earlier = "[Settings]\r\nTare3=7\r\n";
    // Before each press: working 12.5, output 10.5, TareValue 2 from an earlier press.
    const struct {
        const char *name;
        int function;
        bool shift;
        bool refused; // communications error on the channel
        std::optional<bool> netIndicator;
        float tare, working, output;
        const char *written; // Tare3 text, or nothing written at all
    } cases[] = {
        { "error refuses even a restart", 1, false, true, {}, 2, 12.5f, 10.5f, nullptr },
        { "peak restarts", 1, false, false, {}, 2, -9999999.0f, 10.5f, nullptr },
        { "trough restarts", 2, false, false, {}, 2, 9999999.0f, 10.5f, nullptr },
        { "plain tares without accumulating", 0, false, false, true, 12.5f, 12.5f, 12.5f, "12.5" },
        { "shift removes the tare", 0, true, false, false, 0, 0, 0, "0" },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        QTemporaryDir dir;
        const std::string settings = writeFile(dir.filePath("config.ini").toStdString(), earlier);
        WorkspaceClass workspace;
        workspace.item(3).Functionality = static_cast<ChannelFunction>(c.function);
        workspace.item(3).TareValue = 2;
        ChannelValues values;
        values.error(3) = c.refused ? -1 : 0;
        values.working(3) = 12.5f;
        values.output(3) = 10.5f;
        RecordingPrompts prompts;

        const ZeroResult result = ZeroChannel(3, c.shift, workspace, values, prompts, settings);

        EXPECT_EQ(result.refused, c.refused);
        EXPECT_EQ(result.netIndicator, c.netIndicator);
        EXPECT_EQ(workspace.item(3).TareValue, c.tare);
        EXPECT_EQ(values.working(3), c.working);
        EXPECT_EQ(values.output(3), c.output);
        if (c.written)
            EXPECT_EQ(ReadINI(settings, "Settings", "Tare3", "missing"), c.written);
        else
            EXPECT_EQ(fileText(settings), earlier);
        std::vector<RecordingPrompts::Message> refusal;
        if (c.refused)
            refusal.push_back({ "Tare", "Cannot zero while communications errors exist!",
                PromptIcon::Exclamation, PromptButtons::Ok });
        EXPECT_EQ(prompts.messages, refusal);
    }
}

} // namespace
} // namespace corvalog
