#include "TagReplaceLiteral.h"

#include <string>

namespace corvalog {

namespace {

// Replaces every occurrence, left to right; true when there was one.
bool replaceAll(std::string &text, const std::string &find, const std::string &replacement)
{
    std::size_t at = text.find(find);
    if (at == std::string::npos)
        return false;
    while (at != std::string::npos) {
        text.replace(at, find.size(), replacement);
        at = text.find(find, at + replacement.size());
    }
    return true;
}

void extend(RewrittenExpression &r, const std::string &suffix, const char *error, const char *lqi,
    const char *batt, const char *timeout)
{
    if (!r.errorScript.empty())
        r.errorScript += " OR ";
    r.errorScript += error + suffix;
    if (r.lqiScript.empty())
        r.lqiScript = "Min(";
    r.lqiScript += lqi + suffix + ",";
    if (!r.battScript.empty())
        r.battScript += " OR ";
    r.battScript += batt + suffix;
    if (!r.timeoutScript.empty())
        r.timeoutScript += " OR ";
    r.timeoutScript += timeout + suffix;
}

} // namespace

RewrittenExpression rewriteExpressionLiteral(std::string_view source)
{
    static const char kHex[] = "0123456789ABCDEF";
    RewrittenExpression r;
    r.expression = std::string(source);
    for (int d = 1; d <= 65534; ++d) {
        std::string tag = "0000";
        for (int i = 0; i < 4; ++i)
            tag[3 - i] = kHex[(d >> (4 * i)) & 15];
        const std::string number = std::to_string(d);
        if (replaceAll(r.expression, "<" + tag + ">", "T(" + number + ")"))
            extend(r, "(" + number + ")", "TE", "TL", "TB", "TT");
    }
    for (int n = 1; n <= 24; ++n) {
        const std::string number = std::to_string(n);
        if (replaceAll(r.expression, "<" + number + ">", "C(" + number + ")"))
            extend(r, "(" + number + ")", "CE", "CL", "CB", "CT");
    }
    if (!r.lqiScript.empty()) {
        r.lqiScript.pop_back();
        r.lqiScript += ")";
    }
    return r;
}

} // namespace corvalog
