// Making a 24-channel workspace active: panels rebuilt, base station re-opened, window fitted
// and every channel's scripts prepared, with the fixed waits for the old driver left out.
#include "FakeProvider.h"
#include "app/MainFrm.h"

#include <QApplication>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

using namespace corvalog;

static void BM_Activation24(benchmark::State &state)
{
    QTemporaryDir dir;
    std::vector<std::string> calls;
    SilentPrompts prompts;
    MainFrmOptions options;
    const std::string root = dir.path().toStdString();
    options.folders = { root, root, root };
    options.factory = [&calls] { return std::make_unique<FakeProvider>(calls); };
    options.prompts = &prompts;
    const QString store = dir.filePath(QStringLiteral("user.ini"));
    options.userSettings
        = [store] { return std::make_unique<QSettings>(store, QSettings::IniFormat); };
    options.busyWait = [](std::int32_t) {};
    MainFrm window(std::move(options));
    window.Form_Load();
    window.show();
    WorkspaceClass &ws = window.workspace();
    ws.Channels = 24;
    ws.Items.assign(24, ItemClass {});
    for (int n = 1; n <= 24; ++n) {
        ItemClass &item = ws.item(n);
        item.Caption = "Channel " + std::to_string(n);
        item.DataTagList = "(<" + std::to_string(1000 + n) + ">+<" + std::to_string(2000 + n)
            + ">)/2" + (n > 1 ? "-<" + std::to_string(n - 1) + ">" : std::string());
        item.Format = "00.000";
        item.Functionality = static_cast<ChannelFunction>(n % 6);
    }
    for (auto _ : state) {
        window.SetupDisplays();
        calls.clear();
    }
    window.hide();
}
BENCHMARK(BM_Activation24)->Unit(benchmark::kMillisecond);
