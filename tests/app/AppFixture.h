#pragma once

#include "FakeProvider.h"
#include "FileText.h"
#include "RecordingPrompts.h"
#include "app/MainFrm.h"
#include "displays/LCDModule.h"
#include "runtime/VbError.h"

#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
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

    std::string path(const std::string &n) const { return dir.path().toStdString() + '/' + n; }
    std::unique_ptr<QSettings> userStore() const
    {
        return std::make_unique<QSettings>(
            dir.filePath(QStringLiteral("user.ini")), QSettings::IniFormat);
    }

    void SetUp() override
    {
        for (const char *sub : { "program", "data/Corvalog", "docs" })
            QDir(dir.path()).mkpath(QString::fromLatin1(sub));
    }

    // A workspace file of n channels over Data Tags 0001.., with extra lines appended.
    static std::string workspaceText(
        int channels, const std::string &title = "Bench", const std::string &extra = {})
    {
        std::string s = "[Workspace]\nType=CORVALOG\nVersion=2\nTitle=" + title
            + "\nChannels=" + std::to_string(channels) + "\n";
        for (int n = 1; n <= channels; ++n) {
            const std::string k = std::to_string(n);
            s += "DataTagList" + k + "=<" + QString::asprintf("%04X", n).toStdString() + ">\nFormat"
                + k + "=0.00\nTimeout" + k + "=3\n";
        }
        return s + extra;
    }

    // Writes a workspace file and remembers it as the last one opened; its path.
    std::string useWorkspace(const std::string &text)
    {
        const std::string file = path("w.lws");
        writeFile(file, text);
        writeFile(path("data/Corvalog/config.ini"),
            "[WorkspaceFiles]\nInitDir=" + dir.path().toStdString() + "\nInitFile=w.lws\n");
        return file;
    }

    MainFrmOptions options()
    {
        MainFrmOptions o;
        o.folders = { path("program"), path("data"), path("docs") };
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
        o.userSettings = [this] { return userStore(); };
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
        window.reset();
        window = std::make_unique<MainFrm>(options());
        return window->Form_Load();
    }

    // The next workspace editor opened gets `act` done to it, then is closed.
    void onEditor(std::function<void(QDialog &)> act)
    {
        QObject::disconnect(window.get(), &MainFrm::editorOpened, nullptr, nullptr);
        QObject::connect(window.get(), &MainFrm::editorOpened, [act](QDialog *editor) {
            QTimer::singleShot(0, editor, [act, editor] {
                act(*editor);
                editor->close();
            });
        });
    }

    // Hands one packet for a Data Tag to the window, as the driver does.
    void packet(std::int32_t tag, const std::string &value, std::int16_t battLow = 0)
    {
        driver->send({ { 1, tag, value, 0, -60, 100, battLow } });
        QCoreApplication::processEvents();
    }
};

} // namespace corvalog
