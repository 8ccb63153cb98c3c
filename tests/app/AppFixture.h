#pragma once

#include "FakeProvider.h"
#include "RecordingPrompts.h"
#include "app/MainFrm.h"
#include "runtime/VbError.h"

#include <QSettings>
#include <QTemporaryDir>
#include <fstream>
#include <gtest/gtest.h>

namespace corvalog {

// A main window over temporary folders, a scripted driver and recording prompts, with the
// waits of activation and closing made instant.
class AppFixture : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    std::vector<std::string> calls;
    RecordingPrompts prompts;
    ManualClock clock { 46000.5 };
    FakeProvider *driver = nullptr; // the newest driver object
    bool factoryFails = false;
    std::vector<std::int32_t> busyWaits;
    std::function<void()> duringWait; // runs inside activation's waits (closing while busy)
    std::string commandLine;
    std::unique_ptr<MainFrm> window;

    std::string path(const std::string &name) const
    {
        return dir.filePath(QString::fromStdString(name)).toStdString();
    }
    std::string programFolder() const { return path("program"); }
    QString settingsStore() const { return dir.filePath(QStringLiteral("user.ini")); }

    void SetUp() override
    {
        for (const char *sub : { "program", "data/Corvalog", "docs" })
            QDir(dir.path()).mkpath(QString::fromLatin1(sub));
    }

    void TearDown() override
    {
        if (window)
            window->hide();
        window.reset();
    }

    static void writeFile(const std::string &file, const std::string &text)
    {
        std::ofstream(file, std::ios::binary) << text;
    }

    // A workspace file of n channels over Data Tags 0001.., with extra lines appended.
    static std::string workspaceText(
        int channels, const std::string &title = "Bench", const std::string &extra = {})
    {
        std::string s = "[Workspace]\nType=CORVALOG\nVersion=2\nTitle=" + title
            + "\nChannels=" + std::to_string(channels) + "\n";
        for (int n = 1; n <= channels; ++n) {
            char tag[16];
            std::snprintf(tag, sizeof tag, "%04X", n);
            const std::string k = std::to_string(n);
            s += "DataTagList" + k + "=<" + tag + ">\nCaption" + k + "=Ch " + k + "\nFormat" + k
                + "=0.00\nTimeout" + k + "=3\n";
        }
        return s + extra;
    }

    // Remembers a workspace file as the last one opened.
    void rememberWorkspace(const std::string &file)
    {
        const std::size_t slash = file.rfind('/');
        writeFile(path("data/Corvalog/config.ini"),
            "[WorkspaceFiles]\nInitDir=" + file.substr(0, slash)
                + "\nInitFile=" + file.substr(slash + 1) + "\n");
    }

    MainFrmOptions options()
    {
        QDir().mkpath(dir.filePath(QStringLiteral("data/Corvalog")));
        MainFrmOptions o;
        o.folders = { programFolder(), path("data"), path("docs") };
        o.factory = [this]() -> std::unique_ptr<DataProvider> {
            calls.push_back("create");
            if (factoryFails)
                throw VbError(429, "Corvalog UDP receiver (udp:9): Address already in use");
            auto p = std::make_unique<FakeProvider>(calls);
            driver = p.get();
            return p;
        };
        o.commandLine = commandLine;
        o.prompts = &prompts;
        o.userSettings = [store = settingsStore()] {
            return std::make_unique<QSettings>(store, QSettings::IniFormat);
        };
        o.clock = &clock;
        o.busyWait = [this](std::int32_t ms) {
            busyWaits.push_back(ms);
            if (duringWait)
                duringWait();
        };
        o.eventWait = [](std::int32_t) { QCoreApplication::processEvents(); };
        return o;
    }

    // Starts the program; true when it came up.
    bool start()
    {
        window = std::make_unique<MainFrm>(options());
        return window->Form_Load();
    }

    // Hands one packet for a Data Tag to the window, as the driver does.
    void packet(std::int32_t tag, const std::string &value, std::int16_t battLow = 0)
    {
        PacketNotification p;
        p.BaseStation = 1;
        p.Datatag = tag;
        p.Value = value;
        p.RSSI = -60;
        p.CV = 100;
        p.BattLow = battLow;
        driver->send({ p });
        QCoreApplication::processEvents();
    }

    std::vector<std::string> messageTexts() const
    {
        std::vector<std::string> texts;
        for (const auto &m : prompts.messages)
            texts.push_back(m.title + ": " + m.text);
        return texts;
    }
};

} // namespace corvalog
