#pragma once

#include "ScriptProgram.h"

#include <string_view>

namespace corvalog {

// Compiles one expression text into a program. Never raises: a text that is not an expression
// gives a program carrying the compile error (1002 Syntax error, 1006 Expected ')', 1023
// Expected expression, 1025 Expected end of statement, 1032 Invalid character, ...). Names are
// resolved here, case-insensitively: constants, built-ins and the ScriptClass members (also as
// "sclass.T(...)"); an unknown name compiles into an instruction that raises Variable is
// undefined (500) when reached, as the script engine does. An empty or blank text evaluates to
// Empty.
ScriptProgram compileScript(std::string_view text);

} // namespace corvalog
