#pragma once

#include "runtime/Variant.h"

#include <cstdint>
#include <string_view>

namespace corvalog {

// The script's built-in functions that channel expressions may call.
enum class Builtin : std::uint16_t {
    Abs,
    Sqr,
    Int,
    Fix,
    Round,
    Sgn,
    Exp,
    Log,
    Sin,
    Cos,
    Tan,
    Atn,
    CInt,
    CLng,
    CSng,
    CDbl,
    CBool,
    CByte,
    CStr,
    Len,
    Left,
    Right,
    Mid
};

struct BuiltinInfo {
    const char *name;
    Builtin id;
    int minArgs;
    int maxArgs;
};

// The built-in of that name (any letter case), or nullptr.
const BuiltinInfo *findBuiltin(std::string_view name);

// Calls a built-in with its arguments (the count already checked); raises VbError.
Variant callBuiltin(Builtin id, const Variant *args, int count);

} // namespace corvalog
