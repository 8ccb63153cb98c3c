#include "Commands.h"
#include "StderrPrompts.h"
#include "runtime/Clock.h"
#include "runtime/NumberText.h"
#include "runtime/VbError.h"
#include "values/ExpressionCheck.h"
#include "values/ScriptClass.h"
#include "values/ScriptEngine.h"
#include "values/TagReplace.h"
#include "workspace/INIFileModule.h"
#include "workspace/WorkspaceJson.h"
#include "workspace/WorkspaceModule.h"

#include <iostream>
#include <memory>

namespace corvalog::cli {

int runIni(CliArgs &args, std::ostream &out)
{
    const std::vector<std::string> words = args.positional(5);
    if (words[0] == "get") {
        out << ReadINI(words[1], words[2], words[3], words[4]) << "\n";
        return 0;
    }
    if (words[0] == "set") {
        const char *const parts[] = { "section", "key", "value" };
        for (std::size_t i = 0; i < 3; ++i) {
            if (hasLineBreak(words[i + 2]))
                throw UsageError(std::string("ini set: the ") + parts[i]
                    + " holds a line break, which would end its line in the file");
        }
        if (WriteINI(words[1], words[2], words[3], words[4]))
            return 0;
        std::cerr << "Error: cannot write " << words[1] << "\n";
        return 1;
    }
    throw UsageError("ini takes get or set, not '" + words[0] + "'");
}

int runWorkspace(CliArgs &args, std::ostream &out)
{
    const std::vector<std::string> words = args.positionalAll();
    const bool show = !words.empty() && words[0] == "show";
    const bool upgrade = !words.empty() && words[0] == "upgrade";
    if (!(show && words.size() == 2) && !(upgrade && words.size() == 3))
        throw UsageError("use 'workspace show FILE' or 'workspace upgrade IN OUT'");
    StderrPrompts prompts(std::cerr);
    WorkspaceClass ws;
    if (!LoadWorkspace(ws, words[1], prompts))
        return 1;
    if (show) {
        JsonWriter json(out);
        writeWorkspaceJson(json, ws);
        return 0;
    }
    return SaveWorkspace(ws, words[2], prompts) ? 0 : 1;
}

int runCheck(CliArgs &args, std::ostream &out)
{
    const std::string file = args.positional(1)[0];
    StderrPrompts prompts(std::cerr);
    WorkspaceClass ws;
    if (!LoadWorkspace(ws, file, prompts))
        return 1;
    ManualClock clock;
    auto tables = std::make_unique<ScriptClass>(clock);
    ScriptEngine engine(*tables);
    bool allValid = true;
    for (int n = 1; n <= static_cast<int>(ws.Items.size()); ++n) {
        const ExpressionCheck r = checkExpression(engine, ws.item(n).DataTagList);
        if (r.valid) {
            out << n << " ok\n";
        } else {
            out << n << " error " << r.error << ": " << r.description << "\n";
            allValid = false;
        }
    }
    return allValid ? 0 : 1;
}

} // namespace corvalog::cli
