// One interface for whoever wants to follow what the platform layer does: a player, a test.
#pragma once

#include <cstdint>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/Protocol.h"

namespace vel {

class NSObject;
class NSTimer;
class NSViewController;
class NSWindow;

/// The four steps of a view controller's life on screen.
enum class LifeCycleStep : std::uint8_t { WillAppear, DidAppear, WillDisappear, DidDisappear };

/// Which way a window's key status goes.
enum class KeyChange : std::uint8_t { Resigns, Becomes };

/// Hears, on the main thread and at the moment it happens, what the platform layer does. It looks
/// on: it must not change what it is told about. Where nobody observes, this costs one test of a
/// pointer.
class VEL_EXPORT PlatformObserver {
 public:
  PlatformObserver() = default;
  PlatformObserver(const PlatformObserver&) = delete;
  PlatformObserver& operator=(const PlatformObserver&) = delete;
  PlatformObserver(PlatformObserver&&) = delete;
  PlatformObserver& operator=(PlatformObserver&&) = delete;
  virtual ~PlatformObserver() = default;

  /// A timer's call of its target has returned.
  virtual void timerFired(NSTimer& /*timer*/, const Strong<NSObject>& /*target*/) {}
  /// A view controller's life-cycle step begins, whether the platform sends it or somebody by hand.
  virtual void lifeCycleStepBegan(NSViewController& /*controller*/, LifeCycleStep /*step*/) {}
  /// `setStyleMask` was sent, whether or not it changes anything.
  virtual void styleMaskSet(NSWindow& /*window*/, std::uint64_t /*styleMask*/) {}
  /// A window's key notification is about to be posted.
  virtual void keyChanges(NSWindow& /*window*/, KeyChange /*change*/) {}
  /// A window was put on screen, or has been closed.
  virtual void windowOpened(NSWindow& /*window*/) {}
  virtual void windowClosed(NSWindow& /*window*/) {}
};

namespace detail {

VEL_EXPORT inline PlatformObserver* platformObserver = nullptr;

}  // namespace detail

/// Sets who observes (not owned), or none, and answers who did before. Main thread.
inline PlatformObserver* setPlatformObserver(PlatformObserver* observer) {
  PlatformObserver* const before = detail::platformObserver;
  detail::platformObserver = observer;
  return before;
}

/// Tells the observer, if there is one.
template <class Tell>
void observePlatform(Tell&& tell) {
  if (detail::platformObserver != nullptr) [[unlikely]] {
    tell(*detail::platformObserver);
  }
}

}  // namespace vel
