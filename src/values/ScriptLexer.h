#pragma once

// The tokens of an expression text, for the compiler.

#include "runtime/Variant.h"

#include <cstddef>
#include <string_view>

namespace corvalog::script {

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

// A compile error: the script's error number; the text goes no further.
class CompileError
{
public:
    explicit CompileError(int n)
        : number(n)
    {
    }
    int number;
};

// Reads an expression text token by token: numbers (decimal, "&H" and "&O", with VBScript's
// typing of literals), strings, names (also "[bracketed]"), keywords in any case, operators.
// Blanks and "_" line continuations are passed over. Raises CompileError for what no token
// starts with, an unterminated string, or a number too big.
class Lexer
{
public:
    explicit Lexer(std::string_view text);

    Token next();

private:
    void skipBlanks();

    bool onlyBlanksToLineEnd(std::size_t p) const;

    void skipLineContinuation();

    bool accept(char c);

    static bool radixDigit(char kind, char first);

    Token number();

    // "1or 2" and "&h01or&h02" are fine: a keyword may follow a number directly.
    bool startsKeyword(std::size_t p) const;

    Token radixNumber();

    Token string();

    Token name();

    static Tok keyword(std::string_view w);

    std::string_view m_text;
    std::size_t m_pos = 0;
};

} // namespace corvalog::script
