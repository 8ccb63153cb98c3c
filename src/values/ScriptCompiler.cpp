#include "ScriptCompiler.h"

#include "ScriptBuiltins.h"
#include "ScriptClass.h"
#include "runtime/Ascii.h"
#include "runtime/Convert.h"
#include "runtime/Operators.h"
#include "runtime/VbError.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string>

namespace corvalog {

namespace {

enum class Tok {
    End,
    Number,
    String,
    Name,
    Plus,
    Minus,
    Star,
    Slash,
    Backslash,
    Caret,
    Ampersand,
    Equal,
    NotEqual,
    Less,
    Greater,
    LessEqual,
    GreaterEqual,
    LParen,
    RParen,
    Comma,
    Dot,
    // keywords
    And,
    Or,
    Not,
    Xor,
    Eqv,
    Imp,
    Mod,
    Is,
    True,
    False,
    Empty,
    Null,
};

struct Token {
    Tok kind = Tok::End;
    std::string_view text; // names and the raw text of strings
    Variant value; // numbers and strings
};

class CompileError
{
public:
    explicit CompileError(int n)
        : number(n)
    {
    }
    int number;
};

constexpr std::size_t kMaxIdentifier = 255;
constexpr int kMaxDepth = 200; // deeper nesting than any channel expression; keeps the stack safe

bool isNameStart(char c)
{
    return std::isalpha(static_cast<unsigned char>(c)) != 0;
}

bool isNameChar(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

// A whole number literal takes the smallest of Integer and Long that holds it, else Double.
Variant wholeLiteral(std::int64_t v)
{
    if (v >= -32768 && v <= 32767)
        return Variant::integer(static_cast<std::int16_t>(v));
    if (v >= INT32_MIN && v <= INT32_MAX)
        return Variant::longValue(static_cast<std::int32_t>(v));
    return Variant::dbl(static_cast<double>(v));
}

class Lexer
{
public:
    explicit Lexer(std::string_view text)
        : m_text(text)
    {
    }

    Token next()
    {
        skipBlanks();
        Token t;
        if (m_pos >= m_text.size())
            return t;
        const char c = m_text[m_pos];
        if (std::isdigit(static_cast<unsigned char>(c))
            || (c == '.' && m_pos + 1 < m_text.size()
                && std::isdigit(static_cast<unsigned char>(m_text[m_pos + 1]))))
            return number();
        if (c == '&' && m_pos + 2 < m_text.size()
            && radixDigit(m_text[m_pos + 1], m_text[m_pos + 2]))
            return radixNumber();
        if (c == '"')
            return string();
        if (isNameStart(c) || c == '[')
            return name();
        ++m_pos;
        switch (c) {
        case '+':
            t.kind = Tok::Plus;
            return t;
        case '-':
            t.kind = Tok::Minus;
            return t;
        case '*':
            t.kind = Tok::Star;
            return t;
        case '/':
            t.kind = Tok::Slash;
            return t;
        case '\\':
            t.kind = Tok::Backslash;
            return t;
        case '^':
            t.kind = Tok::Caret;
            return t;
        case '&':
            t.kind = Tok::Ampersand;
            return t;
        case '(':
            t.kind = Tok::LParen;
            return t;
        case ')':
            t.kind = Tok::RParen;
            return t;
        case ',':
            t.kind = Tok::Comma;
            return t;
        case '.':
            t.kind = Tok::Dot;
            return t;
        case '=':
            t.kind = Tok::Equal;
            if (accept('<'))
                t.kind = Tok::LessEqual;
            else if (accept('>'))
                t.kind = Tok::GreaterEqual;
            return t;
        case '<':
            t.kind = accept('>') ? Tok::NotEqual : accept('=') ? Tok::LessEqual : Tok::Less;
            return t;
        case '>':
            t.kind = accept('<') ? Tok::NotEqual : accept('=') ? Tok::GreaterEqual : Tok::Greater;
            return t;
        case '\r':
        case '\n':
            if (m_text.find_first_not_of(" \t\r\n", m_pos) == std::string_view::npos) {
                m_pos = m_text.size(); // trailing line ends are harmless
                t.kind = Tok::End;
                return t;
            }
            throw CompileError(vberr::ExpectedEndOfStatement);
        case ':':
            // A second statement: the text is not a single expression.
            throw CompileError(vberr::ExpectedEndOfStatement);
        default:
            throw CompileError(vberr::InvalidCharacter);
        }
    }

private:
    void skipBlanks()
    {
        while (m_pos < m_text.size()) {
            const char c = m_text[m_pos];
            if (c == ' ' || c == '\t') {
                ++m_pos;
            } else if (c == '\'') {
                m_pos = m_text.size(); // a comment runs to the end
            } else if (c == '_' && onlyBlanksToLineEnd(m_pos + 1)) {
                skipLineContinuation();
            } else {
                break;
            }
        }
    }

    bool onlyBlanksToLineEnd(std::size_t p) const
    {
        while (p < m_text.size() && (m_text[p] == ' ' || m_text[p] == '\t'))
            ++p;
        return p < m_text.size() && (m_text[p] == '\r' || m_text[p] == '\n');
    }

    void skipLineContinuation()
    {
        ++m_pos;
        while (m_text[m_pos] != '\r' && m_text[m_pos] != '\n')
            ++m_pos;
        if (m_text[m_pos] == '\r' && m_pos + 1 < m_text.size() && m_text[m_pos + 1] == '\n')
            ++m_pos;
        ++m_pos;
    }

    bool accept(char c)
    {
        if (m_pos < m_text.size() && m_text[m_pos] == c) {
            ++m_pos;
            return true;
        }
        return false;
    }

    static bool radixDigit(char kind, char first)
    {
        const int k = std::toupper(static_cast<unsigned char>(kind));
        return (k == 'H' && hexDigitValue(first) < 16) || (k == 'O' && hexDigitValue(first) < 8);
    }

    Token number()
    {
        const std::size_t start = m_pos;
        bool real = false;
        while (m_pos < m_text.size() && std::isdigit(static_cast<unsigned char>(m_text[m_pos])))
            ++m_pos;
        if (m_pos < m_text.size() && m_text[m_pos] == '.') {
            real = true;
            ++m_pos;
            while (m_pos < m_text.size() && std::isdigit(static_cast<unsigned char>(m_text[m_pos])))
                ++m_pos;
        }
        if (m_pos < m_text.size() && (m_text[m_pos] == 'e' || m_text[m_pos] == 'E')) {
            std::size_t p = m_pos + 1;
            if (p < m_text.size() && (m_text[p] == '+' || m_text[p] == '-'))
                ++p;
            if (p < m_text.size() && std::isdigit(static_cast<unsigned char>(m_text[p]))) {
                real = true;
                while (p < m_text.size() && std::isdigit(static_cast<unsigned char>(m_text[p])))
                    ++p;
                m_pos = p;
            }
        }
        if (m_pos < m_text.size() && isNameStart(m_text[m_pos]) && !startsKeyword(m_pos))
            throw CompileError(vberr::ExpectedEndOfStatement);
        const std::string_view digits = m_text.substr(start, m_pos - start);
        Token t;
        t.kind = Tok::Number;
        if (!real) {
            std::int64_t v = 0;
            auto res = std::from_chars(digits.data(), digits.data() + digits.size(), v);
            if (res.ec == std::errc())
                t.value = wholeLiteral(v);
            else
                real = true; // too long for a whole number: a Double
        }
        if (real) {
            const std::string s(digits[0] == '.' ? "0" + std::string(digits) : std::string(digits));
            try {
                t.value = Variant::dbl(plainDecimalToDouble(s));
            } catch (const VbError &) {
                throw CompileError(vberr::InvalidNumber); // beyond the Double range
            }
        }
        return t;
    }

    // "1or 2" and "&h01or&h02" are fine: a keyword may follow a number directly.
    bool startsKeyword(std::size_t p) const
    {
        std::size_t e = p;
        while (e < m_text.size() && isNameChar(m_text[e]))
            ++e;
        const std::string_view word = m_text.substr(p, e - p);
        for (const char *k : { "and", "or", "xor", "eqv", "imp", "mod", "is" }) {
            if (equalsIgnoringCase(word, k))
                return true;
        }
        return false;
    }

    Token radixNumber()
    {
        const int radix
            = std::toupper(static_cast<unsigned char>(m_text[m_pos + 1])) == 'H' ? 16 : 8;
        m_pos += 2;
        std::uint64_t v = 0;
        while (m_pos < m_text.size() && hexDigitValue(m_text[m_pos]) < radix) {
            v = v * radix + hexDigitValue(m_text[m_pos++]);
            if (v > 0xFFFFFFFFull)
                throw CompileError(vberr::InvalidNumber);
        }
        const bool longSuffix = accept('&');
        std::int64_t value;
        if (v <= 0xFFFF && !longSuffix)
            value = static_cast<std::int16_t>(static_cast<std::uint16_t>(v)); // &HFFFF is -1
        else
            value = static_cast<std::int32_t>(static_cast<std::uint32_t>(v));
        Token t;
        t.kind = Tok::Number;
        t.value = wholeLiteral(value);
        return t;
    }

    Token string()
    {
        std::string s;
        ++m_pos;
        for (;;) {
            if (m_pos >= m_text.size() || m_text[m_pos] == '\n' || m_text[m_pos] == '\r')
                throw CompileError(vberr::UnterminatedString);
            const char c = m_text[m_pos++];
            if (c == '"') {
                if (m_pos < m_text.size() && m_text[m_pos] == '"') {
                    s += '"';
                    ++m_pos;
                    continue;
                }
                break;
            }
            s += c;
        }
        Token t;
        t.kind = Tok::String;
        t.value = Variant::string(std::move(s));
        return t;
    }

    Token name()
    {
        Token t;
        t.kind = Tok::Name;
        if (m_text[m_pos] == '[') {
            const std::size_t close = m_text.find(']', m_pos);
            if (close == std::string_view::npos)
                throw CompileError(vberr::ExpectedIdentifier);
            t.text = m_text.substr(m_pos + 1, close - m_pos - 1);
            m_pos = close + 1;
        } else {
            const std::size_t start = m_pos;
            while (m_pos < m_text.size() && isNameChar(m_text[m_pos]))
                ++m_pos;
            t.text = m_text.substr(start, m_pos - start);
            t.kind = keyword(t.text);
        }
        if (t.text.size() > kMaxIdentifier)
            throw CompileError(vberr::IdentifierTooLong);
        return t;
    }

    static Tok keyword(std::string_view w)
    {
        static const struct {
            const char *word;
            Tok kind;
        } kKeywords[] = {
            { "and", Tok::And },
            { "or", Tok::Or },
            { "not", Tok::Not },
            { "xor", Tok::Xor },
            { "eqv", Tok::Eqv },
            { "imp", Tok::Imp },
            { "mod", Tok::Mod },
            { "is", Tok::Is },
            { "true", Tok::True },
            { "false", Tok::False },
            { "empty", Tok::Empty },
            { "null", Tok::Null },
        };
        for (const auto &k : kKeywords) {
            if (equalsIgnoringCase(w, k.word))
                return k.kind;
        }
        return Tok::Name;
    }

    std::string_view m_text;
    std::size_t m_pos = 0;
};

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
        Operand left = eqv();
        while (m_tok.kind == Tok::Imp) {
            advance();
            eqv();
            binary(OpCode::Imp);
            left = {};
        }
        return left;
    }

