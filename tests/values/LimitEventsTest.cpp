#include "values/LimitEvents.h"

#include "runtime/NumberText.h"

#include <gtest/gtest.h>

namespace corvalog {
namespace {

// Channel 1 between 0 and 10 goes through a run of evaluations (value, in error); each
// evaluation's events as "kind value limit".
TEST(LimitEvents, EachCrossingIsOneEvent)
{
    struct Step {
        float value;
        bool error;
    };
    const struct Case {
        const char *name;
        std::vector<Step> steps;
        std::vector<std::string> events;
    } cases[] = {
        { "exactly at the limits", { { 10, false }, { 0, false }, { 5, false } }, {} },
        { "flapping", { { 10.5f, false }, { 9, false }, { 10.5f, false }, { 10, false } },
            { "over 10.5 10", "in range 9 10", "over 10.5 10", "in range 10 10" } },
        { "under, then over at once", { { -1, false }, { 11, false }, { 11, false } },
            { "under -1 0", "over 11 10" } },
        { "into error and out", { { 5, true }, { 5, false }, { 12, true }, { 12, false } },
            { "error 5 -", "recovered 5 -", "error 12 -", "recovered 12 -", "over 12 10" } },
        { "error while out of range", { { 11, false }, { 11, true }, { 3, false } },
            { "over 11 10", "error 11 -", "recovered 3 -" } },
    };
    for (const Case &c : cases) {
        WorkspaceClass workspace;
        workspace.Channels = 1;
        workspace.Items.assign(1, ItemClass {});
        workspace.item(1).Underload = 0;
        workspace.item(1).Overload = 10;
        ChannelValues values;
        LimitWatch watch;
        std::vector<std::string> seen;
        for (const Step &s : c.steps) {
            values.output(1) = s.value;
            values.error(1) = s.error ? -1 : 0;
            for (const LimitEvent &e : watch.update(workspace, values)) {
                EXPECT_EQ(e.channel, 1);
                seen.push_back(std::string(e.kind) + " " + singleText(e.value, '.') + " "
                    + (e.limit ? singleText(*e.limit, '.') : "-"));
            }
        }
        EXPECT_EQ(seen, c.events) << c.name;
    }
}

// Channels are followed each on their own, and a reset starts every channel in range again.
TEST(LimitEvents, ChannelsAreFollowedApartAndAResetStartsAfresh)
{
    WorkspaceClass workspace;
    workspace.Channels = 3;
    workspace.Items.assign(3, ItemClass {});
    for (int n = 1; n <= 3; ++n) {
        workspace.item(n).Underload = -1;
        workspace.item(n).Overload = 1;
    }
    ChannelValues values;
    values.output(2) = 2;
    values.output(3) = -2;
    LimitWatch watch;
    const std::vector<LimitEvent> first = watch.update(workspace, values);
    ASSERT_EQ(first.size(), 2u);
    EXPECT_EQ(first[0].channel, 2);
    EXPECT_STREQ(first[0].kind, "over");
    EXPECT_EQ(first[1].channel, 3);
    EXPECT_STREQ(first[1].kind, "under");
    EXPECT_TRUE(watch.update(workspace, values).empty());
    watch.reset();
    EXPECT_EQ(watch.update(workspace, values).size(), 2u);
}

} // namespace
} // namespace corvalog
