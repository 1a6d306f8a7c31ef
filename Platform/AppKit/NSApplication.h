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

/// The application and its windows. This class decides which window becomes key, which window is
/// modal and which windows close. The `WindowSystem` only carries out these decisions. Only the
/// main thread may use the application.
class VEL_EXPORT NSApplication final : public Class<NSApplication, "NSApplication">,
                                       private WindowSystemDelegate,
                                       private RunLoopSource {
 public:
  /// Stops the current application, if any. Makes a new application on `windowSystem`, sets NSApp
  /// and connects the application to the main run loop.
  static Strong<NSApplication> start(std::unique_ptr<WindowSystem> windowSystem);
  /// Closes the application's windows, disconnects the application from its window system, and sets
  /// NSApp to null. Windows that were passed to `adoptWindow` stay on the screen. Also removes all
  /// timers, all work in the main queue and all notification observers in the process. Does nothing
  /// if there is no application. No timer, observer or other callback of the platform layer may
  /// call this function.
  static void stop();

  explicit NSApplication(std::unique_ptr<WindowSystem> windowSystem);

  [[nodiscard]] WindowSystem& windowSystem() { return *windowSystem_; }

  /// The window with the keyboard focus; null if no window of the application has it.
  [[nodiscard]] Strong<NSWindow> keyWindow() const { return keyWindow_; }
  /// The most recent key window that is neither a modal window nor a sheet. Null after the main
  /// window has left the screen.
  [[nodiscard]] Strong<NSWindow> mainWindow() const { return mainWindow_.lock(); }
  /// The windows on screen, front to back.
  [[nodiscard]] NSArray<NSWindow> orderedWindows() const { return orderedWindows_; }
  /// The default owner of a new dialog: the main window, else the key window, else the frontmost
  /// window, else null.
  [[nodiscard]] Strong<NSWindow> dialogOwner() const;
  [[nodiscard]] bool isActive() const { return isActive_; }

  /// Makes an NSWindow for `native`, a window that another program or the host has opened. The
  /// NSWindow's `className` returns the class of `native`, on X11 the class in WM_CLASS. The
  /// NSWindow is open until it is closed or `native` is destroyed. Closing the NSWindow does not
  /// hide `native`. `isMiniaturized` returns true while `native` is not on screen. On failure, sets
  /// `error` to the reason and returns null.
  Strong<NSWindow> adoptWindow(const NativeWindow& native, std::string& error);

  /// The window of the newest modal session; null without a modal session.
  [[nodiscard]] Strong<NSWindow> modalWindow() const;
  /// Begins a modal session of `window` and returns immediately.
  void beginModalSession(const Strong<NSWindow>& window);
  /// Ends the newest modal session. Does nothing without a modal session.
  void stopModal();
  /// Begins a modal session of `window`, opens `window` and makes it key. Then runs the run loop in
  /// the modal-panel mode until `stopModal` ends the session or `window` closes. Ignores null.
  void runModalForWindow(const Strong<NSWindow>& window);
  /// Sets the mode of the run loop. During a modal session, `NSDefaultRunLoopMode` means the
  /// modal-panel mode.
  void setRunLoopMode(NSRunLoopMode mode);

  /// Sets the handler that is called after a change of a window's style mask. The handler's second
  /// argument contains the controls that the window manager still offers although the mask excludes
  /// them. The argument is 0 (NSWindowStyleMaskBorderless) if there are no such controls.
  void setRemainingControlsHandler(std::function<void(NSWindow&, NSWindowStyleMask)> handler) {
    remainingControlsHandler_ = std::move(handler);
  }
  /// Sets the handler that is called once, when the connection to the display is lost. All
  /// windows are already closed. The argument is the reason.
  void setDisplayLostHandler(std::function<void(std::string_view)> handler) {
    displayLostHandler_ = std::move(handler);
  }
  /// Sets the handler that is called when the user asks to close a window. The window stays open
  /// unless the handler closes it. Without a handler, the window closes. Requests for a window
  /// without a close control are ignored.
  void setCloseRequestedHandler(std::function<void(NSWindow&)> handler) {
    closeRequestedHandler_ = std::move(handler);
  }

 private:
  friend class NSWindow;
  friend void shutDown();

  struct ModalSession {
    std::uint64_t id;
    Strong<NSWindow> window;
  };

  /// Calls one operation of the window system. The operation may make the window system's next
  /// deadline earlier, so the destructor updates the run loop's descriptor.
  class GuardedWindowSystem : private NonCopyable {
   public:
    explicit GuardedWindowSystem(WindowSystem& windowSystem) : windowSystem_(windowSystem) {}
    ~GuardedWindowSystem() { NSRunLoop::mainRunLoop().updateDescriptor(); }

    WindowSystem* operator->() const { return &windowSystem_; }

   private:
    WindowSystem& windowSystem_;
  };

  // WindowSystemDelegate
  void focusMoved(WindowHandle handle) override;
  void applicationActivated(WindowHandle handle) override;
  void applicationDeactivated() override;
  void closeRequested(WindowHandle handle) override;
  void windowDestroyed(WindowHandle handle) override;
  void frameChanged(WindowHandle handle, CGRect frame) override;
  void miniaturizedChanged(WindowHandle handle, bool isMiniaturized) override;
  void styleMaskChanged(WindowHandle handle, NSWindowStyleMask styleMask) override;
  void orderChanged(const std::vector<WindowHandle>& handles) override;
  void remainingControlsDetected(WindowHandle handle, NSWindowStyleMask remainingControls) override;
  void displayLost(std::string_view reason) override;

  // RunLoopSource
  bool deliver() override { return windowSystem_->deliverEvents(); }
  [[nodiscard]] Nanoseconds nextDeadline() const override { return windowSystem_->nextDeadline(); }

  // Closes all windows, removes this object from the window system and the run loop, and sets NSApp
  // to null.
  void disconnect();
  [[nodiscard]] GuardedWindowSystem guardedWindowSystem() {
    return GuardedWindowSystem(*windowSystem_);
  }
  [[nodiscard]] Strong<NSWindow> windowFor(WindowHandle handle) const;
  void resignKey();
  void becomeKey(const Strong<NSWindow>& window);
  // Called after `removedWindow` has left the screen. If `removedWindow` is still the key window,
  // makes another window key.
  void makeNextWindowKey(const Strong<NSWindow>& removedWindow);
  // Returns the id of the new session.
  std::uint64_t addModalSession(const Strong<NSWindow>& window);
  void endModalSessions(const NSWindow* window);
  // Sets the mode of the run loop and the modal window of the window system.
  void updateModality();
  // Puts `window` at the front of `orderedWindows_`. Does not show `window`.
  void addToOrderedWindows(const Strong<NSWindow>& window);
  // Removes `window` from `orderedWindows_` and `mainWindow_`. Does not hide `window`.
  void removeFromOrderedWindows(const Strong<NSWindow>& window);

  std::unique_ptr<WindowSystem> windowSystem_;
  std::map<WindowHandle, NSWindow*> windowsByHandle_;
  NSArray<NSWindow> openWindows_;     // in the order of opening; includes miniaturised windows
  NSArray<NSWindow> orderedWindows_;  // the windows on screen, front to back
  Strong<NSWindow> keyWindow_;
  Weak<NSWindow> mainWindow_;
  std::vector<Weak<NSWindow>> keyHistory_;  // most recent key window last
  Weak<NSWindow> keyWindowAtDeactivation_;
  bool isActive_ = true;
  std::vector<ModalSession> modalSessions_;
  std::uint64_t lastModalSessionId_ = 0;
  NSRunLoopMode mode_ = NSDefaultRunLoopMode;  // set by `setRunLoopMode`
  std::function<void(NSWindow&, NSWindowStyleMask)> remainingControlsHandler_;
  std::function<void(std::string_view)> displayLostHandler_;
  std::function<void(NSWindow&)> closeRequestedHandler_;
};

/// The application; null before `start` and after `stop`.
VEL_EXPORT extern Strong<NSApplication>& NSApp;

}  // namespace vel
