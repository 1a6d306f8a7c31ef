#pragma once

#include <string>
#include <string_view>

#include "Host/Play/Timeline/Timeline.h"

namespace vel::host {

/// Draws the timeline of a scenario as SVG. Time goes from left to right. The rows from top
/// to bottom are:
/// - the title and the time axis
/// - for each window that becomes key, a band while the window is key
/// - a band while the cover is shown
/// - a chart of the time left
/// - the lanes of `TimelineLane` with their marks
///
/// The colours follow the reader's choice of a light or dark colour scheme.
[[nodiscard]] std::string timelineSvg(const Timeline& timeline, std::string_view title);

}  // namespace vel::host