    Operand eqv()
    {
        Operand left = xorLevel();
        while (m_tok.kind == Tok::Eqv) {
            advance();
            xorLevel();
            binary(OpCode::Eqv);
            left = {};
        }
        return left;
    }

    Operand xorLevel()
    {
        Operand left = orLevel();
        while (m_tok.kind == Tok::Xor) {
            advance();
            orLevel();
            binary(OpCode::Xor);
            left = {};
        }
        return left;
    }

    Operand orLevel()
    {
        Operand left = andLevel();
        while (m_tok.kind == Tok::Or) {
            advance();
            andLevel();
            binary(OpCode::Or);
            left = {};
        }
        return left;
    }

    Operand andLevel()
    {
        Operand left = notLevel();
        while (m_tok.kind == Tok::And) {
            advance();
            notLevel();
            binary(OpCode::And);
            left = {};
        }
        return left;
    }

    Operand notLevel()
    {
        Nesting guard(m_depth);
        if (m_tok.kind == Tok::Not) {
            advance();
            notLevel();
            emit(OpCode::Not);
            return {};
        }
        return comparison();
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

    Operand comparison()
    {
        Operand left = concat();
        ops::Comparison how;
        while (comparisonOf(m_tok.kind, how) || m_tok.kind == Tok::Is) {
            if (m_tok.kind == Tok::Is)
                throw CompileError(vberr::SyntaxError); // objects are not part of expressions here
            advance();
            const Operand right = concat();
            emit(OpCode::Compare, static_cast<std::uint32_t>(how),
                left.literal || right.literal ? 1 : 0, -1);
            left = {};
        }
        return left;
    }

    Operand concat()
    {
        Operand left = additive();
        while (m_tok.kind == Tok::Ampersand) {
            advance();
            additive();
            binary(OpCode::Concat);
            left = {};
        }
        return left;
    }

    Operand additive()
    {
        Operand left = modulo();
        while (m_tok.kind == Tok::Plus || m_tok.kind == Tok::Minus) {
            const OpCode op = m_tok.kind == Tok::Plus ? OpCode::Add : OpCode::Subtract;
            advance();
            modulo();
            binary(op);
            left = {};
        }
        return left;
    }

    Operand modulo()
    {
        Operand left = integerDivision();
        while (m_tok.kind == Tok::Mod) {
            advance();
            integerDivision();
            binary(OpCode::Modulo);
            left = {};
        }
        return left;
    }

    Operand integerDivision()
    {
        Operand left = multiplicative();
        while (m_tok.kind == Tok::Backslash) {
            advance();
            multiplicative();
            binary(OpCode::IntDivide);
            left = {};
        }
        return left;
    }

    Operand multiplicative()
    {
        Operand left = power();
        while (m_tok.kind == Tok::Star || m_tok.kind == Tok::Slash) {
            const OpCode op = m_tok.kind == Tok::Star ? OpCode::Multiply : OpCode::Divide;
            advance();
            power();
            binary(op);
            left = {};
        }
        return left;
    }

    Operand power()
    {
        Operand left = sign();
        while (m_tok.kind == Tok::Caret) {
            advance();
            sign();
            binary(OpCode::Power);
            left = {};
        }
        return left;
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
            return notLevel();
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
