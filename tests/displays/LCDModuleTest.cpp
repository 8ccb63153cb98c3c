#include "displays/LCDModule.h"

#include "displays/eLCD.h"
#include "displays/eLCDText.h"

#include <QImage>
#include <gtest/gtest.h>

using namespace corvalog;

namespace {

TEST(LCDModule, TheBarIsTheLevelInFifthsOfTheBatteryMark)
{
    LCDModule panel;
    const int full = panel.lowBatteryMark()->width();
    // The link quality in percent and the level it shows.
    for (const auto &[lqi, level] : { std::pair(0.0f, 0), { 1.0f, 1 }, { 20.0f, 1 }, { 20.5f, 1 },
             { 21.0f, 2 }, { 100.0f, 5 }, { 120.0f, 6 } }) {
        panel.setLQI(lqi);
        EXPECT_EQ(panel.LQI(), level) << lqi;
        EXPECT_EQ(panel.lqiBar()->width(), static_cast<int>(full / 5.0 * level)) << lqi;
    }
}

// The colour in the number's ground, away from any digit.
QColor groundOf(LCDModule &panel)
{
    return panel.number()->grab().toImage().pixelColor(2, 2);
}

TEST(LCDModule, FlashingFollowsTheSharedPhaseOnlyInFlashMode)
{
    FlashPhase phase;
    LCDModule a, b;
    for (LCDModule *p : { &a, &b }) {
        p->InitFlashLabel(&phase);
        p->setBackColor(0xFFFFFF);
    }
    a.setFlashMode(true);
    phase.toggle();
    EXPECT_EQ(groundOf(a), QColor(Qt::red));
    EXPECT_EQ(groundOf(b), QColor(Qt::white)); // not flashing: the phase changes nothing
    EXPECT_EQ(a.netIndicator()->OffColor(), 0xFFFFFFu); // the marker's ghost does not blink
    phase.toggle();
    EXPECT_EQ(groundOf(a), QColor(Qt::white));

    // Switched off in the red phase, a panel stays red until the next BackColor write.
    phase.toggle();
    a.setFlashMode(false);
    EXPECT_EQ(groundOf(a), QColor(Qt::red));
    a.setBackColor(0xFFFFFF);
    EXPECT_EQ(groundOf(a), QColor(Qt::white));
    // While flashing, a BackColor write only changes the colour of the normal phase.
    a.setFlashMode(true);
    a.setBackColor(0x00FF00);
    EXPECT_EQ(groundOf(a), QColor(Qt::white));
    phase.toggle();
    EXPECT_EQ(groundOf(a), QColor(Qt::green));
}

} // namespace
