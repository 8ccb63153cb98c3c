#include "runtime/Format.h"

#include <benchmark/benchmark.h>

namespace {

using corvalog::Format;
using corvalog::Variant;

// The display's per-tick case: a sensor reading through a fixed-point pattern.
void BM_FormatSingle(benchmark::State &state)
{
    const Variant value = Variant::single(12.3456f);
    for (auto _ : state)
        benchmark::DoNotOptimize(Format(value, "00.000"));
}
BENCHMARK(BM_FormatSingle);

void BM_FormatDoubleGrouped(benchmark::State &state)
{
    const Variant value = Variant::dbl(-1234567.891);
    for (auto _ : state)
        benchmark::DoNotOptimize(Format(value, "#,##0.00"));
}
BENCHMARK(BM_FormatDoubleGrouped);

// The log's time stamp.
void BM_FormatDateTime(benchmark::State &state)
{
    const Variant value = Variant::date(45358.587);
    for (auto _ : state)
        benchmark::DoNotOptimize(Format(value, "DD/MM/YYYY HH:MM:SS"));
}
BENCHMARK(BM_FormatDateTime);

} // namespace
