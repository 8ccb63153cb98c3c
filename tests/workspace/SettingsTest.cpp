#include "workspace/Settings.h"

#include "FileText.h"
#include "RecordingPrompts.h"
#include "workspace/FileDialog.h"
#include "workspace/INIFileModule.h"
#include "workspace/SystemFolders.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <tuple>
#include <vector>

using namespace corvalog;

namespace {

using Message = RecordingPrompts::Message;

// A program folder, an application-data folder and a documents folder under one temporary root.
struct Folders {
    QTemporaryDir root;
    std::string base = root.path().toStdString();
    std::string program = base + "/program";
    std::string appData = base + "/appdata";
    std::string documents = base + "/docs";
    Folders()
    {
        for (const std::string *folder : { &program, &appData, &documents })
            QDir().mkpath(QString::fromStdString(*folder));
    }
};

// Of several spellings of the settings file the exact one wins, else the smallest, the same on
// every run.
TEST(SetUpPaths, SettlesSettingsAndLogFoldersAndHonoursConfigBesideTheProgram)
{
    const struct {
        std::vector<std::string> besideProgram; // config files there
        bool appData, documents; // whether the system names these folders
        const char *settingsFile, *logFolder; // under the root
    } cases[] = {
        { {}, true, true, "/appdata/Corvalog/config.ini", "/docs/Corvalog Logs" },
        { { "config.ini", "CONFIG.INI" }, true, true, "/program/config.ini",
            "/docs/Corvalog Logs" },
        { {}, false, true, "/program/config.ini", "/docs/Corvalog Logs" },
        { { "cOnFiG.iNi", "Config.iNi" }, false, false, "/program/Config.iNi", "/program" },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(&c - cases);
        Folders f;
        for (const std::string &name : c.besideProgram)
            writeFile(f.program + "/" + name, "");
        RecordingPrompts prompts;
        const SettingsPaths paths = setUpPaths(
            { f.program, c.appData ? f.appData : "", c.documents ? f.documents : "" }, prompts);
        EXPECT_EQ(paths.settingsFile, f.base + c.settingsFile);
        EXPECT_EQ(
            paths.settingsFolder, paths.settingsFile.substr(0, paths.settingsFile.rfind('/')));
        EXPECT_EQ(paths.logFolder, f.base + c.logFolder);
        EXPECT_TRUE(FolderExists(paths.logFolder));
        // The application-data folder is made even when a portable config then wins.
        EXPECT_EQ(FolderExists(f.appData + "/Corvalog"), c.appData);
        EXPECT_TRUE(prompts.messages.empty());
    }
}

// Only a failure other than "it is there already" is reported.
TEST(MakeDir, ReportsOnlyRealFailures)
{
    Folders f;
    RecordingPrompts prompts;
    MakeDir(writeFile(f.base + "/plain", ""), prompts);
    MakeDir(f.base + "/missing/child", prompts);
    EXPECT_EQ(prompts.messages,
        (std::vector<Message> {
            { "Error", "Error 76 while attempting to create folder: " + f.base + "/missing/child",
                PromptIcon::Critical, PromptButtons::Ok } }));
}

TEST(FileDialogs, AskInTheirSectionAndWriteInitFileThenInitDirBackEitherWay)
{
    const struct {
        std::string (*choose)(const SettingsPaths &, UserPrompts &);
        const char *section;
        const char *defaultFile;
        bool save;
    } dialogs[] = {
        { chooseLogFile, "LogFiles", "Log Data", true },
        { chooseWorkspaceToOpen, "WorkspaceFiles", "Workspace", false },
        { chooseWorkspaceToSave, "WorkspaceFiles", "Workspace", true },
    };
    QTemporaryDir dir;
    const std::string root = dir.path().toStdString();
    for (const auto &d : dialogs) {
        const SettingsPaths paths { "", "", root + "/logs",
            root + "/" + std::to_string(&d - dialogs) };
        RecordingPrompts cancelled;
        EXPECT_EQ(d.choose(paths, cancelled), "");
        const FileDialogRequest &r = cancelled.fileDialogs.at(0);
        EXPECT_EQ(std::tuple(r.save, r.confirmOverwrite, r.initialFolder, r.initialFile),
            std::tuple(d.save, d.save, paths.logFolder, std::string(d.defaultFile)));
        // Cancelled: the starting values (here the defaults) are written, file name first.
        EXPECT_EQ(fileText(paths.settingsFile),
            "[" + std::string(d.section) + "]\nInitFile=" + d.defaultFile
                + "\nInitDir=" + paths.logFolder + "\n");
    }

    // A name the settings cannot keep is used all the same, and the user is told.
    const SettingsPaths paths { "", "", root + "/logs", root + "/config.ini" };
    RecordingPrompts prompts;
    prompts.files = { "/data/run 7/morning.test", "/data/two\nlines.test" };
    EXPECT_EQ(chooseLogFile(paths, prompts), "/data/run 7/morning.test");
    EXPECT_EQ(chooseLogFile(paths, prompts), "/data/two\nlines.test");
    EXPECT_EQ(prompts.fileDialogs[1].initialFolder + "|" + prompts.fileDialogs[1].initialFile,
        "/data/run 7|morning.test"); // offered the next time
    EXPECT_EQ(
        fileText(paths.settingsFile), "[LogFiles]\nInitFile=morning.test\nInitDir=/data/run 7\n");
    EXPECT_EQ(prompts.messages,
        (std::vector<Message> { { "Warning",
            "The name /data/two\nlines.test holds a line break, which the settings file "
                + paths.settingsFile + " cannot keep: it will not be offered next time.",
            PromptIcon::Exclamation, PromptButtons::Ok } }));
}

} // namespace
