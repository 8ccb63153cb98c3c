#include "values/ReadValues.h"

#include "runtime/Clock.h"
#include "values/ScriptClass.h"

#include <functional>
#include <gtest/gtest.h>

using namespace corvalog;

namespace {

class Host final : public ReadValuesHost
{
public:
    bool suppress = false;
    std::vector<std::string> labels;
    std::function<void()> onEvents = [] {};

    bool suppressReadingLabel() const override { return suppress; }
    void setReadingLabel(const std::string &text) override { labels.push_back(text); }
    void processEvents() override { onEvents(); }
    std::string panelTitle(int n) const override { return "Panel " + std::to_string(n); }
};

class ReadValuesTest : public ::testing::Test
{
public:
    ManualClock clock { 46000.5 };
    ScriptClass tables { clock };
    ScriptEngine engine { tables };
    WorkspaceClass workspace;
    ChannelValues values;
    Host host;

    // Channels defined by (expression, function), with no Default.
    void define(const std::vector<std::pair<std::string, int>> &channels)
    {
        workspace.Items.assign(channels.size(), ItemClass {});
        for (std::size_t i = 0; i < channels.size(); ++i) {
            workspace.Items[i].DataTagList = channels[i].first;
            workspace.Items[i].Functionality = static_cast<ChannelFunction>(channels[i].second);
            workspace.Items[i].Timeout = 3;
            workspace.Items[i].Default = std::nullopt;
        }
        values = ChannelValues(); // a filter's state is its output: every case starts from 0
        prepareChannels(workspace, values);
    }

