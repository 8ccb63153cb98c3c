#include "logging/LogMenuActions.h"

#include "FileText.h"
#include "RecordingPrompts.h"
#include "workspace/Settings.h"
#include "workspace/WorkspaceModule.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace corvalog;

namespace {

TEST(LogMenuActions, TheIntervalDialogTakesTheLeadingNumberRoundedToEven)
{
    const struct {
        std::optional<std::string> answer;
        std::int32_t interval; // 1000 when nothing changes
        bool saved;
        const char *message;
    } cases[] = {
        { "250", 250, true, nullptr },
        { "2.5", 2, true, nullptr },
        { "3.5 ms", 4, true, nullptr },
        { "-40", -40, true, nullptr },
        { "abc", 1000, false, nullptr },
        { "0", 1000, false, nullptr },
        { std::nullopt, 1000, false, nullptr },
        { "1e10", 1000, false,
            "A log interval of 1e10 milliseconds is too long; nothing was changed." },
    };
    for (const auto &c : cases) {
        QTemporaryDir dir;
        const std::string target = dir.filePath("Corvalog.lws").toStdString();
        WorkspaceClass ws;
        RecordingPrompts prompts;
        prompts.inputs.push_back(c.answer);
        EXPECT_EQ(mnuIntervalConfig(ws, prompts, target), c.saved);
        EXPECT_EQ(ws.LogInterval, c.interval);
        EXPECT_EQ(prompts.inputPrompts,
            std::vector<std::string> {
                "Set Log Interval: Enter a new log interval in milliseconds. [1000]" });
        if (c.message) {
            ASSERT_EQ(prompts.messages.size(), 1u);
            EXPECT_EQ(prompts.messages[0].text, c.message);
        } else {
            EXPECT_TRUE(prompts.messages.empty());
        }
        WorkspaceClass reloaded;
        EXPECT_EQ(LoadWorkspace(reloaded, target, prompts), c.saved);
        if (c.saved) {
            EXPECT_EQ(reloaded.LogInterval, c.interval);
        }
    }
}

TEST(LogMenuActions, ViewLogOpensTheLastLogOrSaysItIsGone)
{
    QTemporaryDir dir;
    const std::string settings = dir.filePath("config.ini").toStdString();
    const std::string folder = dir.path().toStdString();
    writeFile(folder + "/today.csv", "Date,Time,Elapsed mS\r\n");
    ::mkdir((folder + "/run:").c_str(), 0755);
    writeFile(folder + "/run:/x.csv", "Date,Time,Elapsed mS\r\n");
    const struct {
        const char *folder; // nullptr: no log chosen yet
        const char *file;
        bool opens; // a program could open it
        std::string opened;
        std::string message;
    } cases[] = {
        { nullptr, nullptr, true, "/", "" }, // two empty settings join to the root folder
        { "", "today.csv", true, folder + "/today.csv", "" },
        { "", "gone.csv", true, "", "Cannot find file " + folder + "/gone.csv!" },
        // A local file even where its path looks like an address.
        { "/run:", "/x.csv", true, folder + "/run://x.csv", "" },
        { "", "today.csv", false, folder + "/today.csv",
            "No program could open " + folder + "/today.csv." },
    };
    for (const auto &c : cases) {
        ::unlink(settings.c_str());
        if (c.file)
            writeRecentFile(settings, "LogFiles", { folder + c.folder, c.file });
        RecordingPrompts prompts;
        prompts.opens = c.opens;
        mnuViewLog(settings, prompts);
        EXPECT_EQ(prompts.opened,
            c.opened.empty() ? std::vector<std::string> {} : std::vector { c.opened });
        EXPECT_TRUE(prompts.addresses.empty());
        if (c.message.empty()) {
            EXPECT_TRUE(prompts.messages.empty());
        } else {
            ASSERT_EQ(prompts.messages.size(), 1u);
            EXPECT_EQ(prompts.messages[0].title, "View Last Log File");
            EXPECT_EQ(prompts.messages[0].text, c.message);
            EXPECT_EQ(prompts.messages[0].icon, PromptIcon::Information);
        }
    }
}

} // namespace
