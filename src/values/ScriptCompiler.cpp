#include "ScriptCompiler.h"

#include "ScriptBuiltins.h"
#include "ScriptClass.h"
#include "ScriptLexer.h"
#include "runtime/Ascii.h"
#include "runtime/Convert.h"
#include "runtime/Operators.h"
#include "runtime/VbError.h"

#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string>

namespace corvalog {

namespace {

using script::CompileError;
using script::Lexer;
using script::Tok;
using script::Token;

constexpr int kMaxDepth = 200; // deeper nesting than any channel expression; keeps the stack safe

// The binary operators and how tightly each binds, from Imp (loosest) to "^" (tightest), as the
// script orders them. Not sits between And and the comparisons; the signs bind tighter than "^"
// (-2^2 is 4).
constexpr int kNotPrecedence = 6;
constexpr int kComparisonPrecedence = 7;

struct BinaryOperator {
    int precedence = 0; // 0: not a binary operator
    OpCode op = OpCode::Add;
    bool comparison = false;
};

constexpr std::size_t kTokens = static_cast<std::size_t>(Tok::Null) + 1;
constexpr std::array<BinaryOperator, kTokens> binaryOperators()
{
    std::array<BinaryOperator, kTokens> table {};
    const auto set = [&table](Tok t, int precedence, OpCode op) {
        table[static_cast<std::size_t>(t)] = { precedence, op, false };
    };
    set(Tok::Imp, 1, OpCode::Imp);
    set(Tok::Eqv, 2, OpCode::Eqv);
    set(Tok::Xor, 3, OpCode::Xor);
    set(Tok::Or, 4, OpCode::Or);
    set(Tok::And, 5, OpCode::And);
    for (const Tok t : { Tok::Equal, Tok::NotEqual, Tok::Less, Tok::Greater, Tok::LessEqual,
             Tok::GreaterEqual, Tok::Is })
        table[static_cast<std::size_t>(t)] = { kComparisonPrecedence, OpCode::Compare, true };
    set(Tok::Ampersand, 8, OpCode::Concat);
    set(Tok::Plus, 9, OpCode::Add);
    set(Tok::Minus, 9, OpCode::Subtract);
    set(Tok::Mod, 10, OpCode::Modulo);
    set(Tok::Backslash, 11, OpCode::IntDivide);
    set(Tok::Star, 12, OpCode::Multiply);
    set(Tok::Slash, 12, OpCode::Divide);
    set(Tok::Caret, 13, OpCode::Power);
    return table;
}
constexpr std::array<BinaryOperator, kTokens> kBinaryOperators = binaryOperators();

const BinaryOperator &binaryOperatorOf(Tok t)
{
    return kBinaryOperators[static_cast<std::size_t>(t)];
}

// What the caller of a parse step needs to know about the operand it produced.
struct Operand {
    bool literal = false; // a number written as it stands
};

class Parser
{
public:
    explicit Parser(std::string_view text)
        : m_lexer(text)
    {
        advance();
    }

    ScriptProgram compile()
    {
        if (m_tok.kind != Tok::End) {
            expression();
            if (m_tok.kind != Tok::End)
                throw CompileError(vberr::ExpectedEndOfStatement);
        }
        return std::move(m_program);
    }

private:
    void advance() { m_tok = m_lexer.next(); }

    void emit(OpCode op, std::uint32_t a = 0, std::uint8_t b = 0, int stackEffect = 0)
    {
        m_program.code.push_back({ op, b, a });
        m_depthNow += stackEffect;
        if (m_depthNow > m_program.maxStack)
            m_program.maxStack = m_depthNow;
    }

    void pushConstant(Variant v)
    {
        m_program.constants.push_back(std::move(v));
        emit(
            OpCode::PushConstant, static_cast<std::uint32_t>(m_program.constants.size() - 1), 0, 1);
    }

    struct Nesting {
        explicit Nesting(int &depth)
            : m_depth(depth)
        {
            if (++m_depth > kMaxDepth)
                throw CompileError(vberr::OutOfStackSpace);
        }
        ~Nesting() { --m_depth; }
        int &m_depth;
    };

