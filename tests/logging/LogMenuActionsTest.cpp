#include "logging/LogMenuActions.h"

#include "FileText.h"
#include "RecordingPrompts.h"
#include "workspace/Settings.h"
#include "workspace/WorkspaceModule.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace corvalog;

namespace {

// What the user was told: "" for nothing, "?" for more than one message.
std::string told(const RecordingPrompts &prompts)
{
    const auto &m = prompts.messages;
    return m.size() > 1 ? "?" : m.empty() ? "" : m[0].text;
}

// A changed interval is saved at once; nothing else is.
TEST(LogMenuActions, TheIntervalDialogTakesTheLeadingNumberRoundedToEven)
{
    // The answer, the interval then (1000 when nothing changed) and what the user was told.
    const std::tuple<std::optional<std::string>, std::int32_t, std::string> cases[] = {
        { "2.5", 2, "" },
        { "3.5 ms", 4, "" },
        { "-40", -40, "" },
        { std::nullopt, 1000, "" },
        { "1e10", 1000, "A log interval of 1e10 milliseconds is too long; nothing was changed." },
    };
    for (const auto &[answer, interval, message] : cases) {
        QTemporaryDir dir;
        const std::string target = dir.filePath("Corvalog.lws").toStdString();
        WorkspaceClass ws;
        RecordingPrompts prompts;
        prompts.inputs.push_back(answer);
        const bool saved = interval != 1000;
        EXPECT_EQ(mnuIntervalConfig(ws, prompts, target), saved);
        EXPECT_EQ(ws.LogInterval, interval);
        EXPECT_EQ(prompts.inputPrompts.at(0),
            "Set Log Interval: Enter a new log interval in milliseconds. [1000]");
        EXPECT_EQ(told(prompts), message);
        WorkspaceClass reloaded;
        EXPECT_EQ(
            LoadWorkspace(reloaded, target, prompts) && reloaded.LogInterval == interval, saved);
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
    // The last log's folder (under the test's) and file (nullptr: none chosen yet), whether a
    // program could open it, what was opened and what the user was told.
    const std::tuple<const char *, const char *, bool, std::string, std::string> cases[] = {
        { nullptr, nullptr, true, "/", "" }, // two empty settings join to the root
        { "", "gone.csv", true, "", "Cannot find file " + folder + "/gone.csv!" },
        // A local file even where its path looks like an address.
        { "/run:", "/x.csv", true, folder + "/run://x.csv", "" },
        { "", "today.csv", false, folder + "/today.csv",
            "No program could open " + folder + "/today.csv." },
    };
    for (const auto &[lastFolder, lastFile, opens, opened, message] : cases) {
        ::unlink(settings.c_str());
        if (lastFile)
            writeRecentFile(settings, "LogFiles", { folder + lastFolder, lastFile });
        RecordingPrompts prompts;
        prompts.opens = opens;
        mnuViewLog(settings, prompts);
        EXPECT_EQ(
            prompts.opened, opened.empty() ? std::vector<std::string> {} : std::vector { opened });
        EXPECT_TRUE(prompts.addresses.empty());
        EXPECT_EQ(told(prompts), message);
    }
}

} // namespace
