#include "PanelState.h"

#include "ChannelValues.h"
#include "ScriptEngine.h"
#include "runtime/Convert.h"
#include "runtime/Format.h"
#include "runtime/VbError.h"
#include "workspace/ItemClass.h"

namespace corvalog {

namespace {

// An indicator script's value; a failing script reads as 0 (no bar, no low-battery mark).
template <typename T, typename Convert>
T indicator(ScriptEngine &engine, const std::string &script, Convert convert)
{
    EvalResult r = engine.Eval(script);
    if (!r.ok())
        return T {};
    try {
        return convert(r.value);
    } catch (const VbError &) {
        return T {};
    }
}

} // namespace

std::string panelText(const std::string &formatted, bool commaDecimal)
{
    std::string text = formatted;
    if (!commaDecimal)
        return text;
    for (char &c : text) {
        if (c == ',')
            c = '.';
        else if (c == '.')
            c = ',';
    }
    return text;
}

PanelState panelState(const ItemClass &item, int n, const ChannelValues &values,
    ScriptEngine &engine, bool commaDecimal)
{
    PanelState state;
    state.tared = item.TareValue != 0;
    if (values.error(n)) {
        state.text = kNoValue;
        state.ground = kPureRed;
        return state;
    }
    const float v = values.output(n);
    state.flash = v > item.Overload || v < item.Underload;
    state.text = panelText(Format(Variant::single(v), item.Format), commaDecimal);
    state.linkQuality
        = indicator<float>(engine, item.DataTagLQIScript, [](const Variant &x) { return CSng(x); });
    state.lowBattery = indicator<bool>(
        engine, item.DataTagBattScript, [](const Variant &x) { return CBool(x); });
    return state;
}

} // namespace corvalog
