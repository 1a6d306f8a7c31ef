#pragma once

#include <string>
#include <string_view>

#include "Host/Play/Timeline/Timeline.h"

namespace vel::host {

/// Returns a picture of a play, as SVG. Time goes from left to right. From top to bottom, the
/// picture shows which windows are key, when the cover is up, the time left, and marks for the
/// events. The colours follow the reader's choice of a light or dark colour scheme.
[[nodiscard]] std::string timelineSvg(const Timeline& timeline, std::string_view title);

}  // namespace vel::host
