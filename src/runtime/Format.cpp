#include "Format.h"

#include "Ascii.h"
#include "Convert.h"
#include "FormatDate.h"
#include "FormatNumber.h"
#include "FormatPattern.h"

#include <cmath>

namespace corvalog {

using namespace formatting;

namespace {

std::size_t utf8Length(char lead)
{
    const auto c = static_cast<unsigned char>(lead);
    return c < 0xC0 ? 1 : c < 0xE0 ? 2 : c < 0xF0 ? 3 : 4;
}

std::string formatText(const CompiledFormat &fmt, const std::string &text)
{
    const Section &sec
        = text.empty() && fmt.sections[1].present ? fmt.sections[1] : fmt.sections[0];
    const bool toUpper = sec.upper && !sec.lower;
    const bool toLower = sec.lower;
    std::size_t chars = 0;
    for (std::size_t i = 0; i < text.size(); i += utf8Length(text[i]))
        ++chars;
    // Text fills the placeholders from the right: spare "@" placeholders print spaces first,
    // or last with "!"; characters left over follow everything.
    long blanksFirst
        = sec.leftAlign ? 0 : static_cast<long>(sec.textPlaceholders) - static_cast<long>(chars);
    std::size_t src = 0;
    std::string out;
    auto copyChar = [&] {
        const std::size_t len = std::min(utf8Length(text[src]), text.size() - src);
        for (std::size_t k = 0; k < len; ++k) {
            const char c = text[src + k];
            out += toUpper ? asciiUpper(c) : toLower ? asciiLower(c) : c;
        }
        src += len;
    };
    for (const Token &t : sec.tokens) {
        if (t.op == Op::Literal) {
            out.append(fmt.pool, t.a, t.b);
            continue;
        }
        std::uint32_t count = t.a;
        const bool spaces = t.op == Op::CharOrSpace;
        for (; spaces && count > 0 && blanksFirst > 0; --count, --blanksFirst)
            out += ' ';
        for (; count > 0 && src < text.size(); --count)
            copyChar();
        if (spaces)
            out.append(count, ' ');
    }
    while (src < text.size())
        copyChar();
    return out;
}

std::string textOf(const Variant &value)
{
    return value.isEmpty() ? std::string() : CStr(value);
}

} // namespace

std::string Format(const Variant &value, std::string_view pattern)
{
    if (pattern.empty())
        return value.isNull() ? std::string() : CStr(value);

    std::unique_ptr<CompiledFormat> owner;
    const CompiledFormat &fmt = compiledFormat(pattern, owner);

    if (value.isNull()) {
        const bool numberLike = fmt.kind == Kind::Number || fmt.kind == Kind::Literal;
        return numberLike && fmt.sections[3].present ? formatNumber(fmt, Decimal {}, true)
                                                     : std::string();
    }

    Kind kind = fmt.kind;
    if (kind == Kind::Literal) {
        kind = value.type() == VarType::Date ? Kind::Date
            : value.isString()               ? Kind::Text
                                             : Kind::Number;
    }

    switch (kind) {
    case Kind::General:
        return textOf(value);
    case Kind::Boolean: {
        Decimal d;
        if (!decimalOf(value, d) && value.isString())
            return value.rawString();
        static constexpr const char *words[3][2]
            = { { "False", "True" }, { "No", "Yes" }, { "Off", "On" } };
        return words[fmt.words][d.n > 0 || !std::isfinite(value.numberValue()) ? 1 : 0];
    }
    case Kind::Number: {
        Decimal d;
        if (!decimalOf(value, d))
            return textOf(value);
        return formatNumber(fmt, d, false);
    }
    case Kind::Date: {
        double date = 0;
        if (!dateOf(value, date))
            return textOf(value);
        std::string out;
        appendDate(out, fmt, fmt.sections[0], date);
        return out;
    }
    case Kind::Text:
    default:
        return formatText(fmt, textOf(value));
    }
}

} // namespace corvalog
