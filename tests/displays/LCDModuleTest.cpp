#include "displays/LCDModule.h"

#include "displays/eLCD.h"
#include "displays/eLCDContainer.h"
#include "displays/eLCDText.h"

#include <QImage>
#include <cstdlib>
#include <gtest/gtest.h>

using namespace corvalog;

namespace {

// The colour in the number's ground, away from any digit.
QColor groundOf(LCDModule &panel)
{
    return panel.number()->grab().toImage().pixelColor(2, 2);
}

TEST(LCDModule, TheBarIsTheLevelInFifthsOfTheBatteryMark)
{
    LCDModule panel;
    const int full = panel.lowBatteryMark()->width();
    const struct {
        float lqi;
        float level;
    } cases[] = { { 0, 0 }, { 1, 1 }, { 20, 1 }, { 20.5f, 1 }, { 21, 2 }, { 60, 3 }, { 100, 5 },
        { 120, 6 } };
    for (const auto &c : cases) {
        panel.setLQI(c.lqi);
        EXPECT_EQ(panel.LQI(), c.level) << c.lqi;
        EXPECT_EQ(panel.lqiBar()->width(), static_cast<int>(full / 5.0 * c.level)) << c.lqi;
    }
}

// With no level the bar's empty track still shows against the ground, light or dark.
TEST(LCDModule, TheEmptyBarStandsOutFromTheGround)
{
    for (const QColor ground :
        { QColor(0xEF, 0xEF, 0xEF), QColor(0xD6, 0xDB, 0xD2), QColor(30, 30, 30) }) {
        LCDModule panel;
        QPalette palette = panel.palette();
        palette.setColor(panel.backgroundRole(), ground);
        panel.setPalette(palette);
        panel.setAutoFillBackground(true);
        panel.setLQI(0);
        const QImage image = panel.grab().toImage();
        const QRect bar = panel.lqiBar()->geometry();
        const QColor inside = image.pixelColor(bar.x() + 20, bar.y() + bar.height() / 2);
        const QColor outside = image.pixelColor(bar.x() + 20, bar.y() - 3);
        EXPECT_EQ(outside, ground);
        EXPECT_GE(std::abs(qGray(inside.rgb()) - qGray(outside.rgb())), 20)
            << ground.name().toStdString();
    }
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
    phase.setOn(true);
    EXPECT_EQ(groundOf(a), QColor(Qt::red));
    EXPECT_EQ(groundOf(b), QColor(Qt::white)); // not flashing: the phase changes nothing
    EXPECT_EQ(a.netIndicator()->OffColor(), 0xFFFFFFu); // the marker's ghost does not blink
    phase.setOn(false);
    EXPECT_EQ(groundOf(a), QColor(Qt::white));

    // Switched off in the red phase, a panel stays red until the next BackColor write.
    phase.setOn(true);
    a.setFlashMode(false);
    EXPECT_EQ(groundOf(a), QColor(Qt::red));
    a.setBackColor(0xFFFFFF);
    EXPECT_EQ(groundOf(a), QColor(Qt::white));
    // While flashing, a BackColor write only changes the colour of the normal phase.
    a.setFlashMode(true);
    a.setBackColor(0x00FF00);
    EXPECT_EQ(groundOf(a), QColor(Qt::white));
    phase.setOn(false);
    EXPECT_EQ(groundOf(a), QColor(Qt::green));
}

TEST(LCDModule, IndicatorsShowAndHideAsWritten)
{
    LCDModule panel;
    panel.setNetInd(true);
    EXPECT_TRUE(panel.NetInd());
    panel.setNetInd(false);
    EXPECT_FALSE(panel.NetInd());
    EXPECT_TRUE(panel.netIndicator()->State()); // hidden, but lit when shown again
    panel.setLoBatt(true);
    EXPECT_FALSE(panel.lowBatteryMark()->isHidden());
    panel.setLoBatt(false);
    EXPECT_TRUE(panel.lowBatteryMark()->isHidden());
}

} // namespace