    void binary(OpCode op) { emit(op, 0, 0, -1); }

    Operand expression()
    {
        Nesting guard(m_depth);
        return binaryFrom(1);
    }

    // An operand followed by every binary operator that binds at least `minimum`, left to right;
    // each right-hand operand holds only operators that bind tighter.
    Operand binaryFrom(int minimum)
    {
        Operand left = operand();
        for (;;) {
            const BinaryOperator &b = binaryOperatorOf(m_tok.kind);
            if (b.precedence == 0 || b.precedence < minimum)
                return left;
            if (m_tok.kind == Tok::Is)
                throw CompileError(vberr::SyntaxError); // objects are not part of expressions here
            ops::Comparison how = ops::Comparison::Equal;
            comparisonOf(m_tok.kind, how);
            advance();
            const Operand right = binaryFrom(b.precedence + 1);
            if (b.comparison) {
                // A number literal on either side makes a comparison read text as a number.
                emit(OpCode::Compare, static_cast<std::uint32_t>(how),
                    left.literal || right.literal ? 1 : 0, -1);
            } else {
                binary(b.op);
            }
            left = {};
        }
    }

    // Not applies to a whole comparison ("Not a = b" is "Not (a = b)"); anything else starts
    // with its signs.
    Operand operand()
    {
        Nesting guard(m_depth);
        if (m_tok.kind == Tok::Not) {
            advance();
            binaryFrom(kNotPrecedence + 1);
            emit(OpCode::Not);
            return {};
        }
        return sign();
    }

    static bool comparisonOf(Tok t, ops::Comparison &how)
    {
        switch (t) {
        case Tok::Equal:
            how = ops::Comparison::Equal;
            return true;
        case Tok::NotEqual:
            how = ops::Comparison::NotEqual;
            return true;
        case Tok::Less:
            how = ops::Comparison::Less;
            return true;
        case Tok::Greater:
            how = ops::Comparison::Greater;
            return true;
        case Tok::LessEqual:
            how = ops::Comparison::LessEqual;
            return true;
        case Tok::GreaterEqual:
            how = ops::Comparison::GreaterEqual;
            return true;
        default:
            return false;
        }
    }

    // Unary minus binds tighter than "^": -2^2 is 4.
    Operand sign()
    {
        Nesting guard(m_depth);
        if (m_tok.kind == Tok::Minus) {
            advance();
            sign();
            emit(OpCode::Negate);
            return {};
        }
        if (m_tok.kind == Tok::Plus) {
            advance();
            sign();
            return {};
        }
        return primary();
    }

    Operand primary()
    {
        switch (m_tok.kind) {
        case Tok::Number:
            pushConstant(std::move(m_tok.value));
            advance();
            return { true };
        case Tok::String:
            pushConstant(std::move(m_tok.value));
            advance();
            return {};
        case Tok::True:
        case Tok::False:
            pushConstant(Variant::boolean(m_tok.kind == Tok::True));
            advance();
            return {};
        case Tok::Empty:
            pushConstant(Variant());
            advance();
            return {};
        case Tok::Null:
            pushConstant(Variant::null());
            advance();
            return {};
        case Tok::LParen: {
            advance();
            expression();
            if (m_tok.kind != Tok::RParen)
                throw CompileError(vberr::ExpectedCloseParen);
            advance();
            return {};
        }
        case Tok::Not: // "1 > Not 5 > 3": Not may open an operand
            return operand();
        case Tok::Name:
            call();
            return {};
        default:
            throw CompileError(vberr::ExpectedExpression);
        }
    }

