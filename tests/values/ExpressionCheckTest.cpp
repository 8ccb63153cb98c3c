#include "values/ExpressionCheck.h"

#include "runtime/Clock.h"
#include "values/ScriptClass.h"
#include "values/ScriptEngine.h"

#include <gtest/gtest.h>

using namespace corvalog;

namespace {

TEST(ExpressionCheck, AnyErrorButOverflowMakesAnExpressionInvalid)
{
    ManualClock clock { 46000.5 };
    ScriptClass tables { clock };
    ScriptEngine engine { tables };
    tables.setT(0xFF12, 4.0f);
    const struct {
        const char *source;
        int error; // 0: valid
    } cases[] = {
        { "(<FF12>+<0012>)/2-<3>", 0 },
        { "10^400", 0 }, // an overflow only says something about the values of the moment
        { "<0012>/<0012>", 0 }, // 0/0 overflows
        { "1/0", 11 },
        { "<FF12>/<0012>", 11 }, // judged on the values at hand
        { "Sqr(-1)", 5 },
        { "(<FF12>", 1006 },
        { "<ff12>", 1023 },
        { "Foo(<1>)", 500 },
        { "Mid(\"a\", 1, Null)", 94 },
    };
    for (const auto &c : cases) {
        const ExpressionCheck check = checkExpression(engine, c.source);
        EXPECT_EQ(check.valid, c.error == 0) << c.source;
        if (c.error != 0) {
            EXPECT_EQ(check.error, c.error) << c.source;
            EXPECT_FALSE(check.description.empty()) << c.source;
        }
    }
}

} // namespace
