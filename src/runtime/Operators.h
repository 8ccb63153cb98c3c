#pragma once

#include "Variant.h"

namespace corvalog {

// The script operators on values, with the script's typing: Null propagates, Integer sums that
// overflow become Long (and Long ones Double), "/" of whole numbers gives Double but of Singles
// and smaller types stays Single, "\" and Mod round their operands to whole numbers, logical
// operators work bitwise on whole numbers and keep Boolean for Booleans. Errors are raised as
// VbError (6 Overflow, 11 Division by zero, 13 Type mismatch, 5 Invalid procedure call).
namespace ops {

Variant add(const Variant &a, const Variant &b);
Variant subtract(const Variant &a, const Variant &b);
Variant multiply(const Variant &a, const Variant &b);
Variant divide(const Variant &a, const Variant &b);
Variant integerDivide(const Variant &a, const Variant &b);
Variant modulo(const Variant &a, const Variant &b);
Variant power(const Variant &a, const Variant &b);
Variant concat(const Variant &a, const Variant &b);
Variant negate(const Variant &a);

Variant logicalNot(const Variant &a);
Variant logicalAnd(const Variant &a, const Variant &b);
Variant logicalOr(const Variant &a, const Variant &b);
Variant logicalXor(const Variant &a, const Variant &b);
Variant logicalEqv(const Variant &a, const Variant &b);
Variant logicalImp(const Variant &a, const Variant &b);

enum class Comparison { Equal, NotEqual, Less, Greater, LessEqual, GreaterEqual };
// Boolean result, or Null when either side is Null. Numbers compare by value, texts by bytes.
// Text against a Byte or Boolean compares with their text; against a number written as a
// literal the text is read as a number (Type mismatch if it is none); against any other
// number the text is greater.
Variant compare(const Variant &a, const Variant &b, Comparison how, bool numberLiteral = false);

} // namespace ops
} // namespace corvalog