    // Parses "(a, b, ...)" if present; returns the argument count.
    int arguments(bool emitCode)
    {
        if (m_tok.kind != Tok::LParen)
            return 0;
        advance();
        int count = 0;
        if (m_tok.kind == Tok::RParen) {
            advance();
            return 0;
        }
        const std::size_t codeBefore = m_program.code.size();
        const int depthBefore = m_depthNow;
        for (;;) {
            if (m_tok.kind == Tok::End)
                throw CompileError(vberr::ExpectedCloseParen);
            expression();
            ++count;
            if (m_tok.kind == Tok::Comma) {
                advance();
                continue;
            }
            if (m_tok.kind != Tok::RParen)
                throw CompileError(vberr::ExpectedCloseParen);
            advance();
            break;
        }
        if (count > 255)
            throw CompileError(vberr::OutOfStackSpace);
        if (!emitCode) {
            // Arguments of a call that raises are never evaluated: drop their code.
            m_program.code.resize(codeBefore);
            m_depthNow = depthBefore;
        }
        return count;
    }

    void call()
    {
        std::string_view name = m_tok.text;
        advance();
        bool viaObject = false;
        if (m_tok.kind == Tok::Dot) {
            advance();
            if (m_tok.kind != Tok::Name && !isKeywordName(m_tok.kind))
                throw CompileError(vberr::ExpectedIdentifier);
            if (!equalsIgnoringCase(name, "sclass")) {
                skipMemberChain();
                raise(vberr::VariableUndefined, name);
                return;
            }
            viaObject = true;
            name = m_tok.text;
            advance();
        }
        if (!viaObject && equalsIgnoringCase(name, "sclass")) {
            arguments(false);
            raise(vberr::TypeMismatch, name); // the object itself has no value
            return;
        }
        if (const ScriptMember *member = findMember(name)) {
            callWith(OpCode::CallMember, static_cast<std::uint32_t>(member->number),
                member->minArgs, member->maxArgs, name);
            return;
        }
        if (viaObject) {
            arguments(false);
            raise(vberr::NoSuchMember, name);
            return;
        }
        if (const BuiltinInfo *builtin = findBuiltin(name)) {
            callWith(OpCode::CallBuiltin, static_cast<std::uint32_t>(builtin->id), builtin->minArgs,
                builtin->maxArgs, name);
            return;
        }
        arguments(false);
        raise(vberr::VariableUndefined, name);
    }

    static bool isKeywordName(Tok t) { return t >= Tok::And; }

    void skipMemberChain()
    {
        advance();
        while (m_tok.kind == Tok::Dot) {
            advance();
            if (m_tok.kind != Tok::Name)
                throw CompileError(vberr::ExpectedIdentifier);
            advance();
        }
        arguments(false);
    }

    void callWith(OpCode op, std::uint32_t id, int minArgs, int maxArgs, std::string_view name)
    {
        const std::size_t codeBefore = m_program.code.size();
        const int depthBefore = m_depthNow;
        const int count = arguments(true);
        if (count < minArgs || (maxArgs >= 0 && count > maxArgs)) {
            m_program.code.resize(codeBefore);
            m_depthNow = depthBefore;
            raise(vberr::WrongArguments, name);
            return;
        }
        m_depthNow = depthBefore;
        emit(op, id, static_cast<std::uint8_t>(count), 1);
    }

    void raise(int number, std::string_view name)
    {
        // Names serve only the message; past 255 of them the last one stands in.
        if (m_program.names.size() < 256)
            m_program.names.emplace_back(name);
        emit(OpCode::Raise, static_cast<std::uint32_t>(number),
            static_cast<std::uint8_t>(m_program.names.size() - 1), 1);
    }

    static const ScriptMember *findMember(std::string_view name)
    {
        for (const ScriptMember &m : scriptMembers()) {
            if (m.form != MemberForm::PropertyWrite && equalsIgnoringCase(name, m.name))
                return &m;
        }
        return nullptr;
    }

    Lexer m_lexer;
    Token m_tok;
    ScriptProgram m_program;
    int m_depth = 0;
    int m_depthNow = 0;
};

} // namespace

ScriptProgram compileScript(std::string_view text)
{
    try {
        return Parser(text).compile();
    } catch (const CompileError &e) {
        ScriptProgram failed;
        failed.compileError = e.number;
        failed.compileDescription = std::string(vbErrorDescription(e.number));
        return failed;
    }
}

} // namespace corvalog
