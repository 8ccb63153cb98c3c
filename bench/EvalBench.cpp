#include "runtime/Clock.h"
#include "values/ScriptClass.h"
#include "values/ScriptCompiler.h"
#include "values/ScriptEngine.h"

#include <benchmark/benchmark.h>

using namespace corvalog;

namespace {

// (<FF12>+<0012>)/2-<3>*<FE01>+1 rewritten: four references, five operators.
const char *const kExpression = "(T(65298)+T(18))/2-C(3)*T(65025)+1";

void BM_EvalCached(benchmark::State &state)
{
    SystemClock clock;
    ScriptClass sclass(clock);
    ScriptEngine engine(sclass);
    sclass.setT(65298, 10.0f);
    sclass.setT(18, 20.0f);
    sclass.setC(3, 5.0f);
    sclass.setT(65025, 2.0f);
    engine.Eval(kExpression);
    for (auto _ : state) {
        EvalResult r = engine.Eval(kExpression);
        benchmark::DoNotOptimize(r);
    }
}
BENCHMARK(BM_EvalCached);

void BM_EvalCompile(benchmark::State &state)
{
    for (auto _ : state) {
        ScriptProgram p = compileScript(kExpression);
        benchmark::DoNotOptimize(p);
    }
}
BENCHMARK(BM_EvalCompile);

} // namespace
