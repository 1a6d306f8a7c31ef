#pragma once

#include <functional>
#include <string_view>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NSString.h"

namespace vel {

/// Records analytics events by name. Main thread.
class VEL_EXPORT MetricsCenter {
 public:
  /// A function of the host that records an event.
  using Sink = std::function<void(std::string_view event)>;

  /// Sets the function that records events and returns the previous one. Without a function, each
  /// event is written to the log.
  static Sink setSink(Sink sink);

  /// Records an event. Null is recorded as an empty name.
  static void logEvent(const Strong<NSString>& name);
};

}  // namespace vel
