#include "Commands.h"
#include "runtime/Clock.h"
#include "runtime/Convert.h"
#include "runtime/Format.h"
#include "runtime/NumberLocale.h"
#include "runtime/VbError.h"
#include "values/ScriptClass.h"
#include "values/ScriptEngine.h"
#include "values/TagReplace.h"

#include <memory>

namespace corvalog::cli {

namespace {

// "Integer 3", "Single 12.5", "String abc", "Empty", "Null".
std::string valueLine(const Variant &v)
{
    if (v.isEmpty() || v.isNull())
        return typeName(v.type());
    return std::string(typeName(v.type())) + " " + CStr(v);
}

float parseValue(const std::string &text, const std::string &option)
{
    try {
        return parseSingleText(text, numberLocale());
    } catch (const VbError &) {
        throw UsageError(option + " value '" + text + "' is not a number");
    }
}

// "FF12=12.5" -> tag and value.
std::pair<std::string, std::string> splitAssignment(
    const std::string &word, const std::string &option)
{
    const auto eq = word.find('=');
    if (eq == std::string::npos)
        throw UsageError(option + " expects NAME=VALUE, not '" + word + "'");
    return { word.substr(0, eq), word.substr(eq + 1) };
}

// Fresh tables holding the values given with --tag and --chan, and an engine over them.
struct Session {
    SystemClock clock;
    std::unique_ptr<ScriptClass> sclass = std::make_unique<ScriptClass>(clock);
    ScriptEngine engine { *sclass };

    explicit Session(CliArgs &args)
    {
        for (const std::string &w : args.takeAll("--tag")) {
            const auto [tag, value] = splitAssignment(w, "--tag");
            sclass->setT(parseDataTag(tag), parseValue(value, "--tag"));
        }
        for (const std::string &w : args.takeAll("--chan")) {
            const auto [channel, value] = splitAssignment(w, "--chan");
            sclass->setC(static_cast<std::int32_t>(parseWhole(channel, 0, 24, "a channel")),
                parseValue(value, "--chan"));
        }
    }

    // The expression rewritten as the workspace editor does, then evaluated.
    EvalResult evaluate(const std::string &expression)
    {
        return engine.Eval(rewriteReferences(expression));
    }
};

int reportError(const EvalResult &r, std::ostream &out)
{
    out << "error " << r.error << ": " << r.description << "\n";
    return 1;
}

} // namespace

int runEval(CliArgs &args, std::ostream &out)
{
    Session session(args);
    const std::string expression = args.positional(1)[0];
    const EvalResult r = session.evaluate(expression);
    if (!r.ok())
        return reportError(r, out);
    try {
        out << valueLine(r.value) << "\n";
    } catch (const VbError &e) {
        return reportError({ {}, e.number(), e.description() }, out);
    }
    return 0;
}

int runRewrite(CliArgs &args, std::ostream &out)
{
    const std::string source = args.positional(1)[0];
    const RewrittenExpression r = rewriteExpression(source);
    out << "expression=" << r.expression << "\n"
        << "error=" << r.errorScript << "\n"
        << "lqi=" << r.lqiScript << "\n"
        << "batt=" << r.battScript << "\n"
        << "timeout=" << r.timeoutScript << "\n";
    return 0;
}

int runFormat(CliArgs &args, std::ostream &out)
{
    Session session(args);
    const std::vector<std::string> words = args.positional(2);
    const EvalResult r = session.evaluate(words[0]);
    if (!r.ok())
        return reportError(r, out);
    try {
        out << Format(r.value, words[1]) << "\n";
    } catch (const VbError &e) {
        return reportError({ {}, e.number(), e.description() }, out);
    }
    return 0;
}

} // namespace corvalog::cli
