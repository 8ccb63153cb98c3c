#pragma once

#include "values/TagReplace.h"

#include <string_view>

namespace corvalog {

// Reference rewriting done literally: one search-and-replace per Data Tag text "<0001>" to
// "<FFFE>", then per channel "<1>" to "<24>", each extending the scripts when it found
// something. Written apart from the fast rewriting, as the oracle it is tested and measured
// against.
RewrittenExpression rewriteExpressionLiteral(std::string_view source);

} // namespace corvalog
