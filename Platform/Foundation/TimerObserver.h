#pragma once

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NonCopyable.h"
#include "Platform/Foundation/Protocol.h"

namespace vel {

class NSObject;
class NSTimer;

/// Observes the timers of the run loop. Main thread.
class VEL_EXPORT TimerObserver : NonCopyable {
 public:
  virtual ~TimerObserver() = default;

  /// Called after `timer` has fired and the call of its target has returned.
  virtual void timerFired(NSTimer& /*timer*/, const Strong<NSObject>& /*target*/) {}
};

namespace detail {

VEL_EXPORT inline TimerObserver* timerObserver = nullptr;

}  // namespace detail

/// Replaces the observer (not owned; null for no observer). Main thread.
inline void setTimerObserver(TimerObserver* observer) { detail::timerObserver = observer; }

}  // namespace vel
