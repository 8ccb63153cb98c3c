#include "workspace/WorkspaceModule.h"

#include <QDir>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

using namespace corvalog;

namespace {

// The figures are for our reading, formatting and writing. Saves also flush the file to the
// disk so that a power cut never leaves it half-written; that flush is the disk's time (about
// a millisecond on a virtual disk), so the files live in memory-backed /dev/shm when there is one.
QString benchFolderTemplate()
{
    return QDir(QStringLiteral("/dev/shm")).exists()
        ? QStringLiteral("/dev/shm/corvalog-bench-XXXXXX")
        : QDir::tempPath() + QStringLiteral("/corvalog-bench-XXXXXX");
}

WorkspaceClass workspace24()
{
    WorkspaceClass ws;
    ws.Version = 2;
    ws.Channels = 24;
    ws.Items.resize(24);
    for (int n = 1; n <= 24; ++n) {
        ItemClass &item = ws.item(n);
        item.DataTagList = "(<FF12>+<0012>)/2-<" + std::to_string(n) + ">";
        item.Caption = "Channel " + std::to_string(n);
        item.Format = "00.000";
        item.TareValue = 1.25f * static_cast<float>(n);
        item.Timeout = 3;
        item.Default = -9999999;
        item.Underload = -100;
        item.Overload = 100;
    }
    return ws;
}

void BM_LoadWorkspace24(benchmark::State &state)
{
    QTemporaryDir dir(benchFolderTemplate());
    SilentPrompts prompts;
    const std::string file = dir.filePath("w.lws").toStdString();
    SaveWorkspace(workspace24(), file, prompts);
    WorkspaceClass ws;
    for (auto _ : state) {
        LoadWorkspace(ws, file, prompts);
        benchmark::DoNotOptimize(ws);
    }
}
BENCHMARK(BM_LoadWorkspace24);

void BM_SaveWorkspace24(benchmark::State &state)
{
    QTemporaryDir dir(benchFolderTemplate());
    SilentPrompts prompts;
    const std::string file = dir.filePath("w.lws").toStdString();
    const WorkspaceClass ws = workspace24();
    for (auto _ : state)
        SaveWorkspace(ws, file, prompts);
}
BENCHMARK(BM_SaveWorkspace24);

} // namespace
