#include "ScriptBuiltins.h"

#include "runtime/Ascii.h"
#include "runtime/Convert.h"
#include "runtime/Operators.h"
#include "runtime/VbError.h"

#include <cctype>
#include <cmath>
#include <cstdint>
#include <string>

namespace corvalog {

namespace {

const BuiltinInfo kBuiltins[] = {
    { "Abs", Builtin::Abs, 1, 1 },
    { "Sqr", Builtin::Sqr, 1, 1 },
    { "Int", Builtin::Int, 1, 1 },
    { "Fix", Builtin::Fix, 1, 1 },
    { "Round", Builtin::Round, 1, 2 },
    { "Sgn", Builtin::Sgn, 1, 1 },
    { "Exp", Builtin::Exp, 1, 1 },
    { "Log", Builtin::Log, 1, 1 },
    { "Sin", Builtin::Sin, 1, 1 },
    { "Cos", Builtin::Cos, 1, 1 },
    { "Tan", Builtin::Tan, 1, 1 },
    { "Atn", Builtin::Atn, 1, 1 },
    { "CInt", Builtin::CInt, 1, 1 },
    { "CLng", Builtin::CLng, 1, 1 },
    { "CSng", Builtin::CSng, 1, 1 },
    { "CDbl", Builtin::CDbl, 1, 1 },
    { "CBool", Builtin::CBool, 1, 1 },
    { "CByte", Builtin::CByte, 1, 1 },
    { "CStr", Builtin::CStr, 1, 1 },
    { "Len", Builtin::Len, 1, 1 },
    { "Left", Builtin::Left, 2, 2 },
    { "Right", Builtin::Right, 2, 2 },
    { "Mid", Builtin::Mid, 2, 3 },
};

// Text is UTF-8: lengths and positions count characters, not bytes.
bool isContinuation(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

std::int64_t characterCount(const std::string &s)
{
    std::int64_t n = 0;
    for (char c : s)
        n += isContinuation(c) ? 0 : 1;
    return n;
}

// Byte offset of character `index` (0-based); the size when past the end.
std::size_t byteOffset(const std::string &s, std::int64_t index)
{
    std::size_t i = 0;
    for (std::int64_t seen = 0; i < s.size(); ++i) {
        if (!isContinuation(s[i])) {
            if (seen == index)
                return i;
            ++seen;
        }
    }
    return s.size();
}

std::int32_t lengthArgument(const Variant &v)
{
    const std::int32_t n = CLng(v);
    if (n < 0)
        throw VbError(vberr::InvalidProcedureCall);
    return n;
}

// Keeps the number type of its argument, as Abs, Int, Fix and Round do.
template <typename F> Variant sameTypeMath(const Variant &v, F f)
{
    switch (v.type()) {
    case VarType::Null:
        return Variant::null();
    case VarType::Empty:
        return Variant::integer(0);
    case VarType::Single:
        return Variant::single(static_cast<float>(f(v.rawSingle())));
    case VarType::Double:
        return Variant::dbl(f(v.rawDouble()));
    case VarType::Date:
        return Variant::date(f(v.rawDouble()));
    case VarType::String:
        return Variant::dbl(f(parseNumericText(v.rawString())));
    default:
        return v; // whole numbers are already whole
    }
}

double real(const Variant &v)
{
    return CDbl(v);
}

Variant checkedDouble(double r)
{
    if (std::isinf(r))
        throw VbError(vberr::Overflow);
    return Variant::dbl(r);
}

Variant roundTo(const Variant &v, std::int32_t digits)
{
    if (v.type() == VarType::Boolean)
        return v;
    return sameTypeMath(v, [digits](double x) {
        if (digits == 0)
            return roundHalfEven(x);
        const double scale = std::pow(10.0, digits);
        const double scaled = x * scale;
        return std::isfinite(scaled) ? roundHalfEven(scaled) / scale : x;
    });
}

} // namespace

const BuiltinInfo *findBuiltin(std::string_view name)
{
    for (const BuiltinInfo &b : kBuiltins) {
        if (equalsIgnoringCase(name, b.name))
            return &b;
    }
    return nullptr;
}

Variant callBuiltin(Builtin id, const Variant *args, int count)
{
    const Variant &x = args[0];
    switch (id) {
    case Builtin::Abs:
        if (x.type() == VarType::Boolean || x.type() == VarType::Integer
            || x.type() == VarType::Long)
            return x.numberValue() < 0 ? ops::negate(x)
                                       : ops::add(x, Variant()); // Abs(-32768) is a Long
        return sameTypeMath(x, [](double v) { return std::fabs(v); });
    case Builtin::Int:
        if (x.type() == VarType::Boolean)
            return Variant::integer(static_cast<std::int16_t>(x.numberValue()));
        return sameTypeMath(x, [](double v) { return std::floor(v); });
    case Builtin::Fix:
        if (x.type() == VarType::Boolean)
            return Variant::integer(static_cast<std::int16_t>(x.numberValue()));
        return sameTypeMath(x, [](double v) { return std::trunc(v); });
    case Builtin::Round: {
        const std::int32_t digits = count > 1 ? CLng(args[1]) : 0;
        if (digits < 0)
            throw VbError(vberr::InvalidProcedureCall);
        return roundTo(x, digits);
    }
    case Builtin::Sgn: {
        const double v = real(x);
        return Variant::integer(static_cast<std::int16_t>(v > 0 ? 1 : v < 0 ? -1 : 0));
    }
    case Builtin::Sqr: {
        const double v = real(x);
        if (v < 0)
            throw VbError(vberr::InvalidProcedureCall);
        return Variant::dbl(std::sqrt(v));
    }
    case Builtin::Exp:
        return checkedDouble(std::exp(real(x)));
    case Builtin::Log: {
        const double v = real(x);
        if (!(v > 0))
            throw VbError(vberr::InvalidProcedureCall);
        return Variant::dbl(std::log(v));
    }
    case Builtin::Sin:
        return Variant::dbl(std::sin(real(x)));
    case Builtin::Cos:
        return Variant::dbl(std::cos(real(x)));
    case Builtin::Tan:
        return Variant::dbl(std::tan(real(x)));
    case Builtin::Atn:
        return Variant::dbl(std::atan(real(x)));
    case Builtin::CInt:
        return Variant::integer(corvalog::CInt(x));
    case Builtin::CLng:
        return Variant::longValue(corvalog::CLng(x));
    case Builtin::CSng:
        return Variant::single(corvalog::CSng(x));
    case Builtin::CDbl:
        return Variant::dbl(corvalog::CDbl(x));
    case Builtin::CBool:
        return Variant::boolean(corvalog::CBool(x));
    case Builtin::CByte:
        return Variant::byte(corvalog::CByte(x));
    case Builtin::CStr:
        return Variant::string(corvalog::CStr(x));
    case Builtin::Len:
        if (x.isNull())
            return Variant::null();
        return Variant::longValue(static_cast<std::int32_t>(characterCount(corvalog::CStr(x))));
    case Builtin::Left:
    case Builtin::Right: {
        const std::int32_t n = lengthArgument(args[1]);
        if (x.isNull())
            return Variant::null();
        const std::string s = corvalog::CStr(x);
        if (id == Builtin::Left)
            return Variant::string(s.substr(0, byteOffset(s, n)));
        const std::int64_t skip = characterCount(s) - n;
        return Variant::string(s.substr(skip > 0 ? byteOffset(s, skip) : 0));
    }
    case Builtin::Mid: {
        // The length is looked at first: a Null length is "Invalid use of Null" whatever the
        // start.
        if (count > 2 && args[2].isNull())
            throw VbError(vberr::InvalidUseOfNull);
        const std::int32_t start = corvalog::CLng(args[1]);
        if (start < 1)
            throw VbError(vberr::InvalidProcedureCall);
        const std::int32_t length = count > 2 ? lengthArgument(args[2]) : INT32_MAX;
        if (x.isNull())
            return Variant::null();
        const std::string s = corvalog::CStr(x);
        const std::size_t from = byteOffset(s, start - 1);
        const std::size_t to = byteOffset(s, static_cast<std::int64_t>(start) - 1 + length);
        return Variant::string(s.substr(from, to - from));
    }
    }
    throw VbError(vberr::InvalidProcedureCall);
}

} // namespace corvalog
