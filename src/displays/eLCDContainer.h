#pragma once

#include "LcdColours.h"
#include "Twips.h"

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
    void coloursChanged() override;
    void paintEvent(QPaintEvent *event) override;

private:
    int m_scheme = 0;
    int m_corner = 0;
};

} // namespace corvalog
