#include "acquisition/PacketDecoder.h"
#include "acquisition/PacketHandler.h"
#include "runtime/Clock.h"
#include "values/ScriptClass.h"

#include <benchmark/benchmark.h>

namespace {

// A decimal-text packet as modules send them, stamped by the real clock.
void BM_PacketArrived(benchmark::State &state)
{
    corvalog::SystemClock clock;
    corvalog::ScriptClass tables(clock);
    corvalog::PacketHandler handler(tables, corvalog::NumberLocale::point());
    for (auto _ : state)
        handler.DP_PacketArrived(1, 0xFF12, "12.5", 0, -60, 100, 0, 0);
    benchmark::DoNotOptimize(tables.T(0xFF12));
    if (handler.droppedCount() != 0)
        state.SkipWithError("packets were dropped");
}
BENCHMARK(BM_PacketArrived);

} // namespace
