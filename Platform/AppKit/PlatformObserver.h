#pragma once

#include <cstdint>
#include <utility>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/TimerObserver.h"

namespace vel {

class NSViewController;
class NSWindow;

/// The life-cycle methods of a view controller, such as `viewWillAppear`.
enum class LifeCycleMethod : std::uint8_t { WillAppear, DidAppear, WillDisappear, DidDisappear };

enum class KeyStatusChange : std::uint8_t { ResignsKey, BecomesKey };

/// Receives the events of the platform layer. The platform layer calls the observer on the main
/// thread. The observer must not change the objects that it receives.
class VEL_EXPORT PlatformObserver : public TimerObserver {
 public:
  /// A life-cycle method of a view controller has been called.
  virtual void lifeCycleMethodCalled(NSViewController& /*controller*/, LifeCycleMethod /*method*/) {
  }
  /// `setStyleMask` was called. The mask may equal the previous mask.
  virtual void styleMaskWasSet(NSWindow& /*window*/, std::uint64_t /*styleMask*/) {}
  /// A window has become or stopped being the key window. The platform layer posts
  /// NSWindowDidBecomeKeyNotification or NSWindowDidResignKeyNotification after this call.
  virtual void keyStatusChanged(NSWindow& /*window*/, KeyStatusChange /*change*/) {}
  /// A window was opened.
  virtual void windowOpened(NSWindow& /*window*/) {}
  /// A window was closed.
  virtual void windowClosed(NSWindow& /*window*/) {}
};

namespace detail {

VEL_EXPORT inline PlatformObserver* platformObserver = nullptr;

}  // namespace detail

/// Sets the platform observer. `observer` also becomes the timer observer. Null removes both
/// observers. Returns the previous platform observer. The caller owns `observer` and must remove it
/// before destroying it. Only the main thread may call this function.
inline PlatformObserver* setPlatformObserver(PlatformObserver* observer) {
  setTimerObserver(observer);
  return std::exchange(detail::platformObserver, observer);
}

/// Calls `notify` with the platform observer. Does nothing if no observer is set.
template <class Notify>
void notifyPlatformObserver(Notify&& notify) {
  if (detail::platformObserver != nullptr) [[unlikely]] {
    notify(*detail::platformObserver);
  }
}

}  // namespace vel
