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

constexpr int kChannel = 3;
// A tare from an earlier run, so "nothing written" is visible as unchanged bytes.
const std::string kEarlierSettings = "[Settings]\r\nTare3=7\r\n";

struct ZeroCase {
    const char *name;
    std::int16_t functionality;
    std::int16_t errorFlag;
    bool shift;
    float working; // before the press; output starts at working - 2, TareValue at 2
    bool refused;
    std::optional<bool> netIndicator;
    float tare; // after the press
    float workingAfter;
    float outputAfter;
    std::optional<std::string> written; // Tare3 text, or nothing written at all
};

TEST(ZeroChannel, PressGivesTheExpectedChannelState)
{
    const ZeroCase cases[] = {
        { "ErrorRefuses", 0, -1, false, 12.5f, true, std::nullopt, 2, 12.5f, 10.5f, std::nullopt },
        { "ErrorRefusesPeakRestart", 1, -1, false, 12.5f, true, std::nullopt, 2, 12.5f, 10.5f,
            std::nullopt },
        { "PeakRestarts", 1, 0, false, 12.5f, false, std::nullopt, 2, -9999999.0f, 10.5f,
            std::nullopt },
        { "TroughRestarts", 2, 0, false, 12.5f, false, std::nullopt, 2, 9999999.0f, 10.5f,
            std::nullopt },
        { "PlainTares", 0, 0, false, 12.5f, false, true, 12.5f, 12.5f, 12.5f, "12.5" },
        { "PlainNegativeTares", 0, 0, false, -0.25f, false, true, -0.25f, -0.25f, -0.25f, "-0.25" },
        { "ShiftRemovesTare", 0, 0, true, 12.5f, false, false, 0, 0, 0, "0" },
        { "LightFilterTares", 3, 0, false, 12.5f, false, true, 12.5f, 12.5f, 12.5f, "12.5" },
        { "FilterShiftRemovesTare", 4, 0, true, 12.5f, false, false, 0, 0, 0, "0" },
    };
    for (const ZeroCase &c : cases) {
        SCOPED_TRACE(c.name);
        QTemporaryDir dir;
        ASSERT_TRUE(dir.isValid());
        const std::string settingsFile
            = writeFile(dir.filePath("config.ini").toStdString(), kEarlierSettings);
        WorkspaceClass workspace;
        workspace.item(kChannel).Functionality = c.functionality;
        workspace.item(kChannel).TareValue = 2;
        ChannelValues values;
        values.error(kChannel) = c.errorFlag;
        values.working(kChannel) = c.working;
        values.output(kChannel) = c.working - 2;
        RecordingPrompts prompts;

        const ZeroResult result
            = ZeroChannel(kChannel, c.shift, workspace, values, prompts, settingsFile);

        EXPECT_EQ(result.refused, c.refused);
        EXPECT_EQ(result.netIndicator, c.netIndicator);
        EXPECT_EQ(workspace.item(kChannel).TareValue, c.tare);
        EXPECT_EQ(values.working(kChannel), c.workingAfter);
        EXPECT_EQ(values.output(kChannel), c.outputAfter);
        EXPECT_EQ(values.error(kChannel), c.errorFlag);
        if (c.written)
            EXPECT_EQ(ReadINI(settingsFile, "Settings", "Tare3", "missing"), *c.written);
        else
            EXPECT_EQ(fileText(settingsFile), kEarlierSettings);
        if (c.refused) {
            ASSERT_EQ(prompts.messages.size(), 1u);
            EXPECT_EQ(prompts.messages[0].title, "Tare");
            EXPECT_EQ(prompts.messages[0].text, "Cannot zero while communications errors exist!");
            EXPECT_EQ(prompts.messages[0].icon, PromptIcon::Exclamation);
        } else {
            EXPECT_TRUE(prompts.messages.empty());
        }
    }
}

TEST(ZeroChannel, SecondPressDoesNotAccumulate)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const std::string settingsFile = dir.filePath("config.ini").toStdString();
    WorkspaceClass workspace;
    ChannelValues values;
    values.working(1) = 4.75f;
    RecordingPrompts prompts;

    ZeroChannel(1, false, workspace, values, prompts, settingsFile);
    // The cycle between the presses: working stays untared, output is tared.
    values.output(1) = values.working(1) - workspace.item(1).TareValue;
    const ZeroResult second = ZeroChannel(1, false, workspace, values, prompts, settingsFile);

    EXPECT_EQ(second.netIndicator, true);
    EXPECT_EQ(workspace.item(1).TareValue, 4.75f);
    EXPECT_EQ(values.output(1), 4.75f);
    EXPECT_EQ(ReadINI(settingsFile, "Settings", "Tare1", "missing"), "4.75");
}

} // namespace
} // namespace corvalog
