#include "GuiThread.h"
#include "NullWindow.h"
#include "PacketSequence.h"
#include "ScriptedBaseStation.h"
#include "acquisition/PacketPump.h"
#include "acquisition/SerialProvider.h"
#include "runtime/Clock.h"
#include "values/ReadValues.h"
#include "values/ScriptClass.h"
#include "values/ScriptEngine.h"

#include <QTimer>
#include <benchmark/benchmark.h>
#include <chrono>
#include <thread>

namespace {

using namespace corvalog;
using namespace std::chrono_literals;

constexpr std::int32_t kBaudrate = 921600;

// Answers every command at once with 0, as a quick base station does.
std::vector<std::string> answerAtOnce(const std::string &line)
{
    bsp::CommandLine command;
    std::string error;
    if (!bsp::parseCommandLine(line, command, error))
        return {};
    return { bsp::answerText(command.seq, { "0" }) };
}

// 10,000 numbered packets sent at 5,000 a second through a pseudo-terminal at 921600 baud,
// while 24 channels over the packets' tags are evaluated every 333 ms, as a live program does;
// timed until the GUI thread has applied all of them. One lost or reordered packet fails the
// run; 2 s when nothing lags.
void BM_SerialReceive(benchmark::State &state)
{
    constexpr std::uint64_t kPackets = 10000;
    constexpr std::uint64_t kPerTick = 50; // every 10 ms
    GuiThread gui;
    SystemClock clock;
    ScriptClass tables(clock);
    ScriptEngine engine(tables);
    PacketHandler handler(tables, NumberLocale::point());
    PacketPump pump(handler);
    ScriptedBaseStation station(answerAtOnce);
    SerialOptions options;
    options.device = station.device();
    options.baudrate = kBaudrate;
    SerialProvider provider(options);
    pump.attach(&provider);
    PacketSequence sequence;
    QObject::connect(&provider, &DataProvider::packetsArrived, &provider,
        [&](const PacketBatch &batch) { sequence.check(batch); });
    provider.OpenInterface(1, kBaudrate);

    WorkspaceClass workspace;
    ChannelValues values;
    NullWindow host;
    workspace.Channels = 24;
    workspace.Items.assign(24, ItemClass {});
    for (int n = 1; n <= 24; ++n) {
        char text[48];
        std::snprintf(text, sizeof text, "(<%04X>+<%04X>)/2-<%04X>", 3 * n, 3 * n + 1, 3 * n + 2);
        workspace.item(n).DataTagList = text;
        workspace.item(n).Timeout = 3;
    }
    prepareChannels(workspace, values);
    QTimer refresh;
    QObject::connect(
        &refresh, &QTimer::timeout, [&] { ReadValues(workspace, values, engine, host); });
    refresh.start(333);

    std::uint64_t lost = 0;
    std::uint64_t breaks = 0;
    for (auto _ : state) {
        std::thread writer([&station] {
            const auto start = std::chrono::steady_clock::now();
            for (std::uint64_t tick = 0; tick < kPackets / kPerTick; ++tick) {
                std::this_thread::sleep_until(start + tick * 10ms);
                std::string lines;
                for (std::uint64_t n = 0; n < kPerTick; ++n)
                    lines += "P," + PacketSequence::line(tick * kPerTick + n);
                station.send(lines);
            }
        });
        gui.runUntil([&] { return sequence.received() >= kPackets; }, 4s);
        writer.join();
        lost += kPackets - std::min(kPackets, sequence.received());
        breaks += sequence.breaks();
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * kPackets));
    state.counters["lost"] = static_cast<double>(lost);
    if (lost != 0 || breaks != 0 || provider.malformedCount() != 0)
        state.SkipWithError("packets were lost or reordered");
}
BENCHMARK(BM_SerialReceive)->UseRealTime()->Unit(benchmark::kMillisecond)->Iterations(1);

// A command and its answer through the pseudo-terminal: SEND written, R read back, the waiting
// GUI thread woken.
void BM_SerialRoundTrip(benchmark::State &state)
{
    GuiThread gui;
    ScriptedBaseStation station(answerAtOnce);
    SerialOptions options;
    options.device = station.device();
    SerialProvider provider(options);
    provider.OpenInterface(1, kBaudrate);
    std::uint8_t address = 1;
    std::uint8_t code = 57;
    std::string data = "0";
    for (auto _ : state) {
        if (provider.SendCommand(address, 0xFF12, code, data) != 0)
            state.SkipWithError("the command was not acknowledged");
    }
}
BENCHMARK(BM_SerialRoundTrip)->UseRealTime()->Unit(benchmark::kMicrosecond);

} // namespace
