#include "GuiThread.h"
#include "LoopbackSender.h"
#include "PacketSequence.h"
#include "acquisition/PacketPump.h"
#include "acquisition/UdpProvider.h"
#include "runtime/Clock.h"
#include "values/ScriptClass.h"

#include <benchmark/benchmark.h>
#include <chrono>

namespace {

using namespace corvalog;
using namespace std::chrono_literals;

// Bursts of packets sent over loopback at a set rate (range 1, packets/s) with a set number of
// lines a datagram (range 0), timed until the GUI thread has applied all of them; one lost or
// reordered packet fails the run. 50,000 packets at 250,000/s take 200 ms when nothing lags.
void BM_UdpReceive(benchmark::State &state)
{
    constexpr std::uint64_t kBurst = 50000;
    const int lines = static_cast<int>(state.range(0));
    const double rate = static_cast<double>(state.range(1));
    GuiThread gui;
    SystemClock clock;
    ScriptClass tables(clock);
    PacketHandler handler(tables, NumberLocale::point());
    PacketPump pump(handler);
    const std::unique_ptr<UdpProvider> provider = UdpProvider::create(
        "127.0.0.1", 0, UdpProvider::kReceiveBufferBytes, NumberLocale::point());
    pump.attach(provider.get());
    PacketSequence sequence;
    QObject::connect(provider.get(), &DataProvider::packetsArrived, provider.get(),
        [&](const PacketBatch &batch) { sequence.check(batch); });
    provider->OpenInterface(0, 0);

    std::uint64_t lost = 0;
    std::uint64_t breaks = 0;
    for (auto _ : state) {
        sequence = PacketSequence();
        LoopbackSender sender({ provider->port(), kBurst, rate, lines, 2s });
        gui.runUntil([&] { return sequence.received() >= kBurst; }, 3s);
        sender.wait();
        lost += kBurst - sequence.received();
        breaks += sequence.breaks();
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * kBurst));
    state.counters["lost"] = static_cast<double>(lost);
    state.counters["receive_buffer"] = provider->receiveBufferBytes();
    if (lost != 0 || breaks != 0 || provider->malformedCount() != 0)
        state.SkipWithError("packets were lost or reordered");
}
BENCHMARK(BM_UdpReceive)
    ->ArgNames({ "lines", "rate" })
    ->Args({ 1, 250000 })
    ->Args({ 10, 250000 })
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

} // namespace
