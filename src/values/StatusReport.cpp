#include "StatusReport.h"

#include "ScriptClass.h"
#include "ScriptEngine.h"
#include "StatusDisplay.h"
#include "runtime/Convert.h"
#include "runtime/Operators.h"
#include "runtime/VbError.h"
#include "workspace/WorkspaceClass.h"

#include <cstdint>

namespace corvalog {
namespace {

constexpr const char *kCrLf = "\r\n";

// A failed evaluation, Null or a value with no truth value counts as false: the report goes on.
bool isTrue(const EvalResult &r)
{
    if (!r.ok() || r.value.isNull())
        return false;
    try {
        return CBool(r.value);
    } catch (const VbError &) {
        return false;
    }
}

bool isBelow50(const EvalResult &r)
{
    if (!r.ok())
        return false;
    try {
        const Variant less = ops::compare(r.value, Variant::integer(50), ops::Comparison::Less);
        return !less.isNull() && CBool(less);
    } catch (const VbError &) {
        return false;
    }
}

// "&H" + r as a whole number, or false when r is not made of hexadecimal digits.
bool hexValue(const std::string &r, std::uint64_t &value)
{
    if (r.empty() || r.size() > 8)
        return false;
    value = 0;
    for (const char c : r) {
        int digit;
        if (c >= '0' && c <= '9')
            digit = c - '0';
        else if (c >= 'A' && c <= 'F')
            digit = c - 'A' + 10;
        else if (c >= 'a' && c <= 'f')
            digit = c - 'a' + 10;
        else
            return false;
        value = value * 16 + static_cast<std::uint64_t>(digit);
    }
    return true;
}

// Only a plain channel number 1..24 has a panel; anything else gets an empty title.
std::string titleOf(const std::string &r, const PanelTitleFn &panelTitle)
{
    if (!panelTitle || r.empty() || r.size() > 2)
        return {};
    int channel = 0;
    for (const char c : r) {
        if (c < '0' || c > '9')
            return {};
        channel = channel * 10 + (c - '0');
    }
    if (channel < 1 || channel > WorkspaceClass::kMaxChannels)
        return {};
    return panelTitle(channel);
}

} // namespace

std::string ReferenceListing(const std::string &expression, const std::string &channelPrefix,
    const std::string &tagPrefix, ScriptEngine &engine, const PanelTitleFn &panelTitle)
{
    const bool linkQuality = channelPrefix == "CL" || tagPrefix == "TL";
    std::string result;
    std::size_t open = expression.find('<');
    while (open != std::string::npos) {
        const std::size_t close = expression.find('>', open + 1);
        // A "<" that nothing closes is no reference, and neither is anything after it.
        if (close == std::string::npos)
            break;
        const std::string r = expression.substr(open + 1, close - open - 1);
        std::string test;
        std::string line;
        if (r.size() < 4) {
            test = channelPrefix + "(" + r + ")";
            line = "Displayed Channel " + r + " (" + titleOf(r, panelTitle) + ")";
        } else {
            std::uint64_t tag = 0;
            // A reference that is no hexadecimal number has no test, so it is never listed.
            if (hexValue(r, tag))
                test = tagPrefix + "(" + std::to_string(tag) + ")";
            line = "Module Data Tag " + ("0000" + r).substr(r.size());
        }
        if (!test.empty()) {
            if (linkQuality)
                test += " < 50";
            if (isTrue(engine.Eval(test)))
                result += " " + line + kCrLf;
        }
        open = expression.find('<', close + 1);
    }
    return result;
}

std::string StatusReport(
    int n, const WorkspaceClass &workspace, ScriptEngine &engine, const PanelTitleFn &panelTitle)
{
    if (n < 1 || static_cast<std::size_t>(n) > workspace.Items.size())
        return {};
    const ItemClass &item = workspace.item(n);

    const EvalResult expression = engine.Eval(item.DataTagExpression);
    if (expression.error >= 1)
        return "There is an error in the expression for this channel: " + expression.description
            + kCrLf;

    // TT judges silence against the engine's current timeout, which the last evaluated channel
    // set; use this channel's own, and leave the cycle's setting as it was.
    ScriptClass &sclass = engine.sclass();
    const std::int16_t savedTimeout = sclass.timeout();
    sclass.SetTimeout(item.Timeout);

    std::string report;
    const auto section = [&](const char *heading, const char *cp, const char *tp) {
        report += std::string(heading) + kCrLf;
        report += ReferenceListing(item.DataTagList, cp, tp, engine, panelTitle);
    };
    if (isTrue(engine.Eval(item.DataTagTimeoutScript)))
        section("The following items have timed out: ", "CT", "TT");
    if (isTrue(engine.Eval(item.DataTagErrorScript)))
        section("The following items have reported an error: ", "CE", "TE");
    if (isBelow50(engine.Eval(item.DataTagLQIScript)))
        section("The following items have reported low LQI: ", "CL", "TL");
    if (isTrue(engine.Eval(item.DataTagBattScript)))
        section("The following items have reported low battery: ", "CB", "TB");

    sclass.SetTimeout(savedTimeout);
    return report;
}

void ShowStatusReport(int n, const WorkspaceClass &workspace, ScriptEngine &engine,
    const PanelTitleFn &panelTitle, StatusDisplay &display)
{
    const std::string report = StatusReport(n, workspace, engine, panelTitle);
    if (!report.empty())
        display.ShowMessage(report, "Status Report Channel " + std::to_string(n));
}

} // namespace corvalog
