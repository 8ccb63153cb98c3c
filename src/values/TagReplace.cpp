#include "TagReplace.h"

#include "runtime/Ascii.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace corvalog {

namespace {

constexpr int kFirstTag = 1;
constexpr int kLastTag = 65534;
constexpr int kLastChannel = 24;

// References are written in upper case only: <ff12> is not one.
int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

// The Data Tag written at `s[at]` as "<HHHH>", or -1. Tags 0000 and FFFF are never references.
int tagAt(std::string_view s, std::size_t at)
{
    if (s.size() - at < 6 || s[at + 5] != '>')
        return -1;
    int value = 0;
    for (std::size_t i = at + 1; i < at + 5; ++i) {
        const int d = hexDigit(s[i]);
        if (d < 0)
            return -1;
        value = value * 16 + d;
    }
    return value >= kFirstTag && value <= kLastTag ? value : -1;
}

// The channel written at `s[at]` as "<n>" (1..24, no leading zero), or -1, with its length.
int channelAt(std::string_view s, std::size_t at, std::size_t &length)
{
    const std::size_t rest = s.size() - at;
    if (rest < 3 || !isDigit(s[at + 1]) || s[at + 1] == '0')
        return -1;
    if (s[at + 2] == '>') {
        length = 3;
        return s[at + 1] - '0';
    }
    if (rest < 4 || !isDigit(s[at + 2]) || s[at + 3] != '>')
        return -1;
    const int value = (s[at + 1] - '0') * 10 + (s[at + 2] - '0');
    if (value > kLastChannel)
        return -1;
    length = 4;
    return value;
}

void appendCall(std::string &out, const char *name, int index)
{
    out += name;
    out += '(';
    out += std::to_string(index);
    out += ')';
}

// Accumulates the four scripts in the order the literal algorithm builds them.
struct ScriptBuilder {
    RewrittenExpression &r;

    void add(const char *error, const char *lqi, const char *batt, const char *timeout, int index)
    {
        addOr(r.errorScript, error, index);
        if (r.lqiScript.empty())
            r.lqiScript = "Min(";
        appendCall(r.lqiScript, lqi, index);
        r.lqiScript += ',';
        addOr(r.battScript, batt, index);
        addOr(r.timeoutScript, timeout, index);
    }

    void finish()
    {
        if (!r.lqiScript.empty())
            r.lqiScript.back() = ')';
    }

    static void addOr(std::string &script, const char *name, int index)
    {
        if (!script.empty())
            script += " OR ";
        appendCall(script, name, index);
    }
};

// One left-to-right scan. A reference contains no '<' or '>' inside it, so references never
// overlap, and the replacement texts contain no brackets, so replacing can neither create nor
// destroy another reference: the text comes out as the per-tag, per-channel passes leave it.
template <typename OnTag, typename OnChannel>
std::string rewriteScan(std::string_view source, OnTag onTag, OnChannel onChannel)
{
    std::string out;
    out.reserve(source.size() + source.size() / 2);
    std::size_t copied = 0;
    std::size_t at = source.find('<');
    while (at != std::string_view::npos) {
        std::size_t length = 6;
        int index = tagAt(source, at);
        const char *name = "T(";
        if (index >= 0) {
            onTag(index);
        } else if ((index = channelAt(source, at, length)) >= 0) {
            name = "C(";
            onChannel(index);
        }
        if (index < 0) {
            at = source.find('<', at + 1);
            continue;
        }
        out.append(source.substr(copied, at - copied));
        out += name;
        out += std::to_string(index);
        out += ')';
        copied = at + length;
        at = source.find('<', copied);
    }
    out.append(source.substr(copied));
    return out;
}

} // namespace

RewrittenExpression rewriteExpression(std::string_view source)
{
    // Expressions reference a handful of tags, so a sorted small vector beats a 64 Ki bitset.
    std::vector<std::uint16_t> tags;
    std::uint32_t channels = 0;
    RewrittenExpression r;
    r.expression = rewriteScan(
        source, [&](int tag) { tags.push_back(static_cast<std::uint16_t>(tag)); },
        [&](int channel) { channels |= 1u << channel; });
    if (tags.empty() && channels == 0)
        return r;

    std::sort(tags.begin(), tags.end());
    tags.erase(std::unique(tags.begin(), tags.end()), tags.end());
    ScriptBuilder scripts { r };
    for (const std::uint16_t tag : tags)
        scripts.add("TE", "TL", "TB", "TT", tag);
    for (int channel = 1; channel <= kLastChannel; ++channel) {
        if (channels & (1u << channel))
            scripts.add("CE", "CL", "CB", "CT", channel);
    }
    scripts.finish();
    return r;
}

std::string rewriteReferences(std::string_view source)
{
    return rewriteScan(
        source, [](int) {}, [](int) {});
}

std::int32_t firstDataTag(std::string_view expression)
{
    // The references rewriteExpression rewrites: "<", four upper-case hex digits, ">".
    for (std::size_t open = expression.find('<'); open != std::string_view::npos;
         open = expression.find('<', open + 1)) {
        if (expression.size() - open < 6 || expression[open + 5] != '>')
            continue;
        std::int32_t tag = 0;
        bool hex = true;
        for (const char c : expression.substr(open + 1, 4)) {
            hex = hex && ((c >= '0' && c <= '9') || (c >= 'A' && c <= 'F'));
            tag = tag * 16 + hexDigitValue(c);
        }
        if (hex && tag >= 1 && tag <= 0xFFFE)
            return tag;
    }
    return -1;
}

} // namespace corvalog
