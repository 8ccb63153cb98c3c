#include "ScriptLexer.h"

#include "runtime/Ascii.h"
#include "runtime/Convert.h"
#include "runtime/VbError.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string>

namespace corvalog::script {

namespace {

constexpr std::size_t kMaxIdentifier = 255;

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

} // namespace

Lexer::Lexer(std::string_view text)
    : m_text(text)
{
}

Token Lexer::next()
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
    if (c == '&' && m_pos + 2 < m_text.size() && radixDigit(m_text[m_pos + 1], m_text[m_pos + 2]))
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

void Lexer::skipBlanks()
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

bool Lexer::onlyBlanksToLineEnd(std::size_t p) const
{
    while (p < m_text.size() && (m_text[p] == ' ' || m_text[p] == '\t'))
        ++p;
    return p < m_text.size() && (m_text[p] == '\r' || m_text[p] == '\n');
}

void Lexer::skipLineContinuation()
{
    ++m_pos;
    while (m_text[m_pos] != '\r' && m_text[m_pos] != '\n')
        ++m_pos;
    if (m_text[m_pos] == '\r' && m_pos + 1 < m_text.size() && m_text[m_pos + 1] == '\n')
        ++m_pos;
    ++m_pos;
}

bool Lexer::accept(char c)
{
    if (m_pos < m_text.size() && m_text[m_pos] == c) {
        ++m_pos;
        return true;
    }
    return false;
}

bool Lexer::radixDigit(char kind, char first)
{
    const int k = std::toupper(static_cast<unsigned char>(kind));
    return (k == 'H' && hexDigitValue(first) < 16) || (k == 'O' && hexDigitValue(first) < 8);
}

Token Lexer::number()
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

bool Lexer::startsKeyword(std::size_t p) const
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

Token Lexer::radixNumber()
{
    const int radix = std::toupper(static_cast<unsigned char>(m_text[m_pos + 1])) == 'H' ? 16 : 8;
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

Token Lexer::string()
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

Token Lexer::name()
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

Tok Lexer::keyword(std::string_view w)
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

} // namespace corvalog::script
