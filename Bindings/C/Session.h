#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <string>
#include <thread>

#include "Bindings/C/vel_launch_screen.h"
#include "LaunchScreen/LaunchScreenManager.h"
#include "Platform/AppKit/NSApplication.h"

namespace vel {

class CallbackDelegate;

/// A launch screen as C sees it: the application, one host window, the manager, and the host's
/// callbacks. There is one at a time, on the thread that made it.
class Session {
 public:
  /// Starts the application on a display and finds or opens the window. The options are valid.
  static VelStatus create(const VelCreateOptions& options, std::unique_ptr<Session>& session,
                          std::string& error);
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  /// Gives the window back and ends the application. Nothing is called back.
  ~Session();

  VelStatus request(const Strong<NSDictionary>& parameters, std::string& error);
  VelStatus present(VelPresentation presentation, std::string& error);
  /// Any thread; from another one than the owner's it comes with the next pass, if one is up then.
  void dismiss();
  /// Runs the loop for a time, or until the session has been ended meanwhile.
  void run(double seconds) const;

  [[nodiscard]] double secondsLeft() const { return manager_->launchScreenExpirationTimeLeft(); }
  [[nodiscard]] bool isUp() const;
  [[nodiscard]] VelPause pauseReason() const;
  [[nodiscard]] VelState state() const;

  [[nodiscard]] bool isOwnedByThisThread() const { return std::this_thread::get_id() == thread_; }

  /// Calls of the library under way, from callbacks too. The session may only be destroyed when
  /// there is none.
  std::size_t calls = 0;

  /// Ends the callbacks: what comes after is nobody's business any more.
  void silence();
  /// Any thread.
  [[nodiscard]] bool isSilent() const { return silent_; }

 private:
  Session() = default;

  [[nodiscard]] Strong<NSViewController> controller() const;
  VelStatus openWindow(const VelCreateOptions& options, std::string& error);
  void connectSinks(bool recordsEvents);

  std::thread::id thread_ = std::this_thread::get_id();
  Strong<NSWindow> window_;
  Strong<LaunchScreenManager> manager_;
  Strong<CallbackDelegate> delegate_;
  Weak<NSViewController> presented_;
  std::atomic<bool> silent_ = false;
};

}  // namespace vel
