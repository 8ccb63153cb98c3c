#include "Operators.h"

#include "Convert.h"
#include "VbError.h"

#include <cmath>
#include <cstdint>
#include <string>

namespace corvalog::ops {

namespace {

// Sizes of the number types in arithmetic, smallest first. Empty takes the other side's size.
enum Rank { RankNone = 0, RankByte, RankInteger, RankLong, RankSingle, RankDouble };

struct Operand {
    Rank rank = RankNone;
    double value = 0;
    bool isDate = false;
};

Operand arithmeticOperand(const Variant &v)
{
    switch (v.type()) {
    case VarType::Empty:
        return {};
    case VarType::Boolean:
        return { RankInteger, v.numberValue() };
    case VarType::Byte:
        return { RankByte, v.numberValue() };
    case VarType::Integer:
        return { RankInteger, v.numberValue() };
    case VarType::Long:
        return { RankLong, v.numberValue() };
    case VarType::Single:
        return { RankSingle, v.numberValue() };
    case VarType::Double:
        return { RankDouble, v.numberValue() };
    case VarType::Date:
        return { RankDouble, v.numberValue(), true };
    case VarType::String:
        return { RankDouble, parseNumericText(v.rawString()) };
    case VarType::Null:
        break;
    }
    throw VbError(vberr::TypeMismatch);
}

Rank resultRank(Rank a, Rank b)
{
    if ((a == RankLong && b == RankSingle) || (a == RankSingle && b == RankLong))
        return RankDouble; // a Long does not fit a Single's 24-bit mantissa
    const Rank r = a > b ? a : b;
    return r == RankNone ? RankInteger : r;
}

// A whole-number result in the smallest type of at least `rank` that holds it: an Integer sum
// that overflows becomes a Long, a Long one a Double.
Variant wholeResult(std::int64_t v, Rank rank)
{
    if (rank <= RankByte && v >= 0 && v <= 255)
        return Variant::byte(static_cast<std::uint8_t>(v));
    if (rank <= RankInteger && v >= -32768 && v <= 32767)
        return Variant::integer(static_cast<std::int16_t>(v));
    if (rank <= RankLong && v >= INT32_MIN && v <= INT32_MAX)
        return Variant::longValue(static_cast<std::int32_t>(v));
    return Variant::dbl(static_cast<double>(v));
}

Variant floatResult(double r, Rank rank, bool inputsFinite)
{
    if (rank == RankSingle) {
        const float f = static_cast<float>(r);
        if (!std::isinf(f) || !std::isfinite(r))
            return Variant::single(f);
    }
    if (std::isinf(r) && inputsFinite)
        throw VbError(vberr::Overflow);
    return Variant::dbl(r);
}

enum class Arith { Add, Subtract, Multiply };

Variant arithmetic(const Variant &a, const Variant &b, Arith op)
{
    if (a.isNull() || b.isNull())
        return Variant::null();
    if (op == Arith::Add && (a.isString() || a.isEmpty()) && (b.isString() || b.isEmpty())
        && (a.isString() || b.isString()))
        return Variant::string(a.rawString() + b.rawString());
    const Operand x = arithmeticOperand(a);
    const Operand y = arithmeticOperand(b);
    const Rank rank = resultRank(x.rank, y.rank);
    if (rank <= RankLong) {
        const auto l = static_cast<std::int64_t>(x.value);
        const auto r = static_cast<std::int64_t>(y.value);
        const std::int64_t v = op == Arith::Add ? l + r : op == Arith::Subtract ? l - r : l * r;
        return wholeResult(v, rank);
    }
    const double r = op == Arith::Add ? x.value + y.value
        : op == Arith::Subtract       ? x.value - y.value
                                      : x.value * y.value;
    const bool finite = std::isfinite(x.value) && std::isfinite(y.value);
    const bool dateResult = op != Arith::Multiply && (x.isDate || y.isDate)
        && !(op == Arith::Subtract && x.isDate && y.isDate);
    if (dateResult) {
        if (std::isinf(r) && finite)
            throw VbError(vberr::Overflow);
        return Variant::date(r);
    }
    return floatResult(r, rank, finite);
}

// Operands of "\" and Mod: whole numbers, others rounded to Long.
Operand wholeOperand(const Variant &v)
{
    switch (v.type()) {
    case VarType::Empty:
        return { RankInteger, 0 };
    case VarType::Boolean:
    case VarType::Integer:
        return { RankInteger, v.numberValue() };
    case VarType::Byte:
        return { RankByte, v.numberValue() };
    case VarType::Long:
        return { RankLong, v.numberValue() };
    case VarType::Single:
    case VarType::Double:
    case VarType::Date:
        return { RankLong, static_cast<double>(toLong(v.numberValue())) };
    case VarType::String:
        return { RankLong, static_cast<double>(toLong(parseNumericText(v.rawString()))) };
    case VarType::Null:
        break;
    }
    throw VbError(vberr::TypeMismatch);
}

Variant wholeDivision(const Variant &a, const Variant &b, bool remainder)
{
    if (a.isNull() || b.isNull())
        return Variant::null();
    const Operand x = wholeOperand(a);
    const Operand y = wholeOperand(b);
    const auto l = static_cast<std::int64_t>(x.value);
    const auto r = static_cast<std::int64_t>(y.value);
    if (r == 0)
        throw VbError(vberr::DivisionByZero);
    const Rank rank = x.rank > y.rank ? x.rank : y.rank;
    const std::int64_t v = remainder ? l % r : l / r;
    if (rank == RankLong && (v < INT32_MIN || v > INT32_MAX))
        throw VbError(vberr::Overflow);
    return wholeResult(v, rank);
}

// Operands of the logical operators.
// NumericText: text that reads as a number; it takes the other operand's kind.
enum class LogicalKind { Boolean, Byte, Integer, Long, NumericText };

struct LogicalOperand {
    LogicalKind kind;
    std::int32_t value;
};

LogicalOperand logicalOperand(const Variant &v)
{
    switch (v.type()) {
    case VarType::Empty:
        return { LogicalKind::Long, 0 }; // the script engine widens Empty to Long here
    case VarType::Boolean:
        return { LogicalKind::Boolean, v.rawBoolean() ? -1 : 0 };
    case VarType::Byte:
        return { LogicalKind::Byte, v.rawByte() };
    case VarType::Integer:
        return { LogicalKind::Integer, v.rawInteger() };
    case VarType::Long:
        return { LogicalKind::Long, v.rawLong() };
    case VarType::Single:
    case VarType::Double:
    case VarType::Date:
        return { LogicalKind::Long, toLong(v.numberValue()) };
    case VarType::String: {
        // Numeric text takes part as its number; other text as a truth value ("True", "#FALSE#").
        double number = 0;
        if (tryParseNumericText(v.rawString(), numberLocale(), number))
            return { LogicalKind::NumericText, toLong(number) };
        return { LogicalKind::Boolean, CBool(v) ? -1 : 0 };
    }
    case VarType::Null:
        break;
    }
    throw VbError(vberr::TypeMismatch);
}

LogicalKind combinedKind(LogicalKind a, LogicalKind b)
{
    if (a == LogicalKind::NumericText && b != LogicalKind::NumericText)
        return b == LogicalKind::Byte ? LogicalKind::Integer : b;
    if (b == LogicalKind::NumericText && a != LogicalKind::NumericText)
        return a == LogicalKind::Byte ? LogicalKind::Integer : a;
    if (a == b)
        return a == LogicalKind::NumericText ? LogicalKind::Long : a;
    if (a == LogicalKind::Long || b == LogicalKind::Long)
        return LogicalKind::Long;
    return LogicalKind::Integer;
}

Variant logicalResult(std::int32_t v, LogicalKind kind)
{
    switch (kind) {
    case LogicalKind::Boolean:
        return Variant::boolean(v != 0);
    case LogicalKind::Byte:
        return Variant::byte(static_cast<std::uint8_t>(v));
    case LogicalKind::Integer:
        return Variant::integer(static_cast<std::int16_t>(v));
    case LogicalKind::Long:
    case LogicalKind::NumericText:
        break;
    }
    return Variant::longValue(v);
}

// All bits set in the operand's own width (True, 255, -1).
bool allBits(const LogicalOperand &o)
{
    return o.kind == LogicalKind::Byte ? o.value == 255 : o.value == -1;
}

enum class Logic { And, Or, Xor, Eqv, Imp };

Variant logical(const Variant &a, const Variant &b, Logic op)
{
    if (a.isNull() && b.isNull())
        return Variant::null();
    if (a.isNull() || b.isNull()) {
        // Null is "unknown": the result is known only where the other side decides it alone.
        const bool nullFirst = a.isNull();
        const LogicalOperand o = logicalOperand(nullFirst ? b : a);
        switch (op) {
        case Logic::And:
            return o.value == 0 ? logicalResult(0, o.kind) : Variant::null();
        case Logic::Or:
            return o.value != 0 ? logicalResult(o.value, o.kind) : Variant::null();
        case Logic::Imp:
            if (nullFirst)
                return allBits(o) ? logicalResult(o.value, o.kind) : Variant::null();
            if (o.kind == LogicalKind::Byte)
                return logicalResult(255 - o.value, o.kind); // the script engine's Byte rule
            return o.value == 0 ? logicalResult(-1, o.kind) : Variant::null();
        default:
            return Variant::null();
        }
    }
    const LogicalOperand x = logicalOperand(a);
    const LogicalOperand y = logicalOperand(b);
    std::int32_t v = 0;
    switch (op) {
    case Logic::And:
        v = x.value & y.value;
        break;
    case Logic::Or:
        v = x.value | y.value;
        break;
    case Logic::Xor:
        v = x.value ^ y.value;
        break;
    case Logic::Eqv:
        v = ~(x.value ^ y.value);
        break;
    case Logic::Imp:
        v = ~x.value | y.value;
        break;
    }
    return logicalResult(v, combinedKind(x.kind, y.kind));
}

} // namespace

Variant add(const Variant &a, const Variant &b)
{
    return arithmetic(a, b, Arith::Add);
}

Variant subtract(const Variant &a, const Variant &b)
{
    return arithmetic(a, b, Arith::Subtract);
}

Variant multiply(const Variant &a, const Variant &b)
{
    return arithmetic(a, b, Arith::Multiply);
}

Variant divide(const Variant &a, const Variant &b)
{
    if (a.isNull() || b.isNull())
        return Variant::null();
    const Operand x = arithmeticOperand(a);
    const Operand y = arithmeticOperand(b);
    if (y.value == 0) {
        if (x.value == 0 || std::isnan(x.value))
            throw VbError(vberr::Overflow); // 0/0 has no value at all
        throw VbError(vberr::DivisionByZero);
    }
    // Singles and smaller types divide to a Single; whole numbers, Longs and Dates to a Double.
    const bool single = (x.rank == RankSingle || y.rank == RankSingle) && x.rank != RankLong
        && y.rank != RankLong && x.rank != RankDouble && y.rank != RankDouble;
    const double r = x.value / y.value;
    return floatResult(
        r, single ? RankSingle : RankDouble, std::isfinite(x.value) && std::isfinite(y.value));
}

Variant integerDivide(const Variant &a, const Variant &b)
{
    return wholeDivision(a, b, false);
}

Variant modulo(const Variant &a, const Variant &b)
{
    return wholeDivision(a, b, true);
}

Variant power(const Variant &a, const Variant &b)
{
    if (a.isNull() || b.isNull())
        return Variant::null();
    const double x = arithmeticOperand(a).value;
    const double y = arithmeticOperand(b).value;
    const double r = std::pow(x, y);
    if (std::isnan(r) && !std::isnan(x) && !std::isnan(y))
        throw VbError(vberr::InvalidProcedureCall); // a negative number to a fractional power
    if (std::isinf(r) && std::isfinite(x) && std::isfinite(y))
        throw VbError(x == 0 ? vberr::InvalidProcedureCall : vberr::Overflow);
    return Variant::dbl(r);
}

Variant concat(const Variant &a, const Variant &b)
{
    if (a.isNull() && b.isNull())
        return Variant::null();
    return Variant::string(
        (a.isNull() ? std::string() : CStr(a)) + (b.isNull() ? std::string() : CStr(b)));
}

Variant negate(const Variant &a)
{
    switch (a.type()) {
    case VarType::Null:
        return Variant::null();
    case VarType::Empty:
        return Variant::integer(0);
    case VarType::Boolean:
    case VarType::Byte:
    case VarType::Integer:
    case VarType::Long:
        return wholeResult(-static_cast<std::int64_t>(a.numberValue()),
            a.type() == VarType::Long ? RankLong : RankInteger);
    case VarType::Single:
        return Variant::single(-a.rawSingle());
    case VarType::Double:
        return Variant::dbl(-a.rawDouble());
    case VarType::Date:
        return Variant::date(-a.rawDouble());
    case VarType::String:
        return Variant::dbl(-parseNumericText(a.rawString()));
    }
    return Variant::null();
}

Variant logicalNot(const Variant &a)
{
    if (a.isNull())
        return Variant::null();
    const LogicalOperand o = logicalOperand(a);
    return logicalResult(o.kind == LogicalKind::Byte ? 255 - o.value : ~o.value, o.kind);
}

Variant logicalAnd(const Variant &a, const Variant &b)
{
    return logical(a, b, Logic::And);
}

Variant logicalOr(const Variant &a, const Variant &b)
{
    return logical(a, b, Logic::Or);
}

Variant logicalXor(const Variant &a, const Variant &b)
{
    return logical(a, b, Logic::Xor);
}

Variant logicalEqv(const Variant &a, const Variant &b)
{
    return logical(a, b, Logic::Eqv);
}

Variant logicalImp(const Variant &a, const Variant &b)
{
    return logical(a, b, Logic::Imp);
}

namespace {

int textOrder(const std::string &a, const std::string &b)
{
    const int c = a.compare(b); // byte order
    return c < 0 ? -1 : c > 0 ? 1 : 0;
}

int numberOrder(double x, double y)
{
    return x < y ? -1 : x > y ? 1 : 0;
}

// Order of a text and a number (text on the left).
int mixedOrder(const Variant &text, const Variant &number, bool numberLiteral)
{
    if (number.type() == VarType::Byte || number.type() == VarType::Boolean)
        return textOrder(text.rawString(), CStr(number));
    if (numberLiteral)
        return numberOrder(parseNumericText(text.rawString()), number.numberValue());
    return 1; // otherwise any text is greater than any number
}

} // namespace

Variant compare(const Variant &a, const Variant &b, Comparison how, bool numberLiteral)
{
    if (a.isNull() || b.isNull())
        return Variant::null();
    int order = 0; // -1, 0, 1
    const bool aText = a.isString() || (a.isEmpty() && b.isString());
    const bool bText = b.isString() || (b.isEmpty() && a.isString());
    if (aText && bText) {
        order = textOrder(a.rawString(), b.rawString());
    } else if (aText) {
        order = mixedOrder(a, b, numberLiteral);
    } else if (bText) {
        order = -mixedOrder(b, a, numberLiteral);
    } else if ((a.type() == VarType::Single && b.type() == VarType::Double)
        || (a.type() == VarType::Double && b.type() == VarType::Single)) {
        // A Single meets a Double at Single precision, so CSng(0.1) = 0.1 holds.
        order
            = numberOrder(static_cast<float>(a.numberValue()), static_cast<float>(b.numberValue()));
    } else {
        order = numberOrder(a.numberValue(), b.numberValue());
    }
    bool r = false;
    switch (how) {
    case Comparison::Equal:
        r = order == 0;
        break;
    case Comparison::NotEqual:
        r = order != 0;
        break;
    case Comparison::Less:
        r = order < 0;
        break;
    case Comparison::Greater:
        r = order > 0;
        break;
    case Comparison::LessEqual:
        r = order <= 0;
        break;
    case Comparison::GreaterEqual:
        r = order >= 0;
        break;
    }
    return Variant::boolean(r);
}

} // namespace corvalog::ops
