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

// A tare from an earlier run, so "nothing written" is visible as unchanged bytes.
const std::string kEarlierSettings = "[Settings]\r\nTare3=7\r\n";

TEST(ZeroChannel, PressGivesTheExpectedChannelState)
{
    // Before each press: working 12.5, output 10.5, TareValue 2 from an earlier press.
    const struct {
        const char *name;
        std::int16_t functionality;
        bool shift;
        bool refused; // communications error on the channel
        std::optional<bool> netIndicator;
        float tare;
        float working;
        float output;
        std::optional<std::string> written; // Tare3 text, or nothing written at all
    } cases[] = {
        { "ErrorRefusesEvenARestart", 1, false, true, std::nullopt, 2, 12.5f, 10.5f, std::nullopt },
        { "PeakRestarts", 1, false, false, std::nullopt, 2, -9999999.0f, 10.5f, std::nullopt },
        { "TroughRestarts", 2, false, false, std::nullopt, 2, 9999999.0f, 10.5f, std::nullopt },
        { "PlainTaresWithoutAccumulating", 0, false, false, true, 12.5f, 12.5f, 12.5f, "12.5" },
        { "ShiftRemovesTare", 0, true, false, false, 0, 0, 0, "0" },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        QTemporaryDir dir;
        const std::string settingsFile
            = writeFile(dir.filePath("config.ini").toStdString(), kEarlierSettings);
        WorkspaceClass workspace;
        workspace.item(3).Functionality = static_cast<ChannelFunction>(c.functionality);
        workspace.item(3).TareValue = 2;
        ChannelValues values;
        values.error(3) = c.refused ? -1 : 0;
        values.working(3) = 12.5f;
        values.output(3) = 10.5f;
        RecordingPrompts prompts;

        const ZeroResult result = ZeroChannel(3, c.shift, workspace, values, prompts, settingsFile);

        EXPECT_EQ(result.refused, c.refused);
        EXPECT_EQ(result.netIndicator, c.netIndicator);
        EXPECT_EQ(workspace.item(3).TareValue, c.tare);
        EXPECT_EQ(values.working(3), c.working);
        EXPECT_EQ(values.output(3), c.output);
        if (c.written)
            EXPECT_EQ(ReadINI(settingsFile, "Settings", "Tare3", "missing"), *c.written);
        else
            EXPECT_EQ(fileText(settingsFile), kEarlierSettings);
        ASSERT_EQ(prompts.messages.size(), c.refused ? 1u : 0u);
        if (c.refused) {
            EXPECT_EQ(prompts.messages[0].title, "Tare");
            EXPECT_EQ(prompts.messages[0].text, "Cannot zero while communications errors exist!");
            EXPECT_EQ(prompts.messages[0].icon, PromptIcon::Exclamation);
        }
    }
}

} // namespace
} // namespace corvalog
