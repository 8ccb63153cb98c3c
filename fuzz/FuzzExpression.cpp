// Compiles and evaluates arbitrary text as a channel expression, before and after reference
// rewriting, against tables holding a few values. Any outcome is fine except a crash, a hang,
// a sanitizer report or an exception escaping the engine.
#include "runtime/Clock.h"
#include "runtime/Convert.h"
#include "runtime/Format.h"
#include "runtime/VbError.h"
#include "values/ScriptClass.h"
#include "values/ScriptEngine.h"
#include "values/TagReplace.h"

#include <cstddef>
#include <cstdint>
#include <string>

using namespace corvalog;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static ManualClock clock(46000.25);
    static ScriptClass sclass = [] {
        ScriptClass s(clock);
        s.setT(65298, 12.5f);
        s.setT(18, -3.0f);
        s.setTL(18, 40);
        s.setC(3, 1e30f);
        return s;
    }();
    if (size > 4096)
        return 0;
    const std::string text(reinterpret_cast<const char *>(data), size);
    ScriptEngine engine(sclass);
    for (const std::string &expression : { text, rewriteReferences(text) }) {
        const EvalResult r = engine.Eval(expression);
        if (r.ok()) {
            try {
                (void)CStr(r.value);
                (void)Format(r.value, "00.000");
            } catch (const VbError &) {
            }
        } else if (r.description.empty()) {
            __builtin_trap(); // every error carries its description
        }
    }
    return 0;
}