    void cycle() { ReadValues(workspace, values, engine, host); }
};

TEST_F(ReadValuesTest, FunctionsShapeTheOutput)
{
    const struct {
        const char *name;
        int function;
        std::vector<float> inputs;
        float tare;
        std::vector<float> expected;
    } cases[] = {
        { "none, tared", 0, { 10, 12 }, 2, { 8, 10 } },
        { "light filter", 3, { 100, 100, 100 }, 0, { 50, 75, 87.5f } },
        { "medium filter", 4, { 100, 100 }, 0, { 10, 19 } },
        { "heavy filter", 5, { 100 }, 0, { 5 } },
        { "filter of the tared value", 3, { 100, 100 }, 20, { 40, 60 } },
        { "peak, untared", 1, { 5, 3, 8, 8 }, 7, { 5, 5, 8, 8 } },
        { "trough", 2, { 5, 7, 2 }, 0, { 5, 5, 2 } },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        define({ { "<0001>", c.function } });
        workspace.item(1).TareValue = c.tare;
        std::vector<float> got;
        for (const float input : c.inputs) {
            tables.setT(1, input);
            cycle();
            got.push_back(values.output(1));
        }
        EXPECT_EQ(got, c.expected);
        const bool capture = c.function == 1 || c.function == 2;
        EXPECT_EQ(workspace.item(1).TareValue, capture ? 0.0f : c.tare); // capture forces 0
        EXPECT_EQ(tables.C(1), got.back());
        EXPECT_EQ(values.error(1), 0);
    }
}

TEST_F(ReadValuesTest, SilentOrFaultyModulesPutTheChannelInError)
{
    const struct {
        const char *name;
        double silence; // before the second cycle
        std::int16_t moduleError;
        const char *expression; // replaces the channel's, when given
        std::optional<float> defaultValue;
        float expected; // the output after the second cycle; the first cycle showed 7
    } cases[] = {
        { "timed out, default shown", 5, 0, nullptr, 42.0f, 42 },
        { "timed out, no default: the last output stays", 5, 0, nullptr, std::nullopt, 7 },
        { "module reports an error", 0, 4, nullptr, -1.0f, -1 },
        { "expression fails", 0, 0, "T(1)/0", std::nullopt, 7 },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        define({ { "<0001>", 0 } });
        workspace.item(1).Default = c.defaultValue;
        tables.setTE(1, 0);
        tables.setT(1, 7); // fresh again
        cycle();
        ASSERT_EQ(values.output(1), 7);
        clock.advanceSeconds(c.silence);
        tables.setTE(1, c.moduleError);
        if (c.expression)
            workspace.item(1).DataTagExpression = c.expression;
        cycle();
        EXPECT_EQ(values.output(1), c.expected);
        EXPECT_EQ(values.error(1), -1);
        EXPECT_EQ(tables.CE(1), -1);
    }
}

TEST_F(ReadValuesTest, AFilterRestartsFromItsFirstGoodValueAfterAnError)
{
    const struct {
        const char *name;
        int function;
        std::optional<float> defaultValue;
        bool timeOut; // else the module reports an error
        std::vector<float> expected; // after the error cycle, the module back at 100, 100
    } cases[] = {
        { "light, default shown while silent", 3, -9999999.0f, true, { -9999999.0f, 100, 100 } },
        { "medium, module error, no default", 4, std::nullopt, false, { 10, 100, 100 } },
        { "heavy, default shown", 5, 0.0f, false, { 0, 100, 100 } },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        define({ { "<0001>", c.function } });
        workspace.item(1).Default = c.defaultValue;
        tables.setTE(1, 0);
        tables.setT(1, 100);
        cycle(); // the filter's first step from 0
        if (c.timeOut)
            clock.advanceSeconds(5);
        else
            tables.setTE(1, 1);
        cycle();
        std::vector<float> got { values.output(1) };
        tables.setTE(1, 0);
        tables.setT(1, 100);
        cycle();
        got.push_back(values.output(1));
        cycle();
        got.push_back(values.output(1));
        EXPECT_EQ(got, c.expected);
        EXPECT_EQ(values.error(1), 0);
    }
}

TEST_F(ReadValuesTest, AFilterWaitsForAGoodReadingBeforeItRestarts)
{
    define({ { "<0001>", 3 } });
    workspace.item(1).Default = 5.0f;
    tables.setT(1, 100);
    tables.setTE(1, 1);
    cycle();
    ASSERT_EQ(values.output(1), 5);
    tables.setTE(1, 0);
    workspace.item(1).DataTagExpression = "T(1)/0"; // back from the module, but failing
    cycle();
    EXPECT_EQ(values.output(1), 5);
    EXPECT_EQ(values.error(1), -1);
    workspace.item(1).DataTagExpression = "T(1)";
    cycle();
    EXPECT_EQ(values.output(1), 100);
}

TEST_F(ReadValuesTest, LowerChannelsAreFreshHigherOnesACycleLate)
{
    define({ { "<2>*10", 0 }, { "<0001>", 0 }, { "<2>+1", 0 } });
    tables.setT(1, 5);
    cycle();
    EXPECT_EQ(values.output(1), 0); // channel 2 not evaluated yet
    EXPECT_EQ(values.output(3), 6); // channel 2 of this cycle
    cycle();
    EXPECT_EQ(values.output(1), 50);
}

TEST_F(ReadValuesTest, IndicatorsArePublished)
{
    define({ { "<0001>+<0002>", 0 } });
    tables.setT(1, 1);
    tables.setT(2, 2);
    tables.setTL(1, 80);
    tables.setTL(2, 35);
    tables.setTB(2, 1);
    cycle();
    EXPECT_EQ(tables.CL(1), 35); // the weakest
    EXPECT_EQ(tables.CB(1), -1);
}

TEST_F(ReadValuesTest, TheLabelNamesEachChannelAndAChangedWorkspaceEndsTheCycle)
{
    define({ { "1", 0 }, { "2", 0 }, { "3", 0 } });
    host.onEvents = [&] {
        if (host.labels.size() == 2)
            workspace.Items.pop_back(); // a workspace edit while events run
    };
    cycle();
    EXPECT_EQ(host.labels,
        std::vector<std::string>({ "Reading from: Panel 1", "Reading from: Panel 2" }));
    EXPECT_EQ(values.output(1), 1);
    EXPECT_EQ(values.output(2), 0);

    host.labels.clear();
    host.suppress = true;
    cycle();
    EXPECT_TRUE(host.labels.empty());
    EXPECT_EQ(values.output(2), 2);
}

} // namespace
