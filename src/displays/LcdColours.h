#pragma once

#include "OleColor.h"

namespace corvalog {

// The colour properties shared by the seven-segment element and the controls that frame it:
// the ground, lit and unlit colours. A change is handed to coloursChanged().
class LcdColours
{
public:
    LcdColours(OleColor back, OleColor on, OleColor off)
        : m_back(back)
        , m_on(on)
        , m_off(off)
    {
    }
    virtual ~LcdColours() = default;

    OleColor BackColor() const { return m_back; }
    void setBackColor(OleColor colour) { set(m_back, colour); }
    OleColor OnColor() const { return m_on; }
    void setOnColor(OleColor colour) { set(m_on, colour); }
    OleColor OffColor() const { return m_off; }
    void setOffColor(OleColor colour) { set(m_off, colour); }

protected:
    virtual void coloursChanged() = 0;

private:
    void set(OleColor &field, OleColor colour)
    {
        if (field != colour) {
            field = colour;
            coloursChanged();
        }
    }

    OleColor m_back;
    OleColor m_on;
    OleColor m_off;
};

} // namespace corvalog
