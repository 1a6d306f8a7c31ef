#pragma once

#include <functional>
#include <string_view>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NSString.h"

namespace vel {

/// Records analytics events by name. Only the main thread may use this class.
class VEL_EXPORT MetricsCenter {
 public:
  /// A function of the host that records an event.
  using Sink = std::function<void(std::string_view event)>;

  /// Replaces the sink and returns the previous sink. If the sink is empty, `logEvent` writes each
  /// event to the log.
  static Sink setSink(Sink sink);

  /// Records the event `name`. Null records an event with an empty name.
  static void logEvent(const Strong<NSString>& name);
};

}  // namespace vel
