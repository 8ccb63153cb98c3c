#include "values/ScriptEngine.h"

#include "runtime/Clock.h"
#include "runtime/Convert.h"
#include "runtime/NumberLocale.h"
#include "values/ScriptClass.h"

#include <gtest/gtest.h>
#include <string>

using namespace corvalog;

namespace {

class ScriptEngineTest : public ::testing::Test
{
protected:
    ManualClock clock { 46000.5 };
    ScriptClass sclass { clock };
    ScriptEngine engine { sclass };

    // "Integer 3", "Empty", "error 11".
    std::string eval(const std::string &text)
    {
        const EvalResult r = engine.Eval(text);
        if (!r.ok())
            return "error " + std::to_string(r.error);
        if (r.value.isEmpty() || r.value.isNull())
            return typeName(r.value.type());
        return std::string(typeName(r.value.type())) + " " + CStr(r.value);
    }
};

struct Case {
    const char *text;
    const char *expected;
};

TEST_F(ScriptEngineTest, LiteralsTakeTheSmallestTypeThatHoldsThem)
{
    const Case cases[] = {
        { "32767", "Integer 32767" },
        { "32768", "Long 32768" },
        { "-32768", "Long -32768" }, // the minus is an operator on the Long 32768
        { "2147483647", "Long 2147483647" },
        { "2147483648", "Double 2147483648" },
        { ".5", "Double 0.5" },
        { "1e-400", "Double 0" },
        { "&HFFFF", "Integer -1" },
        { "&H10000", "Long 65536" },
        { "&HFFFF&", "Long 65535" },
        { "&HFFFFFFFF", "Integer -1" },
        { "&O17", "Integer 15" },
        { "\"a\"\"b\"", "String a\"b" },
        { "null", "Null" },
        { "", "Empty" },
        { "1 ' a comment", "Integer 1" },
    };
    for (const Case &c : cases)
        EXPECT_EQ(eval(c.text), c.expected) << c.text;
}

TEST_F(ScriptEngineTest, ArithmeticFollowsTheScriptTypingAndPrecedence)
{
    const Case cases[] = {
        { "32767+1", "Long 32768" },
        { "2147483647+1", "Double 2147483648" },
        { "CByte(200)+CByte(100)", "Integer 300" },
        { "CByte(2)*CByte(3)", "Byte 6" },
        { "True+True", "Integer -2" },
        { "CSng(1.5)+CLng(2)", "Double 3.5" },
        { "\"12\"+\"12\"", "String 1212" },
        { "\"12\"+4", "Double 16" },
        { "1/2", "Double 0.5" },
        { "CSng(3)/2", "Single 1.5" },
        { "7\\2", "Integer 3" },
        { "2.5\\1", "Long 2" },
        { "-7 Mod 4", "Integer -3" },
        { "11.6 Mod 5.5", "Long 0" },
        { "-2^2", "Double 4" },
        { "2^3^2", "Double 64" },
        { "-(-32768)", "Long 32768" },
        { "-\"1\"", "Double -1" },
        { "1 & 2", "String 12" },
        { "Null & \"a\"", "String a" },
        { "1 + Null", "Null" },
        // Precedence is the script's own.
        { "2+3\\4", "Integer 2" },
        { "1 & 2 + 3", "String 15" },
        { "1 = 1 < 0", "Boolean True" }, // (1 = 1) < 0 is -1 < 0
        { "1 > Not 5 > 3", "Boolean True" },
        { "True Xor True Or True", "Boolean False" },
        { "False Imp False Eqv False", "Boolean True" },
    };
    for (const Case &c : cases)
        EXPECT_EQ(eval(c.text), c.expected) << c.text;
}

TEST_F(ScriptEngineTest, LogicAndComparisons)
{
    const Case cases[] = {
        { "&H01or&H02", "Integer 3" },
        { "CLng(6) And 3", "Long 2" },
        { "1.6 Or 0", "Long 2" },
        { "Not CByte(0)", "Byte 255" },
        { "Not Empty", "Long -1" },
        { "Null And False", "Boolean False" },
        { "Null And True", "Null" },
        { "Null Or True", "Boolean True" },
        { "False Imp Null", "Boolean True" },
        { "Null Xor True", "Null" },
        { "CSng(0.1) = 0.1", "Boolean True" },
        { "CDbl(CSng(0.1)) = 0.1", "Boolean False" },
        { "\"10\" > \"9\"", "Boolean False" },
        { "\"10\" > 9", "Boolean True" },
        { "\"abc\" = 5", "error 13" },
        { "\"abc\" = (5+0)", "Boolean False" }, // only a number literal reads the text as a number
        { "\"True\" = True", "Boolean True" }, // Booleans and Bytes compare as their text
        { "\"true\" = True", "Boolean False" },
        { "\"4\" And 1", "Integer 0" }, // numeric text takes part as its number
        { "\"x\" And 1", "error 13" },
        { "Empty = \"\"", "Boolean True" },
        { "1 < Null", "Null" },
        { "2 =< 3", "Boolean True" },
    };
    for (const Case &c : cases)
        EXPECT_EQ(eval(c.text), c.expected) << c.text;
}

TEST_F(ScriptEngineTest, ErrorsCarryTheScriptNumbersAndNameWhatWasExpectedOrUnknown)
{
    const struct {
        const char *text;
        int number;
        const char *description; // nullptr: not checked
    } cases[] = {
        { "1E10 Or 1", 6, nullptr },
        { "1/0", 11, nullptr },
        { "0/0", 6, nullptr },
        { "1 Mod 0", 11, nullptr },
        { "\"x\" * 2", 13, nullptr },
        { "Sqr(-1)", 5, nullptr },
        { "(-8)^(1/3)", 5, nullptr },
        { "10^400", 6, nullptr },
        { "CInt(32767.5)", 6, nullptr },
        { "CStr(Null)", 94, nullptr },
        { "Left(\"abc\", -1)", 5, nullptr },
        { "Mid(\"test\", 0, Null)", 94, nullptr }, // the length is looked at before the start
        { "Mid(\"test\", 0, 1)", 5, nullptr },
        { "Mid(Null, 0)", 5, nullptr },
        { "Sqr(1, 2)", 450, nullptr },
        { "T", 450, nullptr },
        { "Undefined1", 500, nullptr },
        { "Foo(1/0)", 500, nullptr },
        { "sclass", 13, nullptr },
        { "sclass.Nope", 438, nullptr },
        { "T(65536)", 9, nullptr },
        { "C(25)", 9, nullptr },
        { "1+", 1023, "Expected expression" },
        { "(1", 1006, "Expected ')'" },
        { "1)", 1025, "Expected end of statement" },
        { "2x", 1025, "Expected end of statement" },
        { "1\n2", 1025, "Expected end of statement" },
        { "\"abc", 1033, "Unterminated string constant" },
        { "@", 1032, "Invalid character" },
        { "<FF12>", 1023, "Expected expression" },
        { "1 Is 2", 1002, "Syntax error" },
        { "&H1FFFFFFFF", 1031, "Invalid number" },
        { "sclass.", 1010, "Expected identifier" },
        { "Tx(3)", 500, "Variable is undefined: 'Tx'" },
        { "Sqr()", 450, "Wrong number of arguments or invalid property assignment: 'Sqr'" },
    };
    for (const auto &c : cases) {
        const EvalResult r = engine.Eval(c.text);
        EXPECT_EQ(r.error, c.number) << c.text;
        if (c.description) {
            EXPECT_EQ(r.description, c.description) << c.text;
        }
    }
}

TEST_F(ScriptEngineTest, LongTextsKeepEveryConstant)
{
    std::string text;
    for (int i = 0; i < 70000; ++i)
        text += "1+";
    // More constants than 16 bits can number: a wrapped index would read a 1 for the final 0.
    EXPECT_EQ(eval(text + "0"), "Long 70000");
}

TEST_F(ScriptEngineTest, TheCacheStaysBoundedByTextSize)
{
    const std::string padding(200000, ' ');
    for (int i = 0; i < 100; ++i)
        engine.Eval(std::to_string(i) + padding);
    EXPECT_LT(engine.cachedTexts(), 30u);
    EXPECT_EQ(eval("41" + padding), "Integer 41");
}

TEST_F(ScriptEngineTest, DeepNestingIsAnErrorNotACrash)
{
    EXPECT_EQ(engine.Eval(std::string(5000, '(') + "1" + std::string(5000, ')')).error, 28);
    EXPECT_EQ(engine.Eval(std::string(5000, '-') + "1").error, 28);
    EXPECT_EQ(
        engine.Eval(std::string(50, '(') + "1" + std::string(50, ')')).value, Variant::integer(1));
}

TEST_F(ScriptEngineTest, BuiltinsKeepOrChangeTypeAsTheScriptDoes)
{
    const Case cases[] = {
        { "Abs(-32768)", "Long 32768" },
        { "Abs(True)", "Integer 1" },
        { "Int(-2.5)", "Double -3" },
        { "Fix(-2.5)", "Double -2" },
        { "Round(2.5)", "Double 2" },
        { "Round(3.5)", "Double 4" },
        { "Round(3.14159, 2)", "Double 3.14" },
        { "Round(True)", "Boolean True" },
        { "Atn(1)*4", "Double 3.14159265358979" },
        { "CInt(\"-0.5\")", "Integer 0" },
        { "CLng(\"1,000\")", "Long 1000" },
        { "CBool(\"#TRUE#\")", "Boolean True" },
        { "CByte(255.49)", "Byte 255" },
        { "Len(Null)", "Null" },
        { "Len(\"h\xC3\xA9llo\")", "Long 5" },
        { "Left(\"h\xC3\xA9llo\", 2)", "String h\xC3\xA9" },
        { "Right(\"abc\", 10)", "String abc" },
        { "Mid(\"abcdef\", 2, 3)", "String bcd" },
        { "Mid(\"test\", 5, 2)", "String " },
    };
    for (const Case &c : cases)
        EXPECT_EQ(eval(c.text), c.expected) << c.text;
}

TEST_F(ScriptEngineTest, MembersReadTheTablesByBareOrQualifiedName)
{
    sclass.setT(65298, 12.5f);
    sclass.setT(18, 7.5f);
    sclass.setTE(18, 3);
    sclass.setTL(18, 42);
    sclass.setC(3, 5.0f);
    const Case cases[] = {
        { "T(65298)", "Single 12.5" },
        { "SCLASS.c(3)", "Single 5" },
        { "T(18.5)", "Single 7.5" }, // indexes round half to even
        { "T(19.5)", "Single 0" },
        { "TE(18) OR TE(65298) OR CE(3)", "Integer 3" },
        { "Min(TL(18),TL(65298),CL(3))", "Double 0" },
        { "Min()", "Double 9999999999" },
        { "PI", "Single 3.141593" },
        { "TT(18)", "Boolean False" },
        { "TT(19)", "Boolean True" },
        { "Fmt(T(65298), \"0.0\")", "String 12.5" },
        { "QuickTagReplace(\"<FF12>*2\")", "String T(65298)*2" },
        { "TagReplace(\"<1>\", \"\", \"\", \"\", \"\", \"\")", "Empty" },
    };
    for (const Case &c : cases)
        EXPECT_EQ(eval(c.text), c.expected) << c.text;
}

TEST_F(ScriptEngineTest, SetTimeoutInsideAnExpressionChangesTheTimeout)
{
    EXPECT_EQ(eval("SetTimeout(7)"), "Empty");
    EXPECT_EQ(sclass.timeout(), 7);
    EXPECT_EQ(eval("SetTimeout(70000)"), "error 6");
}

TEST_F(ScriptEngineTest, EachTextIsCompiledOnce)
{
    const auto first = engine.compile("T(1)+1");
    const std::size_t cached = engine.cachedTexts();
    engine.Eval("T(1)+1");
    engine.Eval("T(1)+(1");
    engine.Eval("T(1)+(1");
    EXPECT_EQ(engine.cachedTexts(), cached + 1);
    sclass.setT(1, 2.0f);
    EXPECT_EQ(engine.run(*first).value, Variant::single(3.0f)); // the value is read at run time
}

TEST_F(ScriptEngineTest, NumberTextFollowsTheLocale)
{
    ScopedNumberLocale comma(NumberLocale::comma());
    EXPECT_EQ(eval("1/4"), "Double 0,25");
    EXPECT_EQ(eval("CDbl(\"1,5\")"), "Double 1,5");
    EXPECT_EQ(eval("CDbl(\"1.500\")"), "Double 1500");
}

} // namespace
