#include "ExpressionCheck.h"

#include "ScriptEngine.h"
#include "TagReplace.h"
#include "runtime/VbError.h"

namespace corvalog {

ExpressionCheck checkExpression(ScriptEngine &engine, std::string_view source)
{
    const EvalResult result = engine.Eval(rewriteReferences(source));
    ExpressionCheck check;
    check.error = result.error;
    check.description = result.description;
    check.valid = !(result.error > 0 && result.error != vberr::Overflow);
    return check;
}

} // namespace corvalog
