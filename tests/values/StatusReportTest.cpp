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

// Tags FF12 and 0012 fresh and strong, channel 3 strong, unless a test says otherwise.
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

    StatusReportTest()
    {
        for (const std::int32_t tag : { kFF12, k0012 }) {
            sclass.setT(tag, 1.0f);
            sclass.setTL(tag, 100);
        }
        sclass.setCL(3, 100);
    }

    void setChannel1(const std::string &typed, std::int16_t timeout = 5)
    {
        workspace.item(1).DataTagList = typed;
        workspace.item(1).Timeout = timeout;
        ChannelValues values;
        prepareChannels(workspace, values); // derives the five scripts
    }

    std::string report(int n) { return StatusReport(n, workspace, engine, titles); }

    std::string listing(const std::string &expression, const char *cp, const char *tp)
    {
        return ReferenceListing(expression, cp, tp, engine, titles);
    }
};

TEST_F(StatusReportTest, ReportsTheSectionsThatApplyInOrder)
{
    setChannel1("(<FF12>+<0012>)/2-<3>");
    sclass.setTL(kFF12, 50); // 50 is no low link quality
    RecordingDisplay display;
    ShowStatusReport(1, workspace, engine, titles, display);
    EXPECT_TRUE(display.shown.empty());
    const int past = static_cast<int>(workspace.Items.size()) + 1; // no such channels
    EXPECT_EQ(report(0) + report(past), "");

    clock.advanceSeconds(10);
    sclass.setT(k0012, 2.0f);
    sclass.setTB(k0012, 1);
    sclass.setTE(kFF12, 1);
    sclass.setTL(k0012, 0);
    ShowStatusReport(1, workspace, engine, titles, display);
    EXPECT_EQ(display.shown,
        std::vector<std::string> { "Status Report Channel 1|" + kTimedOut
            + " Module Data Tag FF12\r\n"
            + "The following items have reported an error: \r\n Module Data Tag FF12\r\n" + kLowLqi
            + " Module Data Tag 0012\r\n"
            + "The following items have reported low battery: \r\n Module Data Tag 0012\r\n" });

    // The channel's own timeout is used, and the one the cycle left is kept.
    sclass.SetTimeout(100);
    sclass.setTE(kFF12, 0);
    setChannel1("<FF12>", 5);
    EXPECT_EQ(report(1), kTimedOut + " Module Data Tag FF12\r\n");
    EXPECT_EQ(sclass.timeout(), 100);
    setChannel1("<FF12>/0"); // an expression error hides the timeouts
    EXPECT_EQ(
        report(1), "There is an error in the expression for this channel: Division by zero\r\n");
    setChannel1("5"); // an empty LQI script is Empty, below 50: the heading stands alone
    EXPECT_EQ(report(1), kLowLqi);
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
    const std::string ff12 = " Module Data Tag FF12\r\n";
    const std::string flow = " Displayed Channel 3 (Flow)\r\n";
    EXPECT_EQ(
        listing("<FF12>-<0012>*<FF12>", "CT", "TT"), ff12 + " Module Data Tag 0012\r\n" + ff12);
    EXPECT_EQ(listing("<00FF12>", "CT", "TT"), ff12); // the rightmost four digits
    EXPECT_EQ(listing("<WXYZ>+<FF12>", "CT", "TT"), ff12); // not hexadecimal: never listed
    EXPECT_EQ(listing("<0>", "CE", "TE"), " Displayed Channel 0 ()\r\n"); // no panel, no title
    EXPECT_EQ(listing("<25>", "CE", "TE"), "");
    EXPECT_EQ(listing("<3>+<4>+<FF12>", "CL", "TL"), flow); // 49 is low, 50 is not
    EXPECT_EQ(listing("<3>+<4", "CE", "TE"), flow); // a "<" nothing closes ends the scan
    EXPECT_EQ(listing("<<3>>", "CE", "TE"), ""); // the first "<" opens
}

} // namespace
} // namespace corvalog
