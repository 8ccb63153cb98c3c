#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace corvalog {

// A channel expression with its module and channel references rewritten into table calls, and
// the four companion scripts over the same references.
struct RewrittenExpression {
    std::string expression;
    std::string errorScript; // "TE(18) OR TE(65298) OR CE(3)", or empty
    std::string lqiScript; // "Min(TL(18),TL(65298),CL(3))", or empty
    std::string battScript; // "TB(18) OR ...", or empty
    std::string timeoutScript; // "TT(18) OR ...", or empty
};

// Rewrites <FF12> (four upper-case hex digits, tags 0001..FFFE) into T(65298) and <3> (channels
// 1..24, no leading zeros) into C(3), and builds the scripts: tags in numeric order, then
// channels in numeric order, each once. Linear in the length of the source.
RewrittenExpression rewriteExpression(std::string_view source);

// The rewritten expression alone, exactly as rewriteExpression gives it.
std::string rewriteReferences(std::string_view source);

// The first Data Tag an expression refers to as rewriteExpression reads references ("<FF12>":
// four upper-case hex digits, 0001 to FFFE), or -1.
std::int32_t firstDataTag(std::string_view expression);

} // namespace corvalog
