#include "workspace/Settings.h"

#include "FileText.h"
#include "RecordingPrompts.h"
#include "workspace/FileDialog.h"
#include "workspace/INIFileModule.h"
#include "workspace/SystemFolders.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <vector>

using namespace corvalog;

namespace {

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

TEST(SetUpPaths, SettlesSettingsAndLogFoldersAndHonoursConfigBesideTheProgram)
{
    const struct {
        const char *configBesideProgram; // "" for none
        bool appDataKnown;
        bool documentsKnown;
    } cases[] = {
        { "", true, true },
        { "config.ini", true, true },
        { "", false, true },
        { "cOnFiG.iNi", false, false },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.configBesideProgram) + (c.appDataKnown ? " appdata" : "")
            + (c.documentsKnown ? " docs" : ""));
        Folders f;
        const bool portable = *c.configBesideProgram != '\0';
        if (portable)
            writeFile(f.program + "/" + c.configBesideProgram, "");
        RecordingPrompts prompts;
        const SettingsPaths paths = setUpPaths(
            { f.program, c.appDataKnown ? f.appData : "", c.documentsKnown ? f.documents : "" },
            prompts);

        const std::string appFolder = f.appData + "/Corvalog";
        const std::string logFolder = c.documentsKnown ? f.documents + "/Corvalog Logs" : f.program;
        const std::string settingsFolder = portable || !c.appDataKnown ? f.program : appFolder;
        EXPECT_EQ(paths.settingsFolder, settingsFolder);
        EXPECT_EQ(paths.logFolder, logFolder);
        EXPECT_EQ(paths.settingsFile,
            settingsFolder + "/" + (portable ? c.configBesideProgram : "config.ini"));
        EXPECT_TRUE(FolderExists(logFolder));
        // The application-data folder is made even when a portable config then wins.
        EXPECT_EQ(FolderExists(appFolder), c.appDataKnown);
        EXPECT_TRUE(prompts.messages.empty());
    }
}

TEST(MakeDir, CreatesOneLevelAndReportsOnlyRealFailures)
{
    Folders f;
    const std::string plainFile = writeFile(f.base + "/plain", "");
    const struct {
        std::string path;
        bool existsAfter;
        const char *error; // "" when no message is expected
    } cases[] = {
        { f.base + "/new", true, "" },
        { f.program, true, "" },
        { plainFile, true, "" },
        { f.base + "/missing/child", false, "76" },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.path);
        RecordingPrompts prompts;
        MakeDir(c.path, prompts);
        EXPECT_EQ(FolderExists(c.path), c.existsAfter);
        if (*c.error == '\0') {
            EXPECT_TRUE(prompts.messages.empty());
            continue;
        }
        ASSERT_EQ(prompts.messages.size(), 1u);
        EXPECT_EQ(prompts.messages[0].title, "Error");
        EXPECT_EQ(prompts.messages[0].text,
            std::string("Error ") + c.error + " while attempting to create folder: " + c.path);
        EXPECT_EQ(prompts.messages[0].icon, PromptIcon::Critical);
    }
}

TEST(PathIgnoringCase, PrefersTheExactSpellingThenAnyCaseThenTheNameAsGiven)
{
    Folders f;
    writeFile(f.documents + "/config.ini", "");
    writeFile(f.documents + "/CONFIG.INI", "");
    writeFile(f.appData + "/CONFIG.INI", "");
    writeFile(f.appData + "/Config.ini", "");
    EXPECT_EQ(pathIgnoringCase(f.documents, "config.ini"), f.documents + "/config.ini");
    EXPECT_EQ(pathIgnoringCase(f.appData, "config.ini"), f.appData + "/CONFIG.INI");
    EXPECT_EQ(pathIgnoringCase(f.base, "config.ini"), f.base + "/config.ini");
    EXPECT_EQ(pathIgnoringCase(f.base + "/none", "x"), f.base + "/none/x");
}

TEST(Settings, TareKeysAccumulateOnePerZeroedChannel)
{
    QTemporaryDir dir;
    const std::string file = dir.path().toStdString() + "/config.ini";
    const struct {
        int channel;
        const char *key;
        const char *text;
    } cases[] = { { 1, "Tare1", "0.25" }, { 12, "Tare12", "-3" }, { 3, "Tare3", "1E+20" } };
    for (const auto &c : cases)
        EXPECT_TRUE(writeTare(file, c.channel, c.text));
    for (const auto &c : cases)
        EXPECT_EQ(ReadINI(file, "Settings", c.key, "absent"), c.text);
}

