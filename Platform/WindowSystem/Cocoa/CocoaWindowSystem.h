#pragma once

#import <AppKit/AppKit.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Platform/WindowSystem/Cocoa/Cover.h"
#include "Platform/WindowSystem/Cocoa/HostLoop.h"
#include "Platform/WindowSystem/Cocoa/WindowStyle.h"
#include "Platform/WindowSystem/ReportQueue.h"
#include "Platform/WindowSystem/WindowSystem.h"

@class VelWindowObserver;

namespace vel {

/// The AppKit back end. It creates windows, and adopts windows of its own process by their NSWindow
/// pointers or window numbers. A window's handle is its NSWindow pointer. A window's frame is the
/// rectangle of its content, without the title bar. If the process has an NSApplication, the host
/// dispatches the native events. Otherwise this class creates the NSApplication, and dispatches the
/// native events in `deliverEvents`. This class calls its delegate only from `deliverEvents`.
///
/// AppKit offers no pictures of the screen, and does not report a lost display. So `picture`
/// returns no value, and the back end never reports `displayLost`. On the free AppKit of GNUstep,
/// the window manager draws the close and miniaturise controls. The back end cannot remove them
/// there, and reports them as remaining controls.
class CocoaWindowSystem final : public WindowSystem {
 public:
  /// Connects to AppKit. On failure, sets `error` to the reason and returns null.
  static std::unique_ptr<CocoaWindowSystem> open(std::string& error);
  ~CocoaWindowSystem() override;

  void setDelegate(WindowSystemDelegate* delegate) override { reports_.setDelegate(delegate); }
  /// Invalid: AppKit has no handle to wait for.
  [[nodiscard]] WaitHandle waitHandle() const override { return {}; }
  bool deliverEvents() override;
  [[nodiscard]] Nanoseconds nextDeadline() const override;
  /// Lets the host's native loop (`[NSApp run]`) call `runPass` when the library's run loop has
  /// work. An empty function disconnects the native loop. If this object dispatches the native
  /// events, there is no native loop, and the function has no effect.
  void runPassesInHostLoop(std::function<void()> runPass);

  WindowHandle createWindow(const WindowDescription& description) override;
  std::optional<AdoptedWindow> adoptWindow(const NativeWindow& native, std::string& error) override;
  void releaseWindow(WindowHandle handle) override;
  void orderFront(WindowHandle handle) override;
  void orderOut(WindowHandle handle) override;
  void requestFocus(WindowHandle handle) override;
  void requestMiniaturized(WindowHandle handle, bool isMiniaturized) override;
  void setFrame(WindowHandle handle, CGRect frame) override;
  void setTitle(WindowHandle handle, std::string_view title) override;
  void setStyleMask(WindowHandle handle, NSWindowStyleMask styleMask) override;
  void setMovableByBackground(WindowHandle handle, bool isMovable) override;
  void setScene(WindowHandle handle, const Scene& scene) override;
  void setModalWindow(WindowHandle handle) override;
  bool isSceneOnScreen(WindowHandle handle) override;
  /// Declined: AppKit can read its own windows, but not the screen.
  std::optional<WindowPicture> picture(WindowHandle /*handle*/) override { return std::nullopt; }

  // `VelWindowObserver` calls these functions.
  void notificationPosted(NSNotification* notification);
  /// The user has asked to close a window. Only reports the request.
  void userClosesWindow(NSWindow* native);

 private:
  enum class Origin : std::uint8_t { Created, Adopted };
  struct Window {
    Window(NSWindow* retainedWindow, Origin windowOrigin);
    ~Window();

    NSWindow* native;
    Origin origin;
    cocoa::WindowStyle style;
    cocoa::Cover cover;
    bool isOrderedIn = false;  // true from `orderFront` until `orderOut`; always if adopted
    bool isOnScreen = false;   // the last reported value
    CGRect frame;              // the last reported value
    NSWindow* owner = nil;     // the window that a created window is attached to
  };

  explicit CocoaWindowSystem(bool dispatchesEvents);

  Window* find(WindowHandle handle);
  Window* find(NSWindow* native);
  static WindowHandle handleOf(NSWindow* native);
  Window& add(NSWindow* retainedWindow, Origin origin);
  void report(WindowHandle handle, ReportQueue::Report report);
  void reportFrame(Window& window);
  void reportVisibility(Window& window);
  void reportStyleMask(Window& window);
  void reportOrder();
  // Handles that the owner closes its window.
  void windowWillClose(NSWindow* native);
  [[nodiscard]] bool dispatchNativeEvents();
  [[nodiscard]] bool hasOrder() const;
  [[nodiscard]] const char* reasonToRefuse(NSWindow* native);

  ReportQueue reports_;
  std::unique_ptr<cocoa::HostLoop> hostLoop_;  // null if no native loop runs the passes
  VelWindowObserver* observer_;
  std::map<WindowHandle, std::unique_ptr<Window>> windows_;
  WindowHandle modalWindow_ = WindowHandle::None;
  std::vector<WindowHandle> order_;  // the last reported order
  bool dispatchesEvents_;            // true if the library has created the NSApplication
  Nanoseconds nextDispatchTime_ = 0;
  Nanoseconds nextOrderCheckTime_ = 0;  // when to compare the stacking order with `order_`
};

}  // namespace vel
