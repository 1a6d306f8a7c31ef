#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Bindings/C/vel_launch_screen.h"
#include "LaunchScreen/LaunchScreenManager.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/Foundation/NonCopyable.h"

namespace vel {

class CallbackDelegate;

/// The launch screen behind a handle: the application, one host window, the manager and the
/// callbacks. A process has one session at a time. Owning thread, except where noted.
class Session : NonCopyable {
 public:
  /// Starts the application on a display, and opens or adopts the window. The options and the
  /// callbacks must be valid. Stores the reason in `error` on failure.
  static VelStatus create(const VelCreateOptions& options, const VelCallbacks& callbacks,
                          std::unique_ptr<Session>& session, std::string& error);
  /// Restores the window and ends the application. Calls no callback.
  ~Session();

  VelStatus request(const Strong<NSDictionary>& parameters, std::string& error);
  VelStatus present(VelPresentation presentation, std::string& error);
  /// Dismisses at once. On another thread, or inside an operation, the main queue dismisses later.
  /// Any thread.
  VelStatus dismiss(std::string& error);
  /// One pass of the run loop. Returns true if there was any work.
  bool pump();
  /// Runs the run loop for some time, or until the session is destroyed.
  VelStatus run(double seconds, std::string& error);

  [[nodiscard]] double secondsLeft() const { return manager_->launchScreenExpirationTimeLeft(); }
  [[nodiscard]] bool isUp() const;
  [[nodiscard]] VelPause pauseReason() const;
  [[nodiscard]] VelState state() const;

  /// The number of the owning thread, from `currentThreadNumber`. The registry guards it.
  std::uint64_t owner = 0;
  /// True if the owning thread has ended. The registry guards it.
  bool hasOwnerEnded = false;

  /// A function of the C interface has started. Every call needs a call of `functionEnded`.
  void functionBegan();
  /// A function of the C interface returns. Returns true if no other one is running.
  bool functionEnded();
  /// Calls the callbacks that wait until the running operation has finished, unless the running
  /// function was called inside another operation.
  void deliverCallbacks();

  /// Ends the callbacks. The outermost running function then ends the session.
  void markDestroyed();
  /// Any thread.
  [[nodiscard]] bool isDestroyed() const { return isDestroyed_; }
  /// Takes the callback that reports the end of the launch screen after the session has ended. It
  /// is empty if the end of the launch screen has been reported before.
  [[nodiscard]] std::function<void()> takeLastCallback() { return std::move(lastCallback_); }

 private:
  Session() = default;

  [[nodiscard]] Strong<NSViewController> controller() const;
  VelStatus openWindow(const VelCreateOptions& options, std::string& error);
  void connectSinks(bool recordsEvents);
  void dismissNow();
  // Calls all waiting callbacks, also inside another operation.
  void deliverAllCallbacks();
  // Stores why the launch screen disappears. Returns false if it has done so before.
  bool noteDisappearance();
  // Reports the end of the launch screen if its view has been removed.
  void reportEnd();

  Strong<NSWindow> window_;
  Strong<LaunchScreenManager> manager_;
  Strong<CallbackDelegate> delegate_;
  VelCallbacks callbacks_ = VEL_CALLBACKS_INIT;
  // The controller of the launch screen that was presented last.
  Weak<NSViewController> presented_;
  // True from the presentation of a launch screen until its end has been reported.
  bool isPresented_ = false;
  // Why the presented launch screen has disappeared. Empty while it is shown.
  std::optional<VelEndReason> endReason_;
  // True while `present` runs. The launch screen is not shown yet, but it has not ended.
  bool isPresenting_ = false;
  bool isHostDismissing_ = false;
  bool isDisplayLost_ = false;
  std::size_t runningFunctions_ = 0;
  std::atomic<bool> isDestroyed_ = false;
  std::function<void()> lastCallback_;
};

/// A number that identifies the calling thread. No other thread ever gets the same number.
std::uint64_t currentThreadNumber();

}  // namespace vel
