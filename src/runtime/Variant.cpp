#include "Variant.h"

#include <cstring>

namespace corvalog {

const char *typeName(VarType type)
{
    switch (type) {
    case VarType::Empty:
        return "Empty";
    case VarType::Null:
        return "Null";
    case VarType::Boolean:
        return "Boolean";
    case VarType::Byte:
        return "Byte";
    case VarType::Integer:
        return "Integer";
    case VarType::Long:
        return "Long";
    case VarType::Single:
        return "Single";
    case VarType::Double:
        return "Double";
    case VarType::Date:
        return "Date";
    case VarType::String:
        return "String";
    }
    return "Unknown";
}

Variant Variant::boolean(bool v)
{
    Variant r(VarType::Boolean);
    r.m_num.b = v;
    return r;
}

Variant Variant::byte(std::uint8_t v)
{
    Variant r(VarType::Byte);
    r.m_num.by = v;
    return r;
}

Variant Variant::integer(std::int16_t v)
{
    Variant r(VarType::Integer);
    r.m_num.i = v;
    return r;
}

Variant Variant::longValue(std::int32_t v)
{
    Variant r(VarType::Long);
    r.m_num.l = v;
    return r;
}

Variant Variant::single(float v)
{
    Variant r(VarType::Single);
    r.m_num.f = v;
    return r;
}

Variant Variant::dbl(double v)
{
    Variant r(VarType::Double);
    r.m_num.d = v;
    return r;
}

Variant Variant::date(double days)
{
    Variant r(VarType::Date);
    r.m_num.d = days;
    return r;
}

Variant Variant::string(std::string v)
{
    Variant r(VarType::String);
    r.m_str = std::move(v);
    return r;
}

double Variant::numberValue() const
{
    switch (m_type) {
    case VarType::Boolean:
        return m_num.b ? -1.0 : 0.0;
    case VarType::Byte:
        return m_num.by;
    case VarType::Integer:
        return m_num.i;
    case VarType::Long:
        return m_num.l;
    case VarType::Single:
        return m_num.f;
    case VarType::Double:
    case VarType::Date:
        return m_num.d;
    default:
        return 0.0;
    }
}

bool Variant::operator==(const Variant &other) const
{
    if (m_type != other.m_type)
        return false;
    switch (m_type) {
    case VarType::Empty:
    case VarType::Null:
        return true;
    case VarType::String:
        return m_str == other.m_str;
    case VarType::Single:
        // Bitwise, so that NaN payloads passed through by the decoder compare as themselves.
        return std::memcmp(&m_num.f, &other.m_num.f, sizeof(float)) == 0;
    case VarType::Double:
    case VarType::Date:
        return std::memcmp(&m_num.d, &other.m_num.d, sizeof(double)) == 0;
    default:
        return numberValue() == other.numberValue();
    }
}

} // namespace corvalog