TEST(Settings, WindowSizeDefaultsAndRoundTripsAsDecimalText)
{
    QTemporaryDir dir;
    QSettings store(dir.filePath("user.ini"), QSettings::IniFormat);
    const WindowSize defaults = readWindowSize(store);
    EXPECT_EQ(std::pair(defaults.width, defaults.height), std::pair(16000, 4000));

    writeWindowSize(store, { 12345, 6789 });
    EXPECT_EQ(store.value("Size/Width").toString(), "12345");
    const WindowSize stored = readWindowSize(store);
    EXPECT_EQ(std::pair(stored.width, stored.height), std::pair(12345, 6789));

    store.setValue("Size/Width", "wide");
    store.setValue("Size/Height", "");
    const WindowSize garbled = readWindowSize(store);
    EXPECT_EQ(std::pair(garbled.width, garbled.height), std::pair(16000, 4000));
}

using Chooser = std::string (*)(const SettingsPaths &, UserPrompts &);

const struct DialogCase {
    const char *name;
    Chooser choose;
    const char *section;
    const char *defaultFile;
    bool save;
} kDialogs[] = {
    { "log", chooseLogFile, "LogFiles", "Log Data", true },
    { "open workspace", chooseWorkspaceToOpen, "WorkspaceFiles", "Workspace", false },
    { "save workspace", chooseWorkspaceToSave, "WorkspaceFiles", "Workspace", true },
};

TEST(FileDialogs, AskWithTheirOwnTermsAndWriteInitFileThenInitDirBackEitherWay)
{
    std::vector<FileDialogRequest> asked;
    for (const DialogCase &d : kDialogs) {
        SCOPED_TRACE(d.name);
        QTemporaryDir dir;
        const std::string root = dir.path().toStdString();
        const SettingsPaths paths { "", "", root + "/logs", root + "/config.ini" };
        RecordingPrompts cancelled;
        EXPECT_EQ(d.choose(paths, cancelled), "");
        ASSERT_EQ(cancelled.fileDialogs.size(), 1u);
        const FileDialogRequest &r = asked.emplace_back(cancelled.fileDialogs[0]);
        EXPECT_EQ(r.save, d.save);
        EXPECT_EQ(r.confirmOverwrite, d.save);
        EXPECT_EQ(r.initialFolder, paths.logFolder);
        EXPECT_EQ(r.initialFile, d.defaultFile);
        // Cancelled: the starting values (here the defaults) are written, file name first.
        EXPECT_EQ(ReadINI(paths.settingsFile, d.section, "InitFile", "?"), d.defaultFile);
        EXPECT_EQ(ReadINI(paths.settingsFile, d.section, "InitDir", "?"), paths.logFolder);
        const std::string text = fileText(paths.settingsFile);
        EXPECT_LT(text.find("InitFile"), text.find("InitDir"));

        RecordingPrompts confirmed;
        confirmed.files.push_back("/data/run 7/morning.test");
        EXPECT_EQ(d.choose(paths, confirmed), "/data/run 7/morning.test");
        EXPECT_EQ(ReadINI(paths.settingsFile, d.section, "InitFile", "?"), "morning.test");
        EXPECT_EQ(ReadINI(paths.settingsFile, d.section, "InitDir", "?"), "/data/run 7");

        // A name the settings cannot keep is used all the same, and the user is told.
        RecordingPrompts odd;
        odd.files.push_back("/data/two\nlines.test");
        EXPECT_EQ(d.choose(paths, odd), "/data/two\nlines.test");
        EXPECT_EQ(ReadINI(paths.settingsFile, d.section, "InitFile", "?"), "morning.test");
        ASSERT_EQ(odd.messages.size(), 1u);
        EXPECT_EQ(odd.messages[0].text,
            "The name /data/two\nlines.test holds a line break, which the settings file "
                + paths.settingsFile + " cannot keep: it will not be offered next time.");
    }
    // The log dialog's fixed terms in full.
    const FileDialogRequest &log = asked.at(0);
    EXPECT_EQ(log.title, "Log File");
    EXPECT_EQ(log.defaultExtension, "csv");
    const decltype(log.filters) filters
        = { { "Log Files (*.csv)", "*.csv" }, { "All Files (*.*)", "*.*" } };
    EXPECT_EQ(log.filters, filters);
}

} // namespace
