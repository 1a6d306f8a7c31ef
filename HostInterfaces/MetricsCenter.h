#pragma once

#include <functional>
#include <string_view>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NSString.h"

namespace vel {

/// The host's analytics: records events by name. Main thread.
class VEL_EXPORT MetricsCenter {
 public:
  /// Takes the name of an event to record.
  using Sink = std::function<void(std::string_view event)>;

  /// Sets where events go, and answers where they went before. An empty sink stands for none: then
  /// each event gives one log line, so that none is lost silently.
  static Sink setSink(Sink sink);

  /// Records an event; none is recorded as an empty name.
  static void logEvent(const Strong<NSString>& name);
};

}  // namespace vel
