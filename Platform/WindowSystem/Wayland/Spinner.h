#pragma once

#include <vector>

#include "Platform/Foundation/Time.h"
#include "Platform/WindowSystem/Wayland/SharedMemory.h"

namespace vel::wayland {

/// The number of spokes of the spinner, which is also the number of its pictures.
inline constexpr int kSpokes = 12;
/// The time between two pictures. The darkest spoke goes round once per second.
inline constexpr Nanoseconds kFrameInterval = kNanosecondsPerSecond / kSpokes;

/// Draws the spinner in a square of `side` pixels with a transparent background. In picture 0 the
/// darkest spoke is at the top, in picture 3 on the right.
[[nodiscard]] std::vector<Pixels> drawSpinner(int side);

}  // namespace vel::wayland
