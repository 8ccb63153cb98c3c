#include "NullWindow.h"
#include "RecordingPrompts.h"
#include "displays/DisplayRefresh.h"
#include "displays/TableContainer.h"
#include "session/Session.h"

#include <QApplication>
#include <benchmark/benchmark.h>

using namespace corvalog;

namespace {

// One refresh tick of 24 panels in a shown window: the property writes and the one repaint.
// The log timer evaluates (a fast log is running), so the tick is the display's own work.
void BM_RefreshTick24(benchmark::State &state)
{
    ManualClock clock(46000.0);
    NullWindow host;
    SilentPrompts prompts;
    Session session(SessionOptions { nullptr, &clock, {}, false, {} },
        SessionHost { host, host, host, prompts });
    WorkspaceClass &ws = session.workspace();
    ws.Channels = 24;
    ws.LogInterval = 100;
    ws.Items.assign(24, ItemClass {});
    ChannelValues &values = session.values();
    for (int n = 1; n <= 24; ++n) {
        ItemClass &item = ws.item(n);
        item.DataTagList = "<" + std::to_string(n) + ">";
        item.Format = "00.000";
        item.Overload = 50;
        item.Underload = -50;
    }
    prepareChannels(ws, values);
    DataLogger &logger = session.logger();
    logger.start("/dev/null");

    TableContainer window;
    std::vector<LCDModule *> panels { nullptr };
    FlashPhase phase;
    for (int n = 1; n <= 24; ++n) {
        auto *panel = new LCDModule(&window);
        panel->setProperty("Index", n);
        panel->InitFlashLabel(&phase);
        panel->setForeColor(kBlack);
        panels.push_back(panel);
    }
    window.resize(4 * 220, 6 * 124);
    window.show();
    QApplication::processEvents();
    DisplayRefresh refresh({ session, window, panels, [](const std::string &) {} });
    int tick = 0;
    for (auto _ : state) {
        ++tick;
        for (int n = 1; n <= 24; ++n)
            values.output(n) = static_cast<float>((tick * 7 + n * 13) % 120) - 60.0f;
        refresh.ScreenTimer_Timer();
    }
    logger.stop();
}
BENCHMARK(BM_RefreshTick24)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
