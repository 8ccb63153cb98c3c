#include "TagReplaceLiteral.h"
#include "values/TagReplace.h"

#include <benchmark/benchmark.h>

namespace {

constexpr const char *kExpression = "(<FF12>+<0012>)/2-<3>*<FE01>";

void BM_TagReplace(benchmark::State &state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(corvalog::rewriteExpression(kExpression));
}
BENCHMARK(BM_TagReplace);

void BM_TagReplaceLiteral(benchmark::State &state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(corvalog::rewriteExpressionLiteral(kExpression));
}
BENCHMARK(BM_TagReplaceLiteral)->Unit(benchmark::kMicrosecond);

} // namespace
