#include "FormatNumber.h"

#include "Convert.h"
#include "NumberLocale.h"
#include "NumberText.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace corvalog::formatting {

namespace {

void decimalFromInteger(std::int64_t v, Decimal &d)
{
    d.negative = v < 0;
    const std::uint64_t u
        = d.negative ? 0 - static_cast<std::uint64_t>(v) : static_cast<std::uint64_t>(v);
    if (u == 0)
        return;
    const auto res = std::to_chars(d.digits, d.digits + sizeof d.digits, u);
    d.n = static_cast<int>(res.ptr - d.digits);
    d.point = d.n;
    d.trim();
}

// The digits the script's text of the value shows: 15 significant for a Double, 7 for a Single,
// rounded as number text rounds them (exact ties away from zero).
void decimalFromFloat(double v, int significant, Decimal &d)
{
    if (v == 0)
        return;
    d.negative = v < 0;
    const DecimalDigits rounded = roundedDigits(v, significant);
    for (char c : rounded.digits) {
        if (d.n < static_cast<int>(sizeof d.digits))
            d.digits[d.n++] = c;
    }
    d.point = rounded.exponent + 1;
    d.trim();
}

// The value's digits for a number pattern; false when it is not a finite number.

void appendWholeDigits(std::string &out, const Decimal &d, int from, int to, int wholeLength,
    int intLength, bool grouping, const std::string &thousands)
{
    // Digits [from, to) of a whole part `wholeLength` long, of which the last `intLength` are
    // the number's own and the rest leading zeros.
    const int pad = wholeLength - intLength;
    for (int k = from; k < to; ++k) {
        out += k < pad ? '0' : d.at(k - pad);
        const int fromRight = wholeLength - 1 - k;
        if (grouping && fromRight > 0 && fromRight % 3 == 0)
            out += thousands;
    }
}

} // namespace

bool decimalOf(const Variant &value, Decimal &d)
{
    switch (value.type()) {
    case VarType::Empty:
    case VarType::Null:
        return true;
    case VarType::Boolean:
        decimalFromInteger(value.rawBoolean() ? -1 : 0, d);
        return true;
    case VarType::Byte:
        decimalFromInteger(value.rawByte(), d);
        return true;
    case VarType::Integer:
        decimalFromInteger(value.rawInteger(), d);
        return true;
    case VarType::Long:
        decimalFromInteger(value.rawLong(), d);
        return true;
    case VarType::Single:
        if (!std::isfinite(value.rawSingle()))
            return false;
        decimalFromFloat(value.rawSingle(), 7, d);
        return true;
    case VarType::Double:
    case VarType::Date:
        if (!std::isfinite(value.rawDouble()))
            return false;
        decimalFromFloat(value.rawDouble(), 15, d);
        return true;
    case VarType::String: {
        double v = 0;
        if (!tryParseNumericText(value.rawString(), numberLocale(), v) || !std::isfinite(v))
            return false;
        decimalFromFloat(v, 15, d);
        return true;
    }
    }
    return false;
}

std::string formatNumber(const CompiledFormat &fmt, Decimal d, bool isNull)
{
    const bool zero = d.n == 0;
    const Section *sec = &fmt.sections[0];
    bool writeSign = d.negative;
    if (isNull) {
        sec = &fmt.sections[3];
    } else if (d.negative && fmt.sections[1].present) {
        sec = &fmt.sections[1];
        writeSign = false;
    } else if (zero && fmt.sections[2].present) {
        sec = &fmt.sections[2];
    }

    if (d.n > 0) {
        if (sec->percent)
            d.point += 2;
        d.point -= 3 * sec->scale;
    }
    int exponent = 0;
    if (sec->exponent && d.n > 0) {
        exponent = d.point - sec->intPlaceholders;
        d.point = sec->intPlaceholders;
        d.round(sec->fracPlaceholders);
        if (d.n > 0) {
            exponent += d.point - sec->intPlaceholders;
            d.point = sec->intPlaceholders;
        } else {
            exponent = 0;
        }
    } else {
        d.round(sec->fracPlaceholders);
    }

    const NumberLocale &locale = numberLocale();
    const int intLength = d.n > 0 ? std::max(d.point, 0) : 0;
    const int wholeLength = std::max(intLength, sec->minInt);
    const int fracShown
        = std::max(std::clamp(d.n - d.point, 0, sec->fracPlaceholders), sec->minFrac);
    const int excess = wholeLength - sec->intPlaceholders; // digits the first placeholder takes

    std::string out;
    out.reserve(static_cast<std::size_t>(wholeLength + fracShown) + 8);
    for (const Token &t : sec->tokens) {
        if (t.op == Op::Literal) {
            out.append(fmt.pool, t.a, t.b);
            continue;
        }
        if (writeSign && t.op != Op::Exponent) {
            out += '-';
            writeSign = false;
        }
        switch (t.op) {
        case Op::IntDigit: {
            const int p = static_cast<int>(t.a);
            const int from = p == 0 ? 0 : p + excess;
            const int to = p + excess + 1;
            appendWholeDigits(out, d, std::max(from, 0), std::max(to, 0), wholeLength, intLength,
                sec->grouping, locale.thousands);
            break;
        }
        case Op::Point:
            // With no whole-part placeholder the whole part still shows, rather than vanish.
            if (sec->intPlaceholders == 0)
                appendWholeDigits(out, d, 0, wholeLength, wholeLength, intLength, sec->grouping,
                    locale.thousands);
            out += locale.decimal;
            break;
        case Op::FracDigit:
            if (static_cast<int>(t.a) < fracShown)
                out += d.at(d.point + static_cast<int>(t.a));
            break;
        case Op::Exponent: {
            out += (t.b & 1) ? 'E' : 'e';
            if (exponent < 0)
                out += '-';
            else if (t.b & 2)
                out += '+';
            char buf[16];
            const auto res = std::to_chars(buf, buf + sizeof buf, std::abs(exponent));
            const auto digits = static_cast<std::uint32_t>(res.ptr - buf);
            if (digits < t.a)
                out.append(t.a - digits, '0');
            out.append(buf, res.ptr);
            break;
        }
        default:
            break;
        }
    }
    return out;
}

} // namespace corvalog::formatting
