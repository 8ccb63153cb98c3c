#include "ScriptEngine.h"

#include "ScriptBuiltins.h"
#include "ScriptClass.h"
#include "ScriptCompiler.h"
#include "runtime/Convert.h"
#include "runtime/Operators.h"
#include "runtime/VbError.h"

#include <new>

namespace corvalog {

namespace {

// Texts typed in the editor accumulate one entry per keystroke; past this many (or this much
// text) the cache starts again. The running channels' programs stay alive with their holders.
constexpr std::size_t kMaxCachedTexts = 20000;
constexpr std::size_t kMaxCachedBytes = 4 << 20;

// Member arguments arrive as the automation layer passes them: Null is no number at all.
std::int32_t memberIndex(const Variant &v)
{
    if (v.isNull())
        throw VbError(vberr::TypeMismatch);
    return CLng(v);
}

std::int16_t memberInteger(const Variant &v)
{
    if (v.isNull())
        throw VbError(vberr::TypeMismatch);
    return CInt(v);
}

std::string memberText(const Variant &v)
{
    if (v.isNull())
        throw VbError(vberr::TypeMismatch);
    return CStr(v);
}

Variant callMember(ScriptClass &sc, int number, const Variant *args, int count)
{
    switch (number) {
    case 1:
        return Variant::single(sc.PI());
    case 2:
        sc.SetTimeout(memberInteger(args[0]));
        return {};
    case 3:
        return Variant::boolean(sc.TT(memberIndex(args[0])));
    case 4:
        return Variant::single(sc.T(memberIndex(args[0])));
    case 6:
        return Variant::integer(sc.TB(memberIndex(args[0])));
    case 8:
        return Variant::integer(sc.TE(memberIndex(args[0])));
    case 10:
        return Variant::integer(sc.TL(memberIndex(args[0])));
    case 12:
        return Variant::single(sc.C(memberIndex(args[0])));
    case 14:
        return Variant::integer(sc.CB(memberIndex(args[0])));
    case 16:
        return Variant::integer(sc.CE(memberIndex(args[0])));
    case 18:
        return Variant::integer(sc.CT(memberIndex(args[0])));
    case 20:
        return Variant::integer(sc.CL(memberIndex(args[0])));
    case 22:
        return Variant::dbl(sc.Min(args, static_cast<std::size_t>(count)));
    case 23:
        return Variant::string(sc.Fmt(args[0], memberText(args[1])));
    case 24: {
        // The outputs are passed by reference; an expression has nowhere to receive them.
        std::string expression, error, lqi, batt, timeout;
        sc.TagReplace(memberText(args[0]), expression, error, lqi, batt, timeout);
        return {};
    }
    case 25:
        return Variant::string(sc.QuickTagReplace(memberText(args[0])));
    default:
        throw VbError(vberr::NoSuchMember);
    }
}

Variant binaryOp(OpCode op, const Variant &a, const Variant &b)
{
    switch (op) {
    case OpCode::Add:
        return ops::add(a, b);
    case OpCode::Subtract:
        return ops::subtract(a, b);
    case OpCode::Multiply:
        return ops::multiply(a, b);
    case OpCode::Divide:
        return ops::divide(a, b);
    case OpCode::IntDivide:
        return ops::integerDivide(a, b);
    case OpCode::Modulo:
        return ops::modulo(a, b);
    case OpCode::Power:
        return ops::power(a, b);
    case OpCode::Concat:
        return ops::concat(a, b);
    case OpCode::And:
        return ops::logicalAnd(a, b);
    case OpCode::Or:
        return ops::logicalOr(a, b);
    case OpCode::Xor:
        return ops::logicalXor(a, b);
    case OpCode::Eqv:
        return ops::logicalEqv(a, b);
    case OpCode::Imp:
        return ops::logicalImp(a, b);
    default:
        throw VbError(vberr::SyntaxError);
    }
}

} // namespace

ScriptEngine::ScriptEngine(ScriptClass &sclass)
    : m_sclass(sclass)
{
}

std::shared_ptr<const ScriptProgram> ScriptEngine::compile(std::string_view text)
{
    auto found = m_cache.find(text);
    if (found != m_cache.end())
        return found->second->program;
    if (m_cache.size() >= kMaxCachedTexts || m_cachedBytes + text.size() > kMaxCachedBytes) {
        m_cache.clear();
        m_cachedBytes = 0;
    }
    m_cachedBytes += text.size();
    auto entry = std::make_unique<CacheEntry>();
    entry->text.assign(text);
    entry->program = std::make_shared<const ScriptProgram>(compileScript(text));
    auto program = entry->program;
    const std::string_view key = entry->text;
    m_cache.emplace(key, std::move(entry));
    return program;
}

EvalResult ScriptEngine::Eval(std::string_view text)
{
    auto found = m_cache.find(text);
    if (found != m_cache.end())
        return run(*found->second->program);
    const auto program = compile(text);
    return run(*program);
}

EvalResult ScriptEngine::run(const ScriptProgram &program)
{
    EvalResult result;
    if (program.compileError != 0) {
        result.error = program.compileError;
        result.description = program.compileDescription;
        return result;
    }
    try {
        result.value = execute(program);
    } catch (const VbError &e) {
        result.error = e.number();
        result.description = e.description();
    } catch (const std::bad_alloc &) {
        result.error = vberr::OutOfMemory;
        result.description = std::string(vbErrorDescription(vberr::OutOfMemory));
    }
    return result;
}

Variant ScriptEngine::execute(const ScriptProgram &program)
{
    if (program.code.empty())
        return {};
    if (m_stack.size() < static_cast<std::size_t>(program.maxStack))
        m_stack.resize(static_cast<std::size_t>(program.maxStack));
    Variant *stack = m_stack.data();
    int top = 0; // number of values on the stack
    for (const Instruction &in : program.code) {
        switch (in.op) {
        case OpCode::PushConstant:
            stack[top++] = program.constants[in.a];
            break;
        case OpCode::Negate:
            stack[top - 1] = ops::negate(stack[top - 1]);
            break;
        case OpCode::Not:
            stack[top - 1] = ops::logicalNot(stack[top - 1]);
            break;
        case OpCode::Compare:
            stack[top - 2] = ops::compare(
                stack[top - 2], stack[top - 1], static_cast<ops::Comparison>(in.a), in.b != 0);
            --top;
            break;
        case OpCode::CallBuiltin:
            top -= in.b;
            stack[top] = callBuiltin(static_cast<Builtin>(in.a), stack + top, in.b);
            ++top;
            break;
        case OpCode::CallMember:
            top -= in.b;
            stack[top] = callMember(m_sclass, in.a, stack + top, in.b);
            ++top;
            break;
        case OpCode::Raise:
            throw VbError(
                in.a, std::string(vbErrorDescription(in.a)) + ": '" + program.names[in.b] + "'");
        default:
            stack[top - 2] = binaryOp(in.op, stack[top - 2], stack[top - 1]);
            --top;
            break;
        }
    }
    return std::move(stack[0]);
}

} // namespace corvalog
