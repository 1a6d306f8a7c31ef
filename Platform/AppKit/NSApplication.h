#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NSArray.h"
#include "Platform/Foundation/NSRunLoop.h"
#include "Platform/Foundation/NonCopyable.h"

namespace vel {

inline constexpr NSNotificationName NSApplicationWillResignActiveNotification =
    "NSApplicationWillResignActiveNotification";
inline constexpr NSNotificationName NSApplicationDidBecomeActiveNotification =
    "NSApplicationDidBecomeActiveNotification";

/// The application: its windows on one window system, which of them is key, and what is run
/// modally. All decisions about windows are taken here; the window system only carries them out.
/// Main thread.
class VEL_EXPORT NSApplication final : public Class<NSApplication, "NSApplication">,
                                       private WindowSystemDelegate,
                                       private RunLoopSource {
 public:
  /// Makes the application, on `windowSystem`, and sets NSApp. The main run loop serves it from now
  /// on.
  static Strong<NSApplication> start(std::unique_ptr<WindowSystem> windowSystem);
  /// Ends the application and everything else that the process shares: see `shutDown`. Afterwards
  /// NSApp is null. Adopted windows stay on the screen. Does nothing without an application. Must
  /// not be called from a callback of the platform.
  static void stop();

  explicit NSApplication(std::unique_ptr<WindowSystem> windowSystem);

  [[nodiscard]] WindowSystem& windowSystem() { return *windowSystem_; }

  /// The window that the keyboard goes to; none while the user is elsewhere.
  [[nodiscard]] Strong<NSWindow> keyWindow() const { return keyWindow_; }
  /// The last window to have become key that is neither a sheet nor a modal presentation's window;
  /// none once that window has left the screen.
  [[nodiscard]] Strong<NSWindow> mainWindow() const { return mainWindow_.lock(); }
  /// The windows on screen, front to back.
  [[nodiscard]] NSArray<NSWindow> orderedWindows() const { return ordered_; }
  /// The main window, else the key one, else the one in front, else none: what a dialog belongs to.
  [[nodiscard]] Strong<NSWindow> frontWindow() const;
  [[nodiscard]] bool isActive() const { return active_; }

  /// Takes part in a window that somebody else has opened. Its class name is the window's own; it
  /// is open as long as it exists; while it is not on the screen, by whatever means, it counts as
  /// miniaturised. None, with the reason in `error`, where that fails.
  Strong<NSWindow> adoptWindow(std::uint64_t nativeId, std::string& error);

  /// The window of the newest modal run; none while there is none.
  [[nodiscard]] Strong<NSWindow> modalWindow() const;
  /// Starts a modal run of `window` and returns. While one is on, the run loop runs in the
  /// modal-panel mode.
  void beginModalRun(const Strong<NSWindow>& window);
  /// Ends the newest modal run; nothing when there is none.
  void stopModal();
  /// For hosts' own dialogs: opens the window, key, and runs the loop in the modal-panel mode until
  /// this modal run has been ended, by `stopModal` or because the window was closed.
  void runModalForWindow(const Strong<NSWindow>& window);
  /// The mode the loop runs in while nothing is modal. Event tracking stays, also during a modal
  /// run.
  void setRunLoopMode(NSRunLoopMode mode);

  /// Called when the window manager keeps offering controls (the second argument) that a window's
  /// style mask takes away, after each change of style; with Borderless when it honours the mask.
  void setControlsKeptHandler(std::function<void(NSWindow&, NSWindowStyleMask)> handler) {
    controlsKeptHandler_ = std::move(handler);
  }
  /// Called once when the display's connection is lost, after its windows have been closed.
  void setDisplayLostHandler(std::function<void(std::string_view)> handler) {
    displayLostHandler_ = std::move(handler);
  }
  /// Called when the user asks to close a window that has a close control, instead of closing it.
  void setCloseRequestedHandler(std::function<void(NSWindow&)> handler) {
    closeRequestedHandler_ = std::move(handler);
  }

 private:
  friend class NSWindow;
  friend void shutDown();

  struct ModalRun {
    std::uint64_t number;
    Strong<NSWindow> window;
  };

  /// Access to the window system for one call. After the call the window system may have an earlier
  /// deadline, so the run loop updates the descriptor that a host polls.
  class PortAccess : private NonCopyable {
   public:
    explicit PortAccess(WindowSystem& windowSystem) : windowSystem_(windowSystem) {}
    ~PortAccess() { NSRunLoop::mainRunLoop().deadlineChanged(); }

    WindowSystem* operator->() const { return &windowSystem_; }

   private:
    WindowSystem& windowSystem_;
  };

  // WindowSystemDelegate
  void focusMoved(WindowHandle window) override;
  void applicationActivated(WindowHandle window) override;
  void applicationDeactivated() override;
  void closeRequested(WindowHandle handle) override;
  void windowDestroyed(WindowHandle window) override;
  void frameChanged(WindowHandle window, CGRect frame) override;
  void miniaturizedChanged(WindowHandle window, bool miniaturized) override;
  void styleMaskChanged(WindowHandle window, NSWindowStyleMask styleMask) override;
  void orderChanged(const std::vector<WindowHandle>& windows) override;
  void controlsKept(WindowHandle window, NSWindowStyleMask controls) override;
  void displayLost(std::string_view reason) override;

  // RunLoopSource
  bool deliver() override { return windowSystem_->deliverEvents(); }
  [[nodiscard]] Nanoseconds nextDeadline() const override { return windowSystem_->nextDeadline(); }

  void end();
  [[nodiscard]] PortAccess port() { return PortAccess(*windowSystem_); }
  [[nodiscard]] Strong<NSWindow> windowFor(WindowHandle handle) const;
  void resignKey();
  void becomeKey(const Strong<NSWindow>& window);
  // The key window has left the screen.
  void passKeyOn(const Strong<NSWindow>& window);
  std::uint64_t addModalRun(const Strong<NSWindow>& window);
  void endModalRuns(const NSWindow* window);
  void modalRunsChanged();
  void enteredScreen(const Strong<NSWindow>& window);
  void leftScreen(const Strong<NSWindow>& window);

  std::unique_ptr<WindowSystem> windowSystem_;
  std::map<WindowHandle, NSWindow*> windows_;
  NSArray<NSWindow> open_;
  NSArray<NSWindow> ordered_;
  Strong<NSWindow> keyWindow_;
  Weak<NSWindow> mainWindow_;
  std::vector<Weak<NSWindow>> keyHistory_;  // most recent last
  Weak<NSWindow> keyAtDeactivation_;
  bool active_ = true;
  std::vector<ModalRun> modalRuns_;
  std::uint64_t modalRunsBegun_ = 0;
  NSRunLoopMode mode_ = NSDefaultRunLoopMode;
  std::function<void(NSWindow&, NSWindowStyleMask)> controlsKeptHandler_;
  std::function<void(std::string_view)> displayLostHandler_;
  std::function<void(NSWindow&)> closeRequestedHandler_;
};

/// The application; none before `start` and after `stop`.
VEL_EXPORT extern Strong<NSApplication>& NSApp;

}  // namespace vel
