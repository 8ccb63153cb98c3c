#pragma once

namespace corvalog {

// Positions and sizes are designed in twips, 15 to a logical pixel.
inline constexpr int kTwipsPerPixel = 15;

// The nearest whole pixel: the one conversion every control and window uses.
inline constexpr int twipsToPixels(int twips)
{
    const int half = kTwipsPerPixel / 2;
    return twips >= 0 ? (twips + half) / kTwipsPerPixel : -((-twips + half) / kTwipsPerPixel);
}

} // namespace corvalog
