#include "logging/LogFormat.h"
#include "runtime/DateTime.h"

#include <benchmark/benchmark.h>

using namespace corvalog;

namespace {

// One log row of 24 channels formatted "00.000".
void BM_LogRow24(benchmark::State &state)
{
    WorkspaceClass ws;
    ws.Channels = 24;
    ws.Items.assign(24, ItemClass {});
    ChannelValues values;
    for (int n = 1; n <= 24; ++n) {
        ws.item(n).Format = "00.000";
        values.output(n) = 12.3456f * static_cast<float>(n);
    }
    const double date = dateFromCivil({ 2026, 11, 22, 10, 30, 0 });
    double elapsed = 0;
    for (auto _ : state) {
        std::string row = logRow(date, elapsed, ws, values, false);
        benchmark::DoNotOptimize(row);
        elapsed += 10;
    }
}
BENCHMARK(BM_LogRow24);

} // namespace
