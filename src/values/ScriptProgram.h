#pragma once

#include "runtime/Variant.h"

#include <cstdint>
#include <string>
#include <vector>

namespace corvalog {

// Instructions of a compiled expression: a stack machine, operands pushed left to right.
enum class OpCode : std::uint8_t {
    PushConstant, // a: constant index
    Negate,
    Not,
    Add,
    Subtract,
    Multiply,
    Divide,
    IntDivide,
    Modulo,
    Power,
    Concat,
    And,
    Or,
    Xor,
    Eqv,
    Imp,
    Compare, // a: ops::Comparison, b: 1 when an operand was written as a literal
    CallBuiltin, // a: Builtin, b: argument count
    CallMember, // a: ScriptClass member number, b: argument count
    Raise, // a: error number, b: index into names (the name the error concerns)
};

struct Instruction {
    OpCode op;
    std::uint8_t b;
    std::uint32_t a; // wide enough for the constants of any text the engine accepts
};

// An expression compiled once and evaluated many times. A text that did not compile keeps its
// error, so evaluating it again reports the same error without parsing again.
struct ScriptProgram {
    std::vector<Instruction> code;
    std::vector<Variant> constants;
    std::vector<std::string> names;
    int maxStack = 0;
    int compileError = 0; // 0 when the text compiled
    std::string compileDescription;
};

} // namespace corvalog
