#include "values/PanelState.h"

#include "runtime/Clock.h"
#include "runtime/NumberLocale.h"
#include "values/ChannelValues.h"
#include "values/ScriptClass.h"
#include "values/ScriptEngine.h"
#include "workspace/ItemClass.h"

#include <gtest/gtest.h>

using namespace corvalog;

namespace {

// "10.0 flash red 55% low-battery tared", leaving out what is off.
std::string shown(const PanelState &s)
{
    std::string out = s.text + (s.flash ? " flash" : "") + (s.ground == kPureRed ? " red" : "");
    if (s.linkQuality != 0)
        out += " " + std::to_string(static_cast<int>(s.linkQuality)) + "%";
    return out + (s.lowBattery ? " low-battery" : "") + (s.tared ? " tared" : "");
}

TEST(PanelState, WhatAPanelShowsFollowsTheChannel)
{
    ManualClock clock { 46000.5 };
    ScriptClass tables { clock };
    ScriptEngine engine { tables };
    const struct {
        float output;
        bool inError;
        float tare;
        const char *lqi; // the link-quality script
        const char *batt;
        bool commaDecimal;
        const char *expected;
    } cases[] = {
        { 10, false, 0, "55", "True", false, "10.0 55% low-battery" }, // on a limit: no flash
        { 10.01f, false, 0, "", "", false, "10.0 flash" },
        { -0.5f, false, 2, "", "", false, "-0.5 flash tared" },
        { 5, true, 2, "55", "True", false, "------- red tared" }, // in error: no indicators
        { 1, false, 0, "1/0", "Nope(1)", false, "1.0" }, // failing indicator scripts read as 0
        { 1234.5f, false, 0, "", "", true, "1,234.5 flash" }, // the display's mark is the point
    };
    for (const auto &c : cases) {
        ScopedNumberLocale locale(c.commaDecimal ? NumberLocale::comma() : NumberLocale::point());
        ItemClass item;
        item.Format = "#,##0.0";
        item.Underload = 0;
        item.Overload = 10;
        item.TareValue = c.tare;
        item.DataTagLQIScript = c.lqi;
        item.DataTagBattScript = c.batt;
        ChannelValues values;
        values.output(3) = c.output;
        values.error(3) = c.inError ? -1 : 0;
        EXPECT_EQ(shown(panelState(item, 3, values, engine, c.commaDecimal)), c.expected)
            << c.output;
    }
}

} // namespace
