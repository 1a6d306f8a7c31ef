#pragma once

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NonCopyable.h"
#include "Platform/Foundation/Protocol.h"

namespace vel {

class NSObject;
class NSTimer;

/// Follows the timers of the run loop. Main thread.
class VEL_EXPORT TimerObserver : NonCopyable {
 public:
  virtual ~TimerObserver() = default;

  /// A timer's call of its target has returned.
  virtual void timerFired(NSTimer& /*timer*/, const Strong<NSObject>& /*target*/) {}
};

namespace detail {

VEL_EXPORT inline TimerObserver* timerObserver = nullptr;

}  // namespace detail

/// Replaces the observer (not owned; null for no observer). Main thread.
inline void setTimerObserver(TimerObserver* observer) { detail::timerObserver = observer; }

}  // namespace vel
