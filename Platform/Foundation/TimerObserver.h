#pragma once

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NonCopyable.h"
#include "Platform/Foundation/Protocol.h"

namespace vel {

class NSObject;
class NSTimer;

/// Observes the timers of the run loop. The run loop calls the observer on the main thread.
class VEL_EXPORT TimerObserver : NonCopyable {
 public:
  virtual ~TimerObserver() = default;

  /// Called each time `timer` fires, after the timer has called `target`. `target` is null if the
  /// timer was made without a target.
  virtual void timerFired(NSTimer& /*timer*/, const Strong<NSObject>& /*target*/) {}
};

namespace detail {

VEL_EXPORT inline TimerObserver* timerObserver = nullptr;

}  // namespace detail

/// Replaces the observer. Null removes it. The caller owns the observer and must remove it before
/// destroying it. Only the main thread may call this function.
inline void setTimerObserver(TimerObserver* observer) { detail::timerObserver = observer; }

}  // namespace vel
