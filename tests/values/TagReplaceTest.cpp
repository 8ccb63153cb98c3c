#include "values/TagReplace.h"

#include "TagReplaceLiteral.h"

#include <gtest/gtest.h>
#include <random>
#include <string>

namespace corvalog {
namespace {

void expectSame(const RewrittenExpression &actual, const RewrittenExpression &expected,
    const std::string &source)
{
    EXPECT_EQ(actual.expression, expected.expression) << "source: " << source;
    EXPECT_EQ(actual.errorScript, expected.errorScript) << "source: " << source;
    EXPECT_EQ(actual.lqiScript, expected.lqiScript) << "source: " << source;
    EXPECT_EQ(actual.battScript, expected.battScript) << "source: " << source;
    EXPECT_EQ(actual.timeoutScript, expected.timeoutScript) << "source: " << source;
}

TEST(TagReplace, WorkedExampleGivesAllFiveTexts)
{
    const RewrittenExpression r = rewriteExpression("(<FF12>+<0012>)/2-<3>");
    EXPECT_EQ(r.expression, "(T(65298)+T(18))/2-C(3)");
    EXPECT_EQ(r.errorScript, "TE(18) OR TE(65298) OR CE(3)");
    EXPECT_EQ(r.lqiScript, "Min(TL(18),TL(65298),CL(3))");
    EXPECT_EQ(r.battScript, "TB(18) OR TB(65298) OR CB(3)");
    EXPECT_EQ(r.timeoutScript, "TT(18) OR TT(65298) OR CT(3)");
}

struct RewriteCase {
    const char *name;
    std::string source;
    std::string expression;
    std::string errorScript; // the other scripts follow it; the literal comparison checks them
};

TEST(TagReplace, FastAndLiteralGiveTheExpectedText)
{
    const RewriteCase cases[] = {
        { "TagTimesTwo", "<FF12>*2", "T(65298)*2", "TE(65298)" },
        { "ChannelTwiceCountsOnce", "<3>+<3>", "C(3)+C(3)", "CE(3)" },
        { "LowerCaseHexStays", "<ff12>", "<ff12>", "" },
        { "TagZeroStays", "<0000>", "<0000>", "" },
        { "TagFFFFStays", "<FFFF>+1", "<FFFF>+1", "" },
        { "Channel25Stays", "<25>", "<25>", "" },
        { "Channel24", "<24>", "C(24)", "CE(24)" },
        { "Channel0Stays", "<0>", "<0>", "" },
        { "ChannelLeadingZeroStays", "<03>+<003>", "<03>+<003>", "" },
        { "Empty", "", "", "" },
        { "DoubleBracketsAroundTag", "<<FF12>>", "<T(65298)>", "TE(65298)" },
        { "FourDigitsAreATag", "<0012>+<12>", "T(18)+C(12)", "TE(18) OR CE(12)" },
        { "TagsThenChannelsInNumericOrder", "<3>+<FFFE>*<1>-<0001>", "C(3)+T(65534)*C(1)-T(1)",
            "TE(1) OR TE(65534) OR CE(1) OR CE(3)" },
        { "StrayBrackets", "<FF12 > <FF12 <<>> FF12> <", "<FF12 > <FF12 <<>> FF12> <", "" },
        { "UnclosedThenTag", "<<<0001>", "<<T(1)", "TE(1)" },
        { "AdjacentReferences", "<1><2><0002>", "C(1)C(2)T(2)", "TE(2) OR CE(1) OR CE(2)" },
        { "NonHexDigit", "<FF1G>", "<FF1G>", "" },
        { "FiveDigits", "<0FF12>", "<0FF12>", "" },
        { "NonAsciiBytes", "\xC3<0001>\xFF<\xB3>", "\xC3T(1)\xFF<\xB3>", "TE(1)" },
    };
    for (const RewriteCase &c : cases) {
        const RewrittenExpression fast = rewriteExpression(c.source);
        EXPECT_EQ(fast.expression, c.expression) << c.name;
        EXPECT_EQ(fast.errorScript, c.errorScript) << c.name;
        EXPECT_EQ(fast.lqiScript.empty(), c.errorScript.empty()) << c.name;
        EXPECT_EQ(rewriteReferences(c.source), c.expression) << c.name;
        expectSame(rewriteExpressionLiteral(c.source), fast, c.source);
    }
}

// Random texts built from the pieces that matter (well-formed and broken references, brackets,
// lower case, leading zeros, arbitrary bytes) must rewrite exactly as the literal passes do.
TEST(TagReplace, TheFirstDataTagOfAnExpression)
{
    const struct {
        const char *expression;
        std::int32_t tag;
    } cases[] = {
        { "(<FF12>+<0012>)/2", 0xFF12 },
        { "<3>*<0a1e>+<0A1E>", 0x0A1E }, // lower case is no reference
        { "<12>+<+1AB>+<12345>+<0000>+<FFFF>", -1 },
        { "<1 <BEEF>", 0xBEEF },
        { "2*PI", -1 },
        { "<FF12", -1 },
    };
    for (const auto &c : cases)
        EXPECT_EQ(firstDataTag(c.expression), c.tag) << c.expression;
}

TEST(TagReplace, MatchesLiteralAlgorithmOnGeneratedExpressions)
{
    std::mt19937 rng(20240611);
    auto pick = [&rng](int n) { return static_cast<int>(rng() % static_cast<unsigned>(n)); };
    const char *upperHex = "0123456789ABCDEF";
    const char *lowerHex = "0123456789abcdef";
    const std::string fixed[] = { "<", ">", "<<", ">>", "+", "*", "(", ")", "2", "PI", " ",
        "<0000>", "<FFFF>", "<FF12>", "<0012>", "<12>", "<<FF12>>", "<<3>>", "<1234>", "<00FF>" };
    const int sharedTags[] = { 1, 0x12, 0xFF12, 0xFFFE, 0x1234 };

    constexpr int kExpressions = 2500; // the literal algorithm takes about a millisecond each
    for (int n = 0; n < kExpressions; ++n) {
        std::string source;
        const int pieces = 1 + pick(10);
        for (int p = 0; p < pieces; ++p) {
            switch (pick(6)) {
            case 0:
                source += fixed[pick(sizeof fixed / sizeof fixed[0])];
                break;
            case 1: { // a tag, upper or lower case, often one that recurs
                const bool lower = pick(5) == 0;
                const int tag = pick(2) ? sharedTags[pick(5)] : pick(65536);
                source += '<';
                for (int shift = 12; shift >= 0; shift -= 4)
                    source += (lower ? lowerHex : upperHex)[(tag >> shift) & 15];
                source += '>';
                break;
            }
            case 2: // a channel, possibly out of range or with leading zeros
                source += '<' + std::string(pick(4) == 0 ? pick(3) : 0, '0')
                    + std::to_string(pick(30)) + '>';
                break;
            case 3: // a reference cut short or over-long
                source += '<' + std::string(1 + pick(5), upperHex[pick(16)]) + (pick(2) ? ">" : "");
                break;
            case 4:
                source += static_cast<char>(pick(256));
                break;
            default:
                source += std::to_string(pick(100));
                break;
            }
        }
        const RewrittenExpression literal = rewriteExpressionLiteral(source);
        const RewrittenExpression fast = rewriteExpression(source);
        expectSame(fast, literal, source);
        ASSERT_EQ(rewriteReferences(source), literal.expression) << "source: " << source;
        if (::testing::Test::HasFailure())
            break;
    }
}

} // namespace
} // namespace corvalog
