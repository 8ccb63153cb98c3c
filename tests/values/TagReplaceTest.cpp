#include "values/TagReplace.h"

#include "TagReplaceLiteral.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace corvalog {
namespace {

std::vector<std::string> allFive(const RewrittenExpression &r)
{
    return { r.expression, r.errorScript, r.lqiScript, r.battScript, r.timeoutScript };
}

TEST(TagReplace, WorkedExampleGivesAllFiveTexts)
{
    EXPECT_EQ(allFive(rewriteExpression("(<FF12>+<0012>)/2-<3>")),
        std::vector<std::string>({ "(T(65298)+T(18))/2-C(3)", "TE(18) OR TE(65298) OR CE(3)",
            "Min(TL(18),TL(65298),CL(3))", "TB(18) OR TB(65298) OR CB(3)",
            "TT(18) OR TT(65298) OR CT(3)" }));
}

// The rewritten expression and error script, from the fast rewriting; the literal one must give
// the same five texts.
std::string rewritten(const std::string &source)
{
    const RewrittenExpression fast = rewriteExpression(source);
    EXPECT_EQ(rewriteReferences(source), fast.expression) << source;
    EXPECT_EQ(allFive(rewriteExpressionLiteral(source)), allFive(fast)) << source;
    return fast.expression + " | " + fast.errorScript;
}

TEST(TagReplace, FastAndLiteralGiveTheExpectedText)
{
    EXPECT_EQ(rewritten("<3>+<3>"), "C(3)+C(3) | CE(3)");
    EXPECT_EQ(rewritten("<24>+<25>"), "C(24)+<25> | CE(24)");
    EXPECT_EQ(rewritten("<0>+<03>+<003>"), "<0>+<03>+<003> | ");
    EXPECT_EQ(rewritten("<0000>+<FFFF>+<ff12>"), "<0000>+<FFFF>+<ff12> | ");
    EXPECT_EQ(rewritten("<<FF12>>"), "<T(65298)> | TE(65298)");
    EXPECT_EQ(rewritten("<3>+<FFFE>*<1>-<0001>"),
        "C(3)+T(65534)*C(1)-T(1) | TE(1) OR TE(65534) OR CE(1) OR CE(3)");
    EXPECT_EQ(rewritten("<FF1G>+<0FF12>"), "<FF1G>+<0FF12> | ");
    EXPECT_EQ(rewritten("\xC3<0001>\xFF<\xB3>"), "\xC3T(1)\xFF<\xB3> | TE(1)");
}

TEST(TagReplace, TheFirstDataTagOfAnExpression)
{
    EXPECT_EQ(firstDataTag("<3>*<0a1e>+<0A1E>"), 0x0A1E); // lower case is no reference
    EXPECT_EQ(firstDataTag("<12>+<+1AB>+<12345>+<0000>+<FFFF>"), -1);
    EXPECT_EQ(firstDataTag("<1 <BEEF>"), 0xBEEF);
    EXPECT_EQ(firstDataTag("<FF12"), -1);
}

// Random texts built from the pieces that matter (references whole, broken, joined from halves,
// out of range, in lower case or with leading zeros, and arbitrary bytes) must rewrite exactly as
// the literal passes do.
TEST(TagReplace, MatchesLiteralAlgorithmOnGeneratedExpressions)
{
    std::mt19937 rng(20240611);
    const auto pick = [&rng](std::size_t n) { return rng() % n; };
    const std::string pieces[] = { "<", ">", "<<", ">>", "<FF1", "2>", "<1", "<2", "4>", "5>", "<0",
        "3>", "<FF12>", "<0012>", "<3>", "<24>", "<0001>", "<FFFE>", "+", "*", " ", "2", "ff",
        "\xC3", "\xFF" };
    // The literal algorithm takes milliseconds an expression; the fuzz target runs millions.
    for (int n = 0; n < 150 && !::testing::Test::HasFailure(); ++n) {
        std::string source;
        for (std::size_t p = 1 + pick(10); p > 0; --p) {
            char tag[8]; // any Data Tag, sometimes in lower case
            std::snprintf(
                tag, sizeof tag, pick(5) ? "<%04X>" : "<%04x>", static_cast<unsigned>(pick(65536)));
            source += pick(4) ? pieces[pick(std::size(pieces))] : std::string(tag);
        }
        const RewrittenExpression literal = rewriteExpressionLiteral(source);
        EXPECT_EQ(allFive(rewriteExpression(source)), allFive(literal)) << "source: " << source;
        EXPECT_EQ(rewriteReferences(source), literal.expression) << "source: " << source;
    }
}

} // namespace
} // namespace corvalog
