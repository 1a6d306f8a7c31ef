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

  /// `timer` has fired, and its call of `target` has returned. `target` may be null.
  virtual void timerFired(NSTimer& /*timer*/, const Strong<NSObject>& /*target*/) {}
};

namespace detail {

VEL_EXPORT inline TimerObserver* timerObserver = nullptr;

}  // namespace detail

/// Replaces the observer. Null removes it. The caller owns the observer and must remove it before
/// destroying it. Only the main thread may call this function.
inline void setTimerObserver(TimerObserver* observer) { detail::timerObserver = observer; }

}  // namespace vel
