#pragma once

#include <cstdint>

namespace corvalog {

// The Data Tags of the built-in simulated base station's modules. The demo workspace refers
// to these, so they are fixed here once.
namespace simtags {
inline constexpr std::uint16_t LoadCell = 0xFF12; // load cell: noise and slow drift
inline constexpr std::uint16_t Temperature = 0x0012; // temperature in degrees Celsius
inline constexpr std::uint16_t Counter = 0x0C01; // counts up by one per packet
inline constexpr std::uint16_t RawRecord = 0xB117; // sends 117-byte binary records
inline constexpr std::uint16_t WeakLink = 0x0A1E; // weak, varying radio link
inline constexpr std::uint16_t LowBattery = 0x0BA7; // battery runs low
inline constexpr std::uint16_t Faulty = 0x0E44; // reports errors now and then
inline constexpr std::uint16_t Intermittent = 0x5111; // goes silent for a while
} // namespace simtags

} // namespace corvalog
