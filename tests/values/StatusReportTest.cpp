#include "values/StatusReport.h"

#include "runtime/Clock.h"
#include "values/ChannelValues.h"
#include "values/ReadValues.h"
#include "values/ScriptClass.h"
#include "values/ScriptEngine.h"
#include "values/StatusDisplay.h"
#include "workspace/WorkspaceClass.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace corvalog {
namespace {

constexpr std::int32_t kFF12 = 0xFF12;
constexpr std::int32_t k0012 = 0x0012;

const std::string kTimedOut = "The following items have timed out: \r\n";
const std::string kLowLqi = "The following items have reported low LQI: \r\n";

class RecordingDisplay : public StatusDisplay
{
public:
    void ShowMessage(const std::string &message, const std::string &title) override
    {
        shown.push_back(title + "|" + message);
    }
    bool StatusClosed() const override { return false; }
    std::vector<std::string> shown;
};

class StatusReportTest : public ::testing::Test
{
protected:
    ManualClock clock { 46000.5 };
    ScriptClass sclass { clock };
    ScriptEngine engine { sclass };
    WorkspaceClass workspace;
    // Only panels that exist may be asked for their title.
    PanelTitleFn titles = [](int n) {
        EXPECT_TRUE(n >= 1 && n <= 24) << "title of panel " << n;
        return n == 3 ? std::string("Flow") : "Panel " + std::to_string(n);
    };

    void setChannel1(const std::string &typed, std::int16_t timeout = 5)
    {
        workspace.item(1).DataTagList = typed;
        workspace.item(1).Timeout = timeout;
        ChannelValues values;
        prepareChannels(workspace, values); // derives the five scripts
    }
};

TEST_F(StatusReportTest, ReportsTheSectionsThatApply)
{
    const std::string both = "(<FF12>+<0012>)/2-<3>";
    const struct {
        const char *name;
        std::string typed;
        std::function<void(ScriptClass &, ManualClock &)> prepare; // on fresh, strong tags
        std::string expected;
    } cases[] = {
        { "AllGoodIsEmpty", both, [](ScriptClass &, ManualClock &) {}, "" },
        { "ExpressionErrorHidesTimeouts", "<FF12>/0",
            [](ScriptClass &, ManualClock &c) { c.advanceSeconds(60); },
            "There is an error in the expression for this channel: Division by zero\r\n" },
        { "LqiOf50NeedsNoSection", both, [](ScriptClass &s, ManualClock &) { s.setTL(kFF12, 50); },
            "" },
        { "AllFourInOrder", both,
            [](ScriptClass &s, ManualClock &c) {
                c.advanceSeconds(10);
                s.setT(k0012, 2.0f);
                s.setTB(k0012, 1);
                s.setTE(kFF12, 1);
                s.setTL(k0012, 0);
            },
            kTimedOut + " Module Data Tag FF12\r\n"
                + "The following items have reported an error: \r\n Module Data Tag FF12\r\n"
                + kLowLqi + " Module Data Tag 0012\r\n"
                + "The following items have reported low battery: \r\n Module Data Tag 0012\r\n" },
        // An empty LQI script is Empty, which is below 50: the heading stands alone.
        { "NoReferencesShowsBareLqiHeading", "5", [](ScriptClass &, ManualClock &) {}, kLowLqi },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        ManualClock caseClock { 46000.5 };
        ScriptClass caseClass { caseClock };
        ScriptEngine caseEngine { caseClass };
        for (const std::int32_t tag : { kFF12, k0012 }) {
            caseClass.setT(tag, 1.0f);
            caseClass.setTL(tag, 100);
        }
        caseClass.setCL(3, 100);
        c.prepare(caseClass, caseClock);
        setChannel1(c.typed);

        RecordingDisplay display;
        ShowStatusReport(1, workspace, caseEngine, titles, display);
        if (c.expected.empty())
            EXPECT_TRUE(display.shown.empty());
        else
            EXPECT_EQ(display.shown,
                std::vector<std::string> { "Status Report Channel 1|" + c.expected });
    }
}

TEST_F(StatusReportTest, TimeoutIsTheChannelsOwnAndTheEnginesIsKept)
{
    sclass.setT(kFF12, 1.0f);
    sclass.setTL(kFF12, 100);
    clock.advanceSeconds(10);
    sclass.SetTimeout(100); // left by another channel of the cycle
    setChannel1("<FF12>", 5);
    EXPECT_EQ(StatusReport(1, workspace, engine, titles), kTimedOut + " Module Data Tag FF12\r\n");
    EXPECT_EQ(sclass.timeout(), 100);
}

TEST_F(StatusReportTest, ListingScansEveryBracketPair)
{
    // FF12 and 0012 silent, so TT is true for both; CE(0) and CE(3) set; CL(3) 49, CL(4) 50.
    clock.advanceSeconds(10);
    sclass.SetTimeout(5);
    sclass.setCE(0, 1);
    sclass.setCE(3, 1);
    sclass.setCL(3, 49);
    sclass.setCL(4, 50);
    sclass.setTL(kFF12, 100);
    const struct {
        const char *expression;
        const char *cp;
        const char *tp;
        std::string expected;
    } cases[] = {
        { "<FF12>-<0012>", "CT", "TT", " Module Data Tag FF12\r\n Module Data Tag 0012\r\n" },
        { "<FF12>*<FF12>", "CT", "TT", " Module Data Tag FF12\r\n Module Data Tag FF12\r\n" },
        { "<00FF12>", "CT", "TT", " Module Data Tag FF12\r\n" }, // rightmost four digits
        { "<WXYZ>+<FF12>", "CT", "TT", " Module Data Tag FF12\r\n" }, // not hexadecimal
        { "<0>", "CE", "TE", " Displayed Channel 0 ()\r\n" }, // no panel, no title
        { "<25>", "CE", "TE", "" },
        { "<3>+<4>+<FF12>", "CL", "TL", " Displayed Channel 3 (Flow)\r\n" }, // 49 yes, 50 no
        { "<3>+<4", "CE", "TE", " Displayed Channel 3 (Flow)\r\n" }, // unclosed ends the scan
        { "<<3>>", "CE", "TE", "" }, // the first "<" opens
    };
    for (const auto &c : cases)
        EXPECT_EQ(ReferenceListing(c.expression, c.cp, c.tp, engine, titles), c.expected)
            << c.expression;
}

} // namespace
} // namespace corvalog
