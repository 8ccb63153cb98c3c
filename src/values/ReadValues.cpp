#include "ReadValues.h"

#include "ScriptClass.h"
#include "TagReplace.h"
#include "runtime/Convert.h"
#include "runtime/Operators.h"
#include "runtime/VbError.h"

namespace corvalog {

namespace {

// One channel's evaluations, remembering whether any of them failed since the channel began.
class ChannelEvaluation
{
public:
    ChannelEvaluation(ScriptEngine &engine,
        std::array<ChannelValues::CompiledScript, ChannelValues::kScripts> &compiled)
        : m_engine(engine)
        , m_compiled(compiled)
    {
    }

    bool failed() const { return m_failed; }

    // The value of a script; nothing (and the failure noted) when it raises.
    std::optional<Variant> value(const std::string &script)
    {
        EvalResult r = m_engine.run(program(script));
        if (!r.ok()) {
            m_failed = true;
            return std::nullopt;
        }
        return std::move(r.value);
    }

    // A conversion of a script's value; nothing (and the failure noted) when either fails.
    template <typename T, typename Convert>
    std::optional<T> as(const std::string &script, Convert convert)
    {
        const std::optional<Variant> v = value(script);
        if (!v)
            return std::nullopt;
        try {
            return convert(*v);
        } catch (const VbError &) {
            m_failed = true;
            return std::nullopt;
        }
    }

    std::optional<float> single(const std::string &script)
    {
        return as<float>(script, [](const Variant &v) { return CSng(v); });
    }

    bool truth(const std::string &script)
    {
        return as<bool>(script, [](const Variant &v) { return CBool(v); }).value_or(false);
    }

private:
    // The compiled script, from the channel's own slots while its text stays the same.
    const ScriptProgram &program(const std::string &script)
    {
        ChannelValues::CompiledScript *free = nullptr;
        for (ChannelValues::CompiledScript &slot : m_compiled) {
            if (slot.program && slot.text == script)
                return *slot.program;
            if (!free && !slot.program)
                free = &slot;
        }
        ChannelValues::CompiledScript &slot
            = free ? *free : m_compiled[m_next++ % m_compiled.size()];
        slot.text = script;
        slot.program = m_engine.compile(script);
        return *slot.program;
    }

