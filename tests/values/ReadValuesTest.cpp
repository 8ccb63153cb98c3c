#include "values/ReadValues.h"

#include "runtime/Clock.h"
#include "values/ScriptClass.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>

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
    std::unique_ptr<ScriptClass> tables = std::make_unique<ScriptClass>(clock);
    std::unique_ptr<ScriptEngine> engine = std::make_unique<ScriptEngine>(*tables);
    WorkspaceClass workspace;
    ChannelValues values;
    Host host;

    // Channels defined by (expression, function); Default none unless set afterwards.
    void define(const std::vector<std::pair<std::string, int>> &channels)
    {
        workspace.Items.assign(channels.size(), ItemClass {});
        workspace.Channels = static_cast<std::int16_t>(channels.size());
        for (std::size_t i = 0; i < channels.size(); ++i) {
            ItemClass &item = workspace.Items[i];
            item.DataTagList = channels[i].first;
            item.Functionality = static_cast<std::int16_t>(channels[i].second);
            item.Timeout = 3;
            item.Default = std::nullopt;
        }
        values = ChannelValues(); // a filter's state is its output: every case starts from 0
        prepareChannels(workspace, values);
    }

    void send(std::int32_t tag, float value) { tables->setT(tag, value); }

    std::vector<float> outputs(int cycles, const std::function<void(int)> &before = {})
    {
        std::vector<float> seen;
        for (int c = 0; c < cycles; ++c) {
            if (before)
                before(c);
            ReadValues(workspace, values, *engine, host);
            seen.push_back(values.output(1));
        }
        return seen;
    }
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
        define({ { "<0001>", c.function } });
        workspace.item(1).TareValue = c.tare;
        const std::vector<float> got = outputs(static_cast<int>(c.inputs.size()),
            [&](int cycle) { send(1, c.inputs[static_cast<std::size_t>(cycle)]); });
        EXPECT_EQ(got, c.expected) << c.name;
        if (c.function == 1 || c.function == 2) {
            EXPECT_EQ(workspace.item(1).TareValue, 0.0f) << c.name; // capture forces the tare to 0
        }
        EXPECT_EQ(tables->C(1), got.back()) << c.name;
        EXPECT_EQ(values.error(1), 0) << c.name;
    }
}

TEST_F(ReadValuesTest, SilentOrFaultyModulesPutTheChannelInError)
{
    const struct {
        const char *name;
        std::function<void(ReadValuesTest &)> prepare;
        std::optional<float> defaultValue;
        float expected; // the output after the second cycle; the first cycle showed 7
    } cases[] = {
        { "timed out, default shown", [](ReadValuesTest &t) { t.clock.advanceSeconds(5); }, 42.0f,
            42 },
        { "timed out, no default: the last output stays",
            [](ReadValuesTest &t) { t.clock.advanceSeconds(5); }, std::nullopt, 7 },
        { "module reports an error", [](ReadValuesTest &t) { t.tables->setTE(1, 4); }, -1.0f, -1 },
        { "expression fails",
            [](ReadValuesTest &t) { t.workspace.item(1).DataTagExpression = "T(1)/0"; },
            std::nullopt, 7 },
    };
    for (const auto &c : cases) {
        define({ { "<0001>", 0 } });
        workspace.item(1).Default = c.defaultValue;
        send(1, 7);
        ReadValues(workspace, values, *engine, host);
        ASSERT_EQ(values.output(1), 7) << c.name;
        c.prepare(*this);
        ReadValues(workspace, values, *engine, host);
        EXPECT_EQ(values.output(1), c.expected) << c.name;
        EXPECT_EQ(values.error(1), -1) << c.name;
        EXPECT_EQ(tables->CE(1), -1) << c.name;
        clock.set(46000.5); // fresh tables for the next case
        tables = std::make_unique<ScriptClass>(clock);
        engine = std::make_unique<ScriptEngine>(*tables);
    }
}

TEST_F(ReadValuesTest, LowerChannelsAreFreshHigherOnesACycleLate)
{
    define({ { "<2>*10", 0 }, { "<0001>", 0 }, { "<2>+1", 0 } });
    send(1, 5);
    ReadValues(workspace, values, *engine, host);
    EXPECT_EQ(values.output(1), 0); // channel 2 not evaluated yet
    EXPECT_EQ(values.output(3), 6); // channel 2 of this cycle
    ReadValues(workspace, values, *engine, host);
    EXPECT_EQ(values.output(1), 50);
}

TEST_F(ReadValuesTest, IndicatorsArePublished)
{
    define({ { "<0001>+<0002>", 0 } });
    send(1, 1);
    send(2, 2);
    tables->setTL(1, 80);
    tables->setTL(2, 35);
    tables->setTB(2, 1);
    ReadValues(workspace, values, *engine, host);
    EXPECT_EQ(tables->CL(1), 35);
    EXPECT_EQ(tables->CB(1), -1);
    EXPECT_EQ(tables->C(1), 3);
}

TEST_F(ReadValuesTest, TheLabelNamesEachChannelAndAChangedWorkspaceEndsTheCycle)
{
    define({ { "1", 0 }, { "2", 0 }, { "3", 0 } });
    host.onEvents = [&] {
        if (host.labels.size() == 2)
            workspace.Items.pop_back(); // a workspace edit while events run
    };
    ReadValues(workspace, values, *engine, host);
    EXPECT_EQ(host.labels,
        std::vector<std::string>({ "Reading from: Panel 1", "Reading from: Panel 2" }));
    EXPECT_EQ(values.output(1), 1);
    EXPECT_EQ(values.output(2), 0);

    host.labels.clear();
    host.suppress = true;
    ReadValues(workspace, values, *engine, host);
    EXPECT_TRUE(host.labels.empty());
    EXPECT_EQ(values.output(2), 2);
}

} // namespace
