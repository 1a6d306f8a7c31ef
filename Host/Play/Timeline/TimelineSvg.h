#pragma once

#include <string>
#include <string_view>

#include "Host/Play/Timeline/Timeline.h"

namespace vel::host {

/// Draws the timeline of a scenario as SVG. Time goes from left to right. From top to bottom,
/// the picture shows:
/// - the title and the time axis
/// - for each window that becomes key, a band with the spans in which the window is key
/// - a band with the spans in which a launch screen is shown
/// - a chart of the time left until the launch screen expires
/// - the lanes of `TimelineLane` with their marks
///
/// The colours follow the viewer's light or dark colour scheme.
[[nodiscard]] std::string timelineSvg(const Timeline& timeline, std::string_view title);

}  // namespace vel::host
