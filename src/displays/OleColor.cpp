#include "OleColor.h"

namespace corvalog {

namespace {

// The system colours a panel can name, by index; the rest fall back to the window colour.
QPalette::ColorRole roleOf(std::uint32_t index)
{
    switch (index) {
    case 5: // window
        return QPalette::Base;
    case 8: // window text
    case 18: // button text
        return QPalette::WindowText;
    case 15: // 3-D face
        return QPalette::Button;
    case 16: // 3-D shadow
        return QPalette::Mid;
    case 20: // 3-D highlight
        return QPalette::Light;
    case 21: // 3-D dark shadow
        return QPalette::Shadow;
    case 22: // 3-D light
        return QPalette::Light;
    case 13: // highlight
        return QPalette::Highlight;
    default:
        return QPalette::Window;
    }
}

} // namespace

QColor toQColor(OleColor colour, const QPalette &palette)
{
    if (colour & 0x80000000u) {
        return palette.color(roleOf(colour & 0xFFFFu));
    }
    return QColor(static_cast<int>(colour & 0xFF), static_cast<int>((colour >> 8) & 0xFF),
        static_cast<int>((colour >> 16) & 0xFF));
}

} // namespace corvalog
