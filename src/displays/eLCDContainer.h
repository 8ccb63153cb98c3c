#pragma once

#include "OleColor.h"

#include <QWidget>

namespace corvalog {

// The coloured frame behind a seven-segment element, painted as a rounded rectangle in its
// BackColor, with a choice of five colour schemes. ColorChildren hands its palette to the
// elements inside it.
class eLCDContainer : public QWidget, public LcdColours
{
    Q_OBJECT

public:
    explicit eLCDContainer(QWidget *parent = nullptr);

    OleColor BackColor() const { return m_back; }
    void setBackColor(OleColor colour) override;
    OleColor OnColor() const { return m_on; }
    void setOnColor(OleColor colour) override;
    OleColor OffColor() const { return m_off; }
    void setOffColor(OleColor colour) override;

    // 0 to 4 sets BackColor, OffColor and OnColor from the scheme table, in that order; other
    // values change nothing.
    int Scheme() const { return m_scheme; }
    void setScheme(int scheme);

    // Sets BackColor, OnColor and OffColor of every child that has them (an LcdColours), in
    // child order; other children are left alone.
    void ColorChildren();

    // The diameter of the corner ellipses, in pixels (0: square corners).
    void setCornerDiameter(int pixels);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    OleColor m_back = 0xA0B696;
    OleColor m_on = 0x000000;
    OleColor m_off = 0x91AB85;
    int m_scheme = 0;
    int m_corner = 0;
};

} // namespace corvalog
