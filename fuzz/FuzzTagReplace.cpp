// The fast reference rewriting must give exactly what the literal one-search-per-tag algorithm
// gives, for every input. The literal algorithm takes milliseconds, so inputs stay short.
#include "TagReplaceLiteral.h"
#include "values/TagReplace.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

using namespace corvalog;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size > 64)
        return 0;
    const std::string_view text(reinterpret_cast<const char *>(data), size);
    const RewrittenExpression fast = rewriteExpression(text);
    const RewrittenExpression literal = rewriteExpressionLiteral(text);
    if (fast.expression != literal.expression || fast.errorScript != literal.errorScript
        || fast.lqiScript != literal.lqiScript || fast.battScript != literal.battScript
        || fast.timeoutScript != literal.timeoutScript
        || rewriteReferences(text) != literal.expression)
        std::abort();
    return 0;
}
