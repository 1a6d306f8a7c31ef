#pragma once

#include <cstdint>
#include <utility>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/TimerObserver.h"

namespace vel {

class NSViewController;
class NSWindow;

/// The four steps of a view controller's life on screen.
enum class LifeCycleStep : std::uint8_t { WillAppear, DidAppear, WillDisappear, DidDisappear };

/// Whether a window loses or gets the key status.
enum class KeyChange : std::uint8_t { Resigns, Becomes };

/// Receives the events of the platform layer, for example for a trace or a test. The platform calls
/// it on the main thread when an event happens. An observer must not change the objects that it
/// receives. Without an observer, an event costs one test of a pointer.
class VEL_EXPORT PlatformObserver : public TimerObserver {
 public:
  /// A view controller's life-cycle step begins, whether the platform or a caller started it.
  virtual void lifeCycleStepBegan(NSViewController& /*controller*/, LifeCycleStep /*step*/) {}
  /// `setStyleMask` was called. The mask may equal the previous one.
  virtual void styleMaskSet(NSWindow& /*window*/, std::uint64_t /*styleMask*/) {}
  /// A window's key notification is about to be posted.
  virtual void keyStatusWillChange(NSWindow& /*window*/, KeyChange /*change*/) {}
  /// A window was put on screen.
  virtual void windowOpened(NSWindow& /*window*/) {}
  /// A window was closed.
  virtual void windowClosed(NSWindow& /*window*/) {}
};

namespace detail {

VEL_EXPORT inline PlatformObserver* platformObserver = nullptr;

}  // namespace detail

/// Replaces the observer (not owned; null for no observer) and returns the previous one. Main
/// thread.
inline PlatformObserver* setPlatformObserver(PlatformObserver* observer) {
  setTimerObserver(observer);
  return std::exchange(detail::platformObserver, observer);
}

/// Calls `report` with the observer, if there is one.
template <class Report>
void observePlatform(Report&& report) {
  if (detail::platformObserver != nullptr) [[unlikely]] {
    report(*detail::platformObserver);
  }
}

}  // namespace vel
