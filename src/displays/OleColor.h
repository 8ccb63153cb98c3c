#pragma once

#include <QColor>
#include <QGuiApplication>
#include <QPalette>
#include <cstdint>

namespace corvalog {

// A colour as workspaces and panels keep it: 0x00BBGGRR, or with the high bit set the index of
// a system colour, resolved when painted.
using OleColor = std::uint32_t;

inline constexpr OleColor kPureRed = 0x0000FF;
inline constexpr OleColor kBlack = 0x000000;
inline constexpr OleColor kWhite = 0xFFFFFF;
// The system's 3-D light colour (index 22).
inline constexpr OleColor kSystem3DLight = 0x80000016;

// The colour to paint; system colours come from the palette (3-D light is its Light role).
QColor toQColor(OleColor colour, const QPalette &palette = QGuiApplication::palette());

// Positions and sizes are designed in twips, 15 to a logical pixel.
inline constexpr int kTwipsPerPixel = 15;
inline constexpr int twipsToPixels(int twips)
{
    return twips / kTwipsPerPixel;
}

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
