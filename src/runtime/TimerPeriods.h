#pragma once

#include <cstdint>

namespace corvalog {

// The periods of the program's fixed timers, in milliseconds: the display refresh (which
// evaluates the channels unless a log at this interval or faster already does), the blink phase
// of flashing panels, and the keep-awake broadcast.
inline constexpr std::int32_t kScreenIntervalMs = 333;
inline constexpr std::int32_t kFlashIntervalMs = 333;
inline constexpr std::int32_t kStayAwakeIntervalMs = 4000;

} // namespace corvalog
