#pragma once

#include <string>
#include <string_view>

namespace corvalog {

class ScriptEngine;

// Whether a channel expression is usable, as the workspace editor tells while it is typed.
struct ExpressionCheck {
    bool valid = true;
    int error = 0; // the engine's error number, or 0
    std::string description; // the engine's description of it, or ""
};

// The one rule for a valid expression: its references rewritten, it is evaluated against the
// present tables, and it is invalid when that raises any error but Overflow (6), which only
// says something about the values of the moment.
ExpressionCheck checkExpression(ScriptEngine &engine, std::string_view source);

} // namespace corvalog
