#pragma once

#include <string>
#include <string_view>

#include "Host/Play/Timeline/Timeline.h"

namespace vel::host {

/// A picture of a play, as SVG: time goes from left to right, and what there is to see stands below
/// each other: which window is key, whether the cover is up, the time left, and marks for what
/// happened. It has a background of its own and suits light and dark surroundings.
[[nodiscard]] std::string timelineSvg(const Timeline& timeline, std::string_view title);

}  // namespace vel::host
