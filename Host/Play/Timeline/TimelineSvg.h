#pragma once

#include <string>
#include <string_view>

#include "Host/Play/Timeline/Timeline.h"

namespace vel::host {

/// Draws the timeline of a scenario as SVG. Time goes from left to right. From top to bottom,
/// the picture shows:
/// - the title and the time axis
/// - for each window that becomes key, a band with the time spans in which it is key
/// - a band with the time spans in which a launch screen is shown
/// - a chart of the time left until the launch screen expires
/// - for each `TimelineLane`, a lane with a labelled dot for each `TimelineMark`
///
/// The colours follow the light or dark colour scheme of the program that shows the picture.
[[nodiscard]] std::string timelineSvg(const Timeline& timeline, std::string_view title);

}  // namespace vel::host
