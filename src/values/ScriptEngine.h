#pragma once

#include "ScriptProgram.h"
#include "runtime/Variant.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace corvalog {

class ScriptClass;

// The outcome of one evaluation: a value, or an error number (> 0) with its description.
struct EvalResult {
    Variant value;
    int error = 0;
    std::string description;

    bool ok() const { return error == 0; }
};

// Evaluates expression texts against the one ScriptClass, whose members are callable by bare
// name. Each text is compiled once and kept; evaluating it again never parses. Errors never
// escape: they come back in the result.
class ScriptEngine
{
public:
    explicit ScriptEngine(ScriptClass &sclass);

    // Compiles (first time only) and evaluates.
    EvalResult Eval(std::string_view text);

    // The compiled form of a text, from the cache; holders keep it alive across cache trims.
    std::shared_ptr<const ScriptProgram> compile(std::string_view text);

    // Evaluates a compiled text.
    EvalResult run(const ScriptProgram &program);

    std::size_t cachedTexts() const { return m_cache.size(); }
    ScriptClass &sclass() { return m_sclass; }

private:
    Variant execute(const ScriptProgram &program);

    struct CacheEntry {
        std::string text;
        std::shared_ptr<const ScriptProgram> program;
    };

    ScriptClass &m_sclass;
    // Keyed by views into the entries' own text, so a lookup never allocates.
    std::unordered_map<std::string_view, std::unique_ptr<CacheEntry>> m_cache;
    std::size_t m_cachedBytes = 0;
    std::vector<Variant> m_stack;
};

} // namespace corvalog