    ScriptEngine &m_engine;
    std::array<ChannelValues::CompiledScript, ChannelValues::kScripts> &m_compiled;
    std::size_t m_next = 0;
    bool m_failed = false;
};

// The divisor of each filter: light follows half the way per cycle, heavy a twentieth.
float filterDivisor(ChannelFunction filter)
{
    return filter == ChannelFunction::FilterLight ? 2.0f
        : filter == ChannelFunction::FilterMedium ? 10.0f
                                                  : 20.0f;
}

// Peak (1) and trough (2) capture: a new extreme is evaluated a second time, and the second
// result is what is kept (it can differ from the one that was compared).
void capture(ItemClass &item, int n, ChannelValues &values, ChannelEvaluation &eval)
{
    const std::optional<float> reading = eval.single(item.DataTagExpression);
    if (reading) {
        const bool extreme = item.Functionality == ChannelFunction::PeakCapture
            ? *reading >= values.working(n)
            : *reading <= values.working(n);
        if (extreme) {
            if (const std::optional<float> again = eval.single(item.DataTagExpression))
                values.working(n) = *again;
        }
    }
    values.output(n) = values.working(n);
    item.TareValue = 0;
}

void evaluateChannel(ItemClass &item, int n, ChannelValues &values, ScriptEngine &engine)
{
    ScriptClass &tables = engine.sclass();
    ChannelEvaluation eval(engine, values.scripts(n));
    tables.SetTimeout(item.Timeout);
    const bool timedOut = eval.truth(item.DataTagTimeoutScript);
    bool inError = timedOut;
    if (const std::optional<Variant> errors = eval.value(item.DataTagErrorScript)) {
        try {
            inError = CBool(ops::logicalOr(*errors, Variant::boolean(timedOut)));
        } catch (const VbError &) {
        }
    }
    if (inError) {
        values.error(n) = -1;
        tables.setCE(n, -1);
        if (item.Default)
            values.output(n) = *item.Default;
    } else {
        switch (item.Functionality) {
        case ChannelFunction::PeakCapture:
        case ChannelFunction::TroughCapture:
            capture(item, n, values, eval);
            break;
        case ChannelFunction::FilterLight:
        case ChannelFunction::FilterMedium:
        case ChannelFunction::FilterHeavy: {
            const std::optional<float> reading = eval.single(item.DataTagExpression);
            if (reading)
                values.working(n) = *reading;
            const float tared = values.working(n) - item.TareValue;
            // After an error the output held the Default (or a stale value); blending from it
            // would show a made-up value for many cycles, so the filter starts afresh.
            if (values.error(n) != 0) {
                if (reading)
                    values.output(n) = tared;
            } else {
                values.output(n) += (tared - values.output(n)) / filterDivisor(item.Functionality);
            }
            break;
        }
        default:
            if (const std::optional<float> reading = eval.single(item.DataTagExpression))
                values.working(n) = *reading;
            values.output(n) = values.working(n) - item.TareValue;
            break;
        }
        tables.setC(n, values.output(n));
        const std::int16_t flag = eval.failed() ? -1 : 0;
        values.error(n) = flag;
        tables.setCE(n, flag);
    }
    // Link quality and battery: their own failures only leave the previous states.
    ChannelEvaluation indicators(engine, values.scripts(n));
    if (const std::optional<std::int16_t> lqi = indicators.as<std::int16_t>(
            item.DataTagLQIScript, [](const Variant &v) { return CInt(v); }))
        tables.setCL(n, *lqi);
    if (const std::optional<bool> low
        = indicators.as<bool>(item.DataTagBattScript, [](const Variant &v) { return CBool(v); }))
        tables.setCB(n, *low ? -1 : 0);
}

// One clock reading for all of a channel's timeout checks, released however the channel ends.
class OneInstant
{
public:
    explicit OneInstant(ScriptClass &tables)
        : m_tables(tables)
    {
        m_tables.beginCycle();
    }
    ~OneInstant() { m_tables.endCycle(); }
    OneInstant(const OneInstant &) = delete;
    OneInstant &operator=(const OneInstant &) = delete;

private:
    ScriptClass &m_tables;
};

} // namespace

void prepareChannels(WorkspaceClass &workspace, ChannelValues &values)
{
    for (int n = 1; n <= static_cast<int>(workspace.Items.size()); ++n) {
        ItemClass &item = workspace.item(n);
        const RewrittenExpression r = rewriteExpression(item.DataTagList);
        item.DataTagExpression = r.expression;
        item.DataTagErrorScript = r.errorScript;
        item.DataTagLQIScript = r.lqiScript;
        item.DataTagBattScript = r.battScript;
        item.DataTagTimeoutScript = r.timeoutScript;
        if (n < ChannelValues::kEntries && item.Functionality == ChannelFunction::PeakCapture)
            values.working(n) = ChannelValues::kPeakSeed;
        else if (n < ChannelValues::kEntries
            && item.Functionality == ChannelFunction::TroughCapture)
            values.working(n) = ChannelValues::kTroughSeed;
    }
}

void ReadValues(
    WorkspaceClass &workspace, ChannelValues &values, ScriptEngine &engine, ReadValuesHost &host)
{
    const std::size_t items = workspace.Items.size();
    for (int n = 1; n <= static_cast<int>(workspace.Items.size()); ++n) {
        if (!host.suppressReadingLabel()) {
            host.setReadingLabel("Reading from: " + host.panelTitle(n));
            host.processEvents();
            if (workspace.Items.size() != items)
                return; // a workspace was opened or edited meanwhile
        }
        const OneInstant instant(engine.sclass());
        evaluateChannel(workspace.item(n), n, values, engine);
    }
}

} // namespace corvalog
