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

TEST(PanelState, WhatAPanelShowsFollowsTheChannel)
{
    ManualClock clock { 46000.5 };
    ScriptClass tables { clock };
    ScriptEngine engine { tables };
    const struct {
        const char *name;
        float output;
        bool inError;
        float tare;
        const char *lqi; // the link-quality script
        const char *batt;
        bool commaDecimal;
        PanelState expected;
    } cases[] = {
        { "on a limit: no flash", 10, false, 0, "55", "True", false,
            { "10.0", false, kSystem3DLight, 55, true, false } },
        { "just beyond the overload", 10.01f, false, 0, "", "", false,
            { "10.0", true, kSystem3DLight, 0, false, false } },
        { "below the underload, tared", -0.5f, false, 2, "", "", false,
            { "-0.5", true, kSystem3DLight, 0, false, true } },
        { "in error: dashes on red, no indicators", 5, true, 2, "55", "True", false,
            { kNoValue, false, kPureRed, 0, false, true } },
        { "failing indicator scripts read as 0", 1, false, 0, "1/0", "Nope(1)", false,
            { "1.0", false, kSystem3DLight, 0, false, false } },
        { "decimal comma shown as the point", 1.5f, false, 0, "", "", true,
            { "1.5", false, kSystem3DLight, 0, false, false } },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        ScopedNumberLocale locale(c.commaDecimal ? NumberLocale::comma() : NumberLocale::point());
        ItemClass item;
        item.Format = "0.0";
        item.Underload = 0;
        item.Overload = 10;
        item.TareValue = c.tare;
        item.DataTagLQIScript = c.lqi;
        item.DataTagBattScript = c.batt;
        ChannelValues values;
        values.output(3) = c.output;
        values.error(3) = c.inError ? -1 : 0;
        const PanelState s = panelState(item, 3, values, engine, c.commaDecimal);
        EXPECT_EQ(s.text, c.expected.text);
        EXPECT_EQ(s.flash, c.expected.flash);
        EXPECT_EQ(s.ground, c.expected.ground);
        EXPECT_EQ(s.linkQuality, c.expected.linkQuality);
        EXPECT_EQ(s.lowBattery, c.expected.lowBattery);
        EXPECT_EQ(s.tared, c.expected.tared);
    }
}

TEST(PanelState, TheDecimalMarkIsAlwaysThePoint)
{
    const struct {
        const char *formatted;
        bool commaDecimal;
        const char *shown;
    } cases[] = {
        { "1,234.50", false, "1,234.50" },
        { "1.234,50", true, "1,234.50" },
        { "-0,1", true, "-0.1" },
        { "42", true, "42" },
    };
    for (const auto &c : cases)
        EXPECT_EQ(panelText(c.formatted, c.commaDecimal), c.shown) << c.formatted;
}

} // namespace
