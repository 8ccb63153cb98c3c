#pragma once

#include "FlashPhase.h"
#include "OleColor.h"
#include "Twips.h"
#include "values/PanelState.h"

#include <QLabel>
#include <QPointer>
#include <QWidget>

namespace corvalog {

class eLCD;
class eLCDContainer;
class eLCDText;
class FlatButton;

// One channel's panel: the title, the seven-segment number with its "Zeroed (Net)" marker,
// the "Zero" button, the link-quality bar and the low-battery mark. Its layout is fixed (the
// grid moves whole panels). The refresh writes its properties; it raises Zero (the button) and
// Click (the number).
class LCDModule : public QWidget
{
    Q_OBJECT

public:
    // The designer's size, in twips.
    static constexpr int kWidthTwips = 3300;
    static constexpr int kHeightTwips = 1860;

    explicit LCDModule(QWidget *parent = nullptr);

    // Follows the shared blink phase from now on.
    void InitFlashLabel(FlashPhase *phase);

    OleColor BackColor() const { return m_backColour; }
    void setBackColor(OleColor colour);
    OleColor ForeColor() const;
    void setForeColor(OleColor colour);
    QString Title() const;
    void setTitle(const QString &title);
    QString Value() const;
    void setValue(const QString &value);
    int Digits() const;
    void setDigits(int digits);
    bool FlashMode() const { return m_flashMode; }
    void setFlashMode(bool flash);
    QString BtnCaption() const;
    void setBtnCaption(const QString &caption);
    bool NetInd() const;
    void setNetInd(bool tared);
    // The bar's level in fifths: 0 for 0, 1 for 1..20, ... 5 for 81..100, more above 100.
    float LQI() const { return m_level; }
    void setLQI(float percent);
    bool LoBatt() const { return m_lowBattery; }
    void setLoBatt(bool low);
    // Writes what the refresh decided, in the order the properties have always been written.
    void show(const PanelState &state);

    // The constituents, for the window's tests and the status of each part.
    eLCD *number() const { return m_lcd; }
    eLCDText *netIndicator() const { return m_net; }
    FlatButton *button() const { return m_button; }
    QLabel *lqiBar() const { return m_lqi; }
    QLabel *lowBatteryMark() const { return m_battLow; }

signals:
    void Zero();
    void Click();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void phaseChanged();
    void setNumberColours(OleColor colour, bool withTextOffColour);

    eLCDText *m_net;
    FlatButton *m_button;
    eLCDContainer *m_frame;
    eLCD *m_lcd;
    eLCDContainer *m_titleFrame;
    QLabel *m_title;
    QLabel *m_lqi;
    QLabel *m_battLow;

    float m_level = 0;
    bool m_lowBattery = false;
    bool m_flashMode = false;
    OleColor m_backColour = 0;
    QPointer<FlashPhase> m_phase;
};

} // namespace corvalog
