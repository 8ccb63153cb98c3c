#include "values/ScriptEngine.h"

#include "runtime/Clock.h"
#include "runtime/Convert.h"
#include "values/ExpressionCheck.h"
#include "values/ScriptClass.h"

#include <gtest/gtest.h>
#include <string>

using namespace corvalog;

namespace {

struct Case {
    const char *text;
    const char *expected; // "Integer 3", "Empty", "error 11"
};

class ScriptEngineTest : public ::testing::Test
{
protected:
    ManualClock clock { 46000.5 };
    ScriptClass sclass { clock };
    ScriptEngine engine { sclass };

    std::string eval(const std::string &text)
    {
        const EvalResult r = engine.Eval(text);
        if (!r.ok())
            return "error " + std::to_string(r.error);
        if (r.value.isEmpty() || r.value.isNull())
            return typeName(r.value.type());
        return std::string(typeName(r.value.type())) + " " + CStr(r.value);
    }

    // "1023 Expected expression": an error with its description.
    std::string described(const std::string &text)
    {
        const EvalResult r = engine.Eval(text);
        return std::to_string(r.error) + " " + r.description;
    }

    void expectAll(std::initializer_list<Case> cases)
    {
        for (const Case &c : cases)
            EXPECT_EQ(eval(c.text), c.expected) << c.text;
    }
};

// Literals take the smallest type that holds them, and operators follow the script's typing and
// precedence.
TEST_F(ScriptEngineTest, LiteralsAndOperatorsFollowTheScriptTyping)
{
    expectAll({
        { "32767", "Integer 32767" },
        { "32768", "Long 32768" },
        { "-32768", "Long -32768" }, // the minus is an operator on the Long 32768
        { "2147483648", "Double 2147483648" },
        { ".5", "Double 0.5" },
        { "&HFFFF", "Integer -1" },
        { "&H10000", "Long 65536" },
        { "&HFFFFFFFF", "Integer -1" },
        { "\"a\"\"b\"", "String a\"b" },
        { "", "Empty" },
        { "32767+1", "Long 32768" },
        { "2147483647+1", "Double 2147483648" },
        { "CByte(200)+CByte(100)", "Integer 300" },
        { "CByte(2)*CByte(3)", "Byte 6" },
        { "CSng(1.5)+CLng(2)", "Double 3.5" },
        { "\"12\"+\"12\"", "String 1212" },
        { "\"12\"+4", "Double 16" },
        { "CSng(3)/2", "Single 1.5" },
        { "2.5\\1", "Long 2" },
        { "-7 Mod 4", "Integer -3" },
        { "-2^2", "Double 4" },
        { "2^3^2", "Double 64" },
        { "Null & \"a\"", "String a" },
        { "1 + null", "Null" },
        { "1 & 2 + 3", "String 15" },
        { "1 = 1 < 0", "Boolean True" }, // (1 = 1) < 0 is -1 < 0
        { "1 > Not 5 > 3", "Boolean True" },
        { "True Xor True Or True", "Boolean False" },
        { "False Imp False Eqv False", "Boolean True" },
        { "&H01or&H02", "Integer 3" },
        { "1.6 Or 0", "Long 2" },
        { "Not CByte(0)", "Byte 255" },
        { "Not Empty", "Long -1" },
        { "Null And False", "Boolean False" },
        { "Null And True", "Null" },
        { "Null Or True", "Boolean True" },
        { "CSng(0.1) = 0.1", "Boolean True" },
        { "CDbl(CSng(0.1)) = 0.1", "Boolean False" },
        { "\"10\" > \"9\"", "Boolean False" },
        { "\"10\" > 9", "Boolean True" },
        { "\"abc\" = 5", "error 13" },
        { "\"abc\" = (5+0)", "Boolean False" }, // only a number literal reads the text as a number
        { "\"True\" = True", "Boolean True" }, // Booleans and Bytes compare as their text
        { "\"4\" And 1", "Integer 0" }, // numeric text takes part as its number
        { "1 < Null", "Null" },
        { "2 =< 3", "Boolean True" },
        { "1E10 Or 1", "error 6" },
        { "1/0", "error 11" },
        { "0/0", "error 6" },
        { "1 Mod 0", "error 11" },
        { "\"x\" * 2", "error 13" },
        { "(-8)^(1/3)", "error 5" },
        { "10^400", "error 6" },
    });
}

TEST_F(ScriptEngineTest, BuiltinsAndMembersKeepOrChangeTypeAsTheScriptDoes)
{
    sclass.setT(65298, 12.5f);
    sclass.setT(18, 7.5f);
    sclass.setTE(18, 3);
    sclass.setTL(18, 42);
    sclass.setC(3, 5.0f);
    expectAll({
        { "Abs(-32768)", "Long 32768" },
        { "Int(-2.5)", "Double -3" },
        { "Fix(-2.5)", "Double -2" },
        { "Round(2.5)", "Double 2" },
        { "Round(3.14159, 2)", "Double 3.14" },
        { "Len(Null)", "Null" },
        { "Len(\"h\xC3\xA9llo\")", "Long 5" },
        { "Left(\"h\xC3\xA9llo\", 2)", "String h\xC3\xA9" },
        { "Mid(\"abcdef\", 2, 3)", "String bcd" },
        { "Mid(\"test\", 5, 2)", "String " },
        { "Sqr(-1)", "error 5" },
        { "Left(\"abc\", -1)", "error 5" },
        { "Mid(\"test\", 0, Null)", "error 94" }, // the length is looked at before the start
        { "Mid(\"test\", 0, 1)", "error 5" },
        { "Foo(1/0)", "error 500" },
        { "T(65298)", "Single 12.5" },
        { "SCLASS.c(3)", "Single 5" },
        { "T(18.5)", "Single 7.5" }, // indexes round half to even
        { "T(19.5)", "Single 0" },
        { "T(65535)", "Single 0" }, // never written
        { "T(65536)", "error 9" },
        { "C(24)", "Single 0" },
        { "C(25)", "error 9" },
        { "T", "error 450" },
        { "sclass.Nope", "error 438" },
        { "TE(18) OR TE(65298) OR CE(3)", "Integer 3" },
        { "Min(TL(18),TL(65298),CL(3))", "Double 0" },
        { "Min(\"abc\", 5)", "Double 0" }, // each argument is read back from its text with Val
        { "PI", "Single 3.141593" },
        { "TT(19)", "Boolean True" },
        { "Fmt(T(65298), \"0.0\")", "String 12.5" },
        { "QuickTagReplace(\"<FF12>*2\")", "String T(65298)*2" },
        { "TagReplace(\"<1>\", \"\", \"\", \"\", \"\", \"\")", "Empty" },
        { "SetTimeout(7)", "Empty" },
        { "SetTimeout(70000)", "error 6" },
    });
    EXPECT_EQ(sclass.timeout(), 7);
}

TEST_F(ScriptEngineTest, CompileErrorsNameWhatWasExpectedOrUnknown)
{
    EXPECT_EQ(described("1+"), "1023 Expected expression");
    EXPECT_EQ(described("(1"), "1006 Expected ')'");
    EXPECT_EQ(described("1)"), "1025 Expected end of statement");
    EXPECT_EQ(described("2x"), "1025 Expected end of statement");
    EXPECT_EQ(described("1\n2"), "1025 Expected end of statement");
    EXPECT_EQ(described("\"abc"), "1033 Unterminated string constant");
    EXPECT_EQ(described("@"), "1032 Invalid character");
    EXPECT_EQ(described("1 Is 2"), "1002 Syntax error");
    EXPECT_EQ(described("&H1FFFFFFFF"), "1031 Invalid number");
    EXPECT_EQ(described("sclass."), "1010 Expected identifier");
    EXPECT_EQ(described("Tx(3)"), "500 Variable is undefined: 'Tx'");
    EXPECT_EQ(
        described("Sqr()"), "450 Wrong number of arguments or invalid property assignment: 'Sqr'");
}

TEST_F(ScriptEngineTest, LongDeepAndManyTextsStayBounded)
{
    std::string text;
    for (int i = 0; i < 70000; ++i)
        text += "1+";
    // More constants than 16 bits can number: a wrapped index would read a 1 for the final 0.
    EXPECT_EQ(eval(text + "0"), "Long 70000");
    EXPECT_EQ(eval(std::string(5000, '(') + "1" + std::string(5000, ')')), "error 28");
    EXPECT_EQ(eval(std::string(5000, '-') + "1"), "error 28");

    const auto first = engine.compile("T(1)+1");
    const std::size_t cached = engine.cachedTexts();
    engine.Eval("T(1)+1");
    engine.Eval("T(1)+(1");
    engine.Eval("T(1)+(1");
    EXPECT_EQ(engine.cachedTexts(), cached + 1);
    sclass.setT(1, 2.0f);
    EXPECT_EQ(engine.run(*first).value, Variant::single(3.0f)); // the value is read at run time

    const std::string padding(200000, ' ');
    for (int i = 0; i < 100; ++i)
        engine.Eval(std::to_string(i) + padding);
    EXPECT_LT(engine.cachedTexts(), 30u);
    EXPECT_EQ(eval("41" + padding), "Integer 41");
    EXPECT_EQ(engine.run(*first).value, Variant::single(3.0f)); // the holder keeps it alive
}

TEST_F(ScriptEngineTest, OnlyValueWritesRefreshTheArrivalAndTimedOutCountsSecondBoundaries)
{
    constexpr double kNoon = 45000.5; // a whole second, so offsets below land where intended
    clock.set(kNoon);
    sclass.SetTimeout(32767); // the zero date is long past whatever the timeout
    sclass.setTE(9, 1);
    sclass.setTB(9, 1);
    sclass.setTL(9, 100);
    EXPECT_TRUE(sclass.TT(9));
    sclass.setT(9, 1.0f);
    EXPECT_FALSE(sclass.TT(9));
    EXPECT_EQ(sclass.arrivalTime(9), kNoon);

    // A value arriving `arrival` seconds after noon, and TT asked `elapsed` seconds later.
    const auto timedOut = [&](std::int16_t timeout, double arrival, double elapsed) {
        clock.set(kNoon);
        clock.advanceSeconds(arrival);
        sclass.setT(1, 1.0f);
        clock.advanceSeconds(elapsed);
        sclass.SetTimeout(timeout);
        return sclass.TT(1);
    };
    EXPECT_FALSE(timedOut(0, 0.1, 0.8)); // same second
    EXPECT_TRUE(timedOut(0, 0.9, 0.2)); // 0.2 s later, but across a boundary
    EXPECT_FALSE(timedOut(5, 0.0, 5.0)); // count equal to the timeout
    EXPECT_FALSE(timedOut(5, 0.9, 4.2)); // 5 boundaries
    EXPECT_TRUE(timedOut(5, 0.9, 5.2)); // 6 boundaries
    EXPECT_TRUE(timedOut(-1, 0.0, 0.0)); // a negative timeout: even "now" is too old
}

TEST_F(ScriptEngineTest, AnyErrorButOverflowMakesAnExpressionInvalid)
{
    const auto check = [&](const char *source) {
        const ExpressionCheck c = checkExpression(engine, source);
        return std::string(c.valid ? "valid " : "invalid ") + std::to_string(c.error)
            + (c.description.empty() ? "" : " described");
    };
    sclass.setT(0xFF12, 4.0f);
    EXPECT_EQ(check("(<FF12>+<0012>)/2-<3>"), "valid 0");
    EXPECT_EQ(check("<0012>/<0012>"), "valid 6 described"); // 0/0 overflows: a passing state
    EXPECT_EQ(check("<FF12>/<0012>"), "invalid 11 described"); // judged on the values at hand
    EXPECT_EQ(check("<ff12>"), "invalid 1023 described"); // not rewritten
}

} // namespace
