#pragma once

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

} // namespace corvalog
