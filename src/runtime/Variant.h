#pragma once

#include <cstdint>
#include <string>

namespace corvalog {

// The value types of the expression language, with their script type names.
enum class VarType : std::uint8_t {
    Empty,
    Null,
    Boolean,
    Byte,
    Integer,
    Long,
    Single,
    Double,
    Date,
    String
};

// "Empty", "Null", "Boolean", "Byte", "Integer", "Long", "Single", "Double", "Date", "String".
const char *typeName(VarType type);

// A script value: one of the VarType kinds. Dates are day counts since 30 December 1899
// (fraction = time of day), as the tables store arrival times. Numbers carry no heap storage.
class Variant
{
public:
    Variant() = default;
    Variant(const Variant &other) = default;
    Variant(Variant &&other) noexcept = default;
    // Numbers are most of what a channel's scripts move around; they skip the string's copy.
    Variant &operator=(const Variant &other)
    {
        m_type = other.m_type;
        m_num = other.m_num;
        if (other.isString())
            m_str = other.m_str;
        else
            m_str.clear();
        return *this;
    }
    Variant &operator=(Variant &&other) noexcept
    {
        m_type = other.m_type;
        m_num = other.m_num;
        if (other.isString())
            m_str = std::move(other.m_str);
        else
            m_str.clear();
        return *this;
    }

    static Variant null() { return Variant(VarType::Null); }
    static Variant boolean(bool v);
    static Variant byte(std::uint8_t v);
    static Variant integer(std::int16_t v);
    static Variant longValue(std::int32_t v);
    static Variant single(float v);
    static Variant dbl(double v);
    static Variant date(double days);
    static Variant string(std::string v);

    VarType type() const { return m_type; }
    bool isEmpty() const { return m_type == VarType::Empty; }
    bool isNull() const { return m_type == VarType::Null; }
    bool isString() const { return m_type == VarType::String; }
    // Boolean, Byte, Integer, Long, Single, Double or Date.
    bool isNumber() const { return m_type >= VarType::Boolean && m_type <= VarType::Date; }

    // Raw payloads; each is valid only for its own type.
    bool rawBoolean() const { return m_num.b; }
    std::uint8_t rawByte() const { return m_num.by; }
    std::int16_t rawInteger() const { return m_num.i; }
    std::int32_t rawLong() const { return m_num.l; }
    float rawSingle() const { return m_num.f; }
    double rawDouble() const { return m_num.d; } // Double and Date
    const std::string &rawString() const { return m_str; }

    // The numeric payload of a number type as a double (Boolean True is -1); 0 otherwise.
    double numberValue() const;

    bool operator==(const Variant &other) const; // same type and payload (for tests)
    bool operator!=(const Variant &other) const { return !(*this == other); }

private:
    explicit Variant(VarType t)
        : m_type(t)
    {
    }

    VarType m_type = VarType::Empty;
    union {
        bool b;
        std::uint8_t by;
        std::int16_t i;
        std::int32_t l;
        float f;
        double d;
    } m_num {};
    std::string m_str;
};

} // namespace corvalog
