#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "Bindings/C/vel_launch_screen.h"
#include "LaunchScreen/LaunchScreenManager.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/Foundation/NonCopyable.h"

namespace vel {

class CallbackDelegate;

/// The thread that owns a session: at first, the thread that called vel_create(). The mutex of the
/// registry in vel_launch_screen.cpp guards this object. The class uses no thread-local data: while
/// a thread ends, a destructor may call the C interface after the thread-local data of the library
/// has been destroyed.
class OwningThread {
 public:
  /// Makes the calling thread the owning thread.
  void becomeCurrentThread() {
    id_ = std::this_thread::get_id();
    hasEnded_ = false;
  }
  void markEnded() { hasEnded_ = true; }

  /// True if the owning thread has ended.
  [[nodiscard]] bool hasEnded() const { return hasEnded_; }
  /// True if the calling thread is the owning thread. A new thread may have the id of a thread that
  /// has ended.
  [[nodiscard]] bool isCurrentThread() const {
    return !hasEnded_ && id_ == std::this_thread::get_id();
  }

 private:
  std::thread::id id_;
  bool hasEnded_ = false;
};

/// The launch screen behind a handle: the application, one host window, the manager and the
/// callbacks. A process has one session at a time. Only the owning thread may use a session, unless
/// a comment says otherwise.
class Session : NonCopyable {
 public:
  /// Starts the application on a display. Adopts `hostWindow`, or opens a window if there is no
  /// `hostWindow`. All arguments must be valid; the members `window` and `host_window` of `options`
  /// are not read. Stores the reason in `error` on failure.
  static VelStatus create(const VelCreateOptions& options,
                          const std::optional<NativeWindow>& hostWindow,
                          const VelCallbacks& callbacks, std::unique_ptr<Session>& session,
                          std::string& error);
  /// Restores the window and ends the application, without calling a callback.
  ~Session();

  VelStatus request(const Strong<NSDictionary>& parameters, std::string& error);
  VelStatus present(VelPresentation presentation, std::string& error);
  /// Dismisses the launch screen. On the owning thread and outside an operation (see
  /// `CallbackQueue::isInsideOperation`), it does so immediately. Otherwise the main queue does so
  /// later. Any thread may call this function.
  VelStatus dismiss(std::string& error);
  /// Gives the window and its cover the new size of the host's Wayland surface.
  VelStatus resized(CGSize size, std::string& error);
  /// Performs one pass of the run loop. Returns true if there was any work.
  bool pump();
  /// Runs the run loop for `seconds`, or until the session is destroyed.
  VelStatus run(double seconds, std::string& error);

  [[nodiscard]] double secondsLeft() const { return manager_->launchScreenExpirationTimeLeft(); }
  [[nodiscard]] bool isUp() const;
  [[nodiscard]] VelPause pauseReason() const;
  [[nodiscard]] VelState state() const;

  OwningThread ownerThread;

  /// Records that a function of the C interface has started. Call `leaveFunction` when the function
  /// returns.
  void enterFunction();
  /// Records that a function of the C interface returns. Returns true if no other function is
  /// running.
  bool leaveFunction();
  /// Calls the waiting callbacks. Does nothing if the running function was called inside another
  /// operation.
  void deliverCallbacks();

  /// Discards the waiting callbacks and calls no further callback except `take_controls` and
  /// `ended`. The outermost running function then ends the session.
  void markDestroyed();
  /// Any thread may call this function.
  [[nodiscard]] bool isDestroyed() const { return isDestroyed_; }
  /// Returns a function that asks the host to restore its controls and reports the end of the
  /// launch screen. The caller must call the function after the session has ended. The function is
  /// empty if the host has already received both callbacks.
  [[nodiscard]] std::function<void()> takeLastCallbacks() { return std::move(lastCallbacks_); }

 private:
  Session() = default;

  [[nodiscard]] Strong<NSViewController> controller() const;
  VelStatus openWindow(const VelCreateOptions& options,
                       const std::optional<NativeWindow>& hostWindow, std::string& error);
  void connectSinks();
  void dismissNow();
  // Calls all waiting callbacks, even inside another operation.
  void deliverAllCallbacks();
  // Stores why the launch screen disappears. Returns false if no launch screen is presented, or if
  // the reason has already been stored.
  bool recordEndReason();
  // Reports the end of the launch screen if its view has been removed.
  void reportEnd();

  Strong<NSWindow> window_;
  Strong<LaunchScreenManager> manager_;
  Strong<CallbackDelegate> delegate_;
  VelCallbacks callbacks_ = VEL_CALLBACKS_INIT;
  // The controller of the launch screen that was presented last.
  Weak<NSViewController> presentedController_;
  // True from the presentation of a launch screen until its end has been reported.
  bool isPresented_ = false;
  // The reason why the presented launch screen has disappeared. No value while it is shown.
  std::optional<VelEndReason> endReason_;
  // True while `present` runs. The launch screen is not shown yet, but it has not ended.
  bool isPresenting_ = false;
  // True while a dismissal runs that the host has requested with `dismiss`.
  bool isHostDismissing_ = false;
  bool isDisplayLost_ = false;
  // True if the window is a Wayland surface of the host.
  bool isSurface_ = false;
  // True if the window system can keep a sheet or a modal window in front of the window.
  bool canOwnWindows_ = true;
  // The number of running functions of the C interface, including a function that delivers a
  // callback. The outermost function ends a session that is marked as destroyed.
  std::size_t runningFunctionCount_ = 0;
  std::atomic<bool> isDestroyed_ = false;
  std::function<void()> lastCallbacks_;
};

}  // namespace vel
