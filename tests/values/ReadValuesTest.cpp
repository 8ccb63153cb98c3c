#include "values/ReadValues.h"

#include "runtime/Clock.h"
#include "values/ScriptClass.h"

#include <cmath>
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

    // Channels defined by (expression, function).
    void define(const std::vector<std::pair<std::string, int>> &channels)
    {
        workspace.Items.assign(channels.size(), ItemClass {});
        for (std::size_t i = 0; i < channels.size(); ++i) {
            workspace.Items[i].DataTagList = channels[i].first;
            workspace.Items[i].Functionality = static_cast<ChannelFunction>(channels[i].second);
            workspace.Items[i].Timeout = 3;
        }
        values = ChannelValues(); // a filter's state is its output: every case starts from 0
        prepareChannels(workspace, values);
    }

    void cycle() { ReadValues(workspace, values, engine, host); }
};

// One cycle of channel 1 ("<0001>"): what the module sent, and what the channel showed.
struct Step {
    float input; // NAN: the module falls silent for longer than the timeout
    float output;
    std::int16_t error = 0;
    std::int16_t moduleError = 0;
    const char *expression = "T(1)"; // what the channel evaluates this cycle
};

TEST_F(ReadValuesTest, FunctionsErrorsAndDefaultsShapeTheOutput)
{
    const float silent = NAN;
    const struct {
        const char *name;
        int function;
        float tare;
        std::optional<float> defaultValue;
        std::vector<Step> steps;
    } runs[] = {
        { "none, tared", 0, 2, {}, { { 10, 8 }, { 12, 10 } } },
        { "light filter of the tared value", 3, 20, {}, { { 100, 40 }, { 100, 60 } } },
        { "medium filter", 4, 0, {}, { { 100, 10 }, { 100, 19 } } },
        { "heavy filter", 5, 0, {}, { { 100, 5 } } },
        { "peak, never tared", 1, 7, {}, { { 5, 5 }, { 3, 5 }, { 8, 8 } } },
        { "trough", 2, 0, {}, { { 5, 5 }, { 7, 5 }, { 2, 2 } } },
        { "timed out, default shown", 0, 0, 42.0f, { { 7, 7 }, { silent, 42, -1 } } },
        { "module reports an error", 0, 0, -1.0f, { { 7, 7 }, { 7, -1, -1, 4 } } },
        { "expression fails", 0, 0, {}, { { 7, 7 }, { 7, 7, -1, 0, "T(1)/0" } } },
        // After an error a filter restarts from its first good value, not from the Default.
        { "light filter, silent", 3, 0, -9999999.0f,
            { { 100, 50 }, { silent, -9999999.0f, -1 }, { 100, 100 }, { 100, 100 } } },
        { "medium filter, module error, no default: the last output stays", 4, 0, {},
            { { 100, 10 }, { 100, 10, -1, 1 }, { 100, 100 } } },
        { "light filter waits for a good reading", 3, 0, 5.0f,
            { { 100, 5, -1, 1 }, { 100, 5, -1, 0, "T(1)/0" }, { 100, 100 } } },
    };
    for (const auto &run : runs) {
        SCOPED_TRACE(run.name);
        define({ { "<0001>", run.function } });
        workspace.item(1).TareValue = run.tare;
        workspace.item(1).Default = run.defaultValue;
        for (std::size_t k = 0; k < run.steps.size(); ++k) {
            const Step &s = run.steps[k];
            if (std::isnan(s.input))
                clock.advanceSeconds(5);
            else
                tables.setT(1, s.input);
            tables.setTE(1, s.moduleError);
            workspace.item(1).DataTagExpression = s.expression;
            cycle();
            EXPECT_EQ(values.output(1), s.output) << "cycle " << k;
            EXPECT_EQ(values.error(1), s.error) << "cycle " << k;
            EXPECT_EQ(tables.CE(1), s.error) << "cycle " << k;
            if (s.error == 0) {
                EXPECT_EQ(tables.C(1), s.output) << "cycle " << k;
            }
        }
        const bool capture = run.function == 1 || run.function == 2;
        EXPECT_EQ(workspace.item(1).TareValue, capture ? 0.0f : run.tare); // capture forces 0
    }
}

TEST_F(ReadValuesTest, LowerChannelsAreFreshHigherOnesACycleLateAndIndicatorsArePublished)
{
    define({ { "<2>*10", 0 }, { "<0001>+<0002>", 0 }, { "<2>+1", 0 } });
    tables.setT(1, 5);
    tables.setT(2, 0);
    tables.setTL(1, 80);
    tables.setTL(2, 35);
    tables.setTB(2, 1);
    cycle();
    EXPECT_EQ(values.output(1), 0); // channel 2 not evaluated yet
    EXPECT_EQ(values.output(3), 6); // channel 2 of this cycle
    EXPECT_EQ(tables.CL(2), 35); // the weakest
    EXPECT_EQ(tables.CB(2), -1);
    cycle();
    EXPECT_EQ(values.output(1), 50);
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
