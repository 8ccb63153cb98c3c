#include "acquisition/SimulatedProvider.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>
#include <benchmark/benchmark.h>
#include <chrono>
#include <memory>
#include <sys/resource.h>

namespace {

corvalog::SimulationOptions fullRate(bool realTime)
{
    corvalog::SimulationOptions options;
    options.rateScale = 1000.0; // every module held at its ceiling of 200 packets/s
    options.realTime = realTime;
    return options;
}

// One simulated second at the maximum rate (8 x 200 packets) in the timer's 20 ms steps, to a
// listener: 20 ms per iteration is 2 % of a core.
void BM_SimulatorSecond(benchmark::State &state)
{
    corvalog::SimulatedProvider sim(fullRate(false));
    std::size_t packets = 0;
    QObject::connect(&sim, &corvalog::DataProvider::packetsArrived,
        [&packets](const corvalog::PacketBatch &batch) { packets += batch.size(); });
    sim.OpenInterface(0, 0);
    double at = 0.0;
    const auto start = std::chrono::steady_clock::now();
    for (auto _ : state) {
        for (int i = 0; i < 1000 / corvalog::SimulatedProvider::kTickMs; ++i)
            sim.advanceTo(at += corvalog::SimulatedProvider::kTickMs);
    }
    const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - start;
    // Seven modules send throughout; the intermittent one keeps silent part of the time.
    const double seconds = static_cast<double>(state.iterations());
    const auto sent = static_cast<double>(packets);
    if (sent < 1400.0 * seconds || sent > 1600.0 * seconds + 8.0)
        state.SkipWithError("not 1400 to 1600 packets a second");
    state.counters["core_percent"] = 100.0 * spent.count() / seconds;
}
BENCHMARK(BM_SimulatorSecond)->Unit(benchmark::kMillisecond);

double processCpuSeconds()
{
    rusage usage {};
    ::getrusage(RUSAGE_SELF, &usage);
    auto seconds = [](const timeval &t) { return t.tv_sec + t.tv_usec / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// The same in real time: the provider's own timer in an event loop, one wall-clock second per
// iteration; the time reported is the process's CPU time in that second, timer wake-ups and
// event dispatch included.
void BM_SimulatorRealTime(benchmark::State &state)
{
    static int argc = 1;
    static char name[] = "corvalog_bench";
    static char *argv[] = { name, nullptr };
    std::unique_ptr<QCoreApplication> app;
    if (!QCoreApplication::instance())
        app = std::make_unique<QCoreApplication>(argc, argv);
    QEventLoop loop;
    corvalog::SimulatedProvider sim(fullRate(true));
    std::size_t packets = 0;
    QObject::connect(&sim, &corvalog::DataProvider::packetsArrived,
        [&packets](const corvalog::PacketBatch &batch) { packets += batch.size(); });
    sim.OpenInterface(0, 0);
    double cpu = 0.0;
    for (auto _ : state) {
        QTimer::singleShot(1000, &loop, &QEventLoop::quit);
        const double before = processCpuSeconds();
        loop.exec();
        const double used = processCpuSeconds() - before;
        cpu += used;
        state.SetIterationTime(used);
    }
    sim.CloseInterface();
    state.counters["packets_per_s"] = static_cast<double>(packets) / sim.now() * 1000.0;
    state.counters["core_percent"] = 100.0 * cpu / static_cast<double>(state.iterations());
}
BENCHMARK(BM_SimulatorRealTime)->UseManualTime()->Iterations(3)->Unit(benchmark::kMillisecond);

} // namespace
