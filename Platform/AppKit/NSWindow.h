#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NSArray.h"
#include "Platform/Foundation/NSNotification.h"
#include "Platform/Foundation/NSObject.h"
#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/WindowSystem.h"

namespace vel {

class NSView;
class NSViewController;

inline constexpr NSNotificationName NSWindowDidBecomeKeyNotification =
    "NSWindowDidBecomeKeyNotification";
inline constexpr NSNotificationName NSWindowDidResignKeyNotification =
    "NSWindowDidResignKeyNotification";
inline constexpr NSNotificationName NSWindowDidMiniaturizeNotification =
    "NSWindowDidMiniaturizeNotification";
inline constexpr NSNotificationName NSWindowDidDeminiaturizeNotification =
    "NSWindowDidDeminiaturizeNotification";

/// A window. An open window is on screen unless it is miniaturised. The application holds a
/// strong reference to each open window. Only the main thread may use a window.
class VEL_EXPORT NSWindow : public Class<NSWindow, "NSWindow"> {
 public:
  NSWindow(CGRect frame, NSWindowStyleMask styleMask) : frame_(frame), styleMask_(styleMask) {}
  ~NSWindow() override;

  /// Makes a window with an empty content view. The window is not open.
  static Strong<NSWindow> initWithContentRectStyleMask(CGRect frame, NSWindowStyleMask styleMask) {
    return initAs<NSWindow>(frame, styleMask);
  }
  /// Makes a window of the class `Window`, which is NSWindow or a subclass, and passes `arguments`
  /// to its constructor. The window has an empty content view and is not open.
  template <class Window, class... Arguments>
  static Strong<Window> initAs(Arguments&&... arguments) {
    auto window = make<Window>(std::forward<Arguments>(arguments)...);
    window->makeContentView();
    return window;
  }

  /// The window's rectangle in screen coordinates, in points.
  [[nodiscard]] CGRect frame() const { return frame_; }
  void setFrame(CGRect frame);
  [[nodiscard]] std::string_view title() const { return title_; }
  void setTitle(std::string_view title);

  [[nodiscard]] NSWindowStyleMask styleMask() const { return styleMask_; }
  void setStyleMask(NSWindowStyleMask styleMask);
  /// True if dragging the background moves the window. False by default.
  [[nodiscard]] bool isMovableByWindowBackground() const { return isMovableByWindowBackground_; }
  void setMovableByWindowBackground(bool isMovable);
  /// True if hiding the application also hides the window. True by default. Has no effect, because
  /// no back end hides applications.
  [[nodiscard]] bool canHide() const { return canHide_; }
  void setCanHide(bool canHide) { canHide_ = canHide; }

  /// The content view. Can be null, for example after `setContentView` with null.
  [[nodiscard]] Strong<NSView> contentView() const { return contentView_; }
  void setContentView(const Strong<NSView>& view);
  [[nodiscard]] Strong<NSViewController> contentViewController() const {
    return contentViewController_;
  }
  /// Makes the controller's view the content view and resizes it to the window. Null sets an empty
  /// content view.
  void setContentViewController(const Strong<NSViewController>& controller);

  /// Makes this window the parent of `child` and keeps `child` alive. Does not open `child`.
  /// Does nothing if `child` is null, this window itself or already a child of this window.
  void addChildWindow(const Strong<NSWindow>& child);
  [[nodiscard]] Strong<NSWindow> parentWindow() const { return parent_.lock(); }
  /// Modal or Sheet if the window was made to present a view controller, else Plain.
  [[nodiscard]] WindowKind kind() const { return kind_; }
  /// The window that this sheet belongs to. Null if this window is not a sheet, or has been closed.
  [[nodiscard]] Strong<NSWindow> sheetParent() const { return sheetParent_.lock(); }
  [[nodiscard]] NSArray<NSWindow> sheets() const { return sheets_; }

  /// Opens the window, or raises it if it is on screen. Does not make it key. Does nothing if the
  /// window is miniaturised.
  void orderFront();
  /// Opens or raises the window as `orderFront` does, and makes it key as `makeKeyWindow` does.
  /// Does nothing if the window is miniaturised.
  void makeKeyAndOrderFront();
  /// Closes an open window, after its sheets. The window's view controllers disappear. If this
  /// window presents a view controller, the presentation ends. If this window is key, requests the
  /// focus for another window. The window can be opened again.
  void close();
  /// Closes the window, because the platform layer cannot hide an open window.
  void orderOut() { close(); }
  /// Closes the window if it has a close control.
  void performClose();
  void miniaturize();
  void deminiaturize();

  /// Requests the focus for this window without changing the stacking order. Does nothing if the
  /// window is not on screen or is already key. On the headless back end, the window is key when
  /// this function returns. On the other back ends, a later pass of the run loop makes the window
  /// key and posts NSWindowDidBecomeKeyNotification, unless the window manager refuses the request.
  void makeKeyWindow();
  [[nodiscard]] bool isKeyWindow() const;
  /// True during a modal session of the window.
  [[nodiscard]] bool isModalPanel() const;

  /// True if the window is open, even while it is miniaturised.
  [[nodiscard]] bool isVisible() const { return isOpen_; }
  [[nodiscard]] bool isMiniaturized() const { return isMiniaturized_; }
  /// True if the window is open and not miniaturised.
  [[nodiscard]] bool isOnScreen() const { return isOnScreen_; }

  /// The window system's handle. `None` if the window does not exist in the window system.
  [[nodiscard]] WindowHandle handle() const { return handle_; }

  /// Draws the window's views again if they have changed.
  void setNeedsDisplay();

 private:
  friend class NSApplication;
  friend class NSView;
  friend class NSViewController;

  /// The window does not draw while a DisplayPause exists. It draws when the last DisplayPause is
  /// destroyed. Without a pause, the window would show a new content view before `viewWillAppear`
  /// has prepared the view.
  class DisplayPause : private NonCopyable {
   public:
    explicit DisplayPause(Strong<NSWindow> window) : window_(std::move(window)) {
      ++window_->displayPauses_;
    }
    ~DisplayPause() {
      --window_->displayPauses_;
      window_->setNeedsDisplay();
    }

   private:
    Strong<NSWindow> window_;
  };

  static Strong<NSWindow> makePresentationWindow(WindowKind kind, CGSize size,
                                                 const Strong<NSWindow>& owner,
                                                 NSWindowStyleMask styleMask);
  void makeContentView();
  // Unlike `setContentView`, calls no life-cycle methods.
  void replaceContentView(const Strong<NSView>& view);
  // The content view calls this function after the view has left this window.
  void clearContentView() { contentView_ = nullptr; }
  // Creates the window in the window system. Does nothing if the window has a handle.
  void realize();
  enum class KeyRequest : std::uint8_t { None, MakeKey };
  void open(KeyRequest keyRequest);
  // Releases the view controller that this window presents, if any.
  void endPresentation();
  // The application calls the next three functions when the window system reports an event.
  // `setFrame` also calls `frameChanged`.
  void frameChanged(CGRect frame);
  void miniaturizedChanged(bool isMiniaturized);
  void windowDestroyed();

  CGRect frame_;
  NSWindowStyleMask styleMask_;
  std::string title_;
  WindowKind kind_ = WindowKind::Plain;
  Weak<NSWindow> owner_;  // the window that this modal window or sheet belongs to
  WindowHandle handle_ = WindowHandle::None;
  Strong<NSView> contentView_;
  Strong<NSViewController> contentViewController_;
  Weak<NSWindow> parent_;  // set by `addChildWindow`
  NSArray<NSWindow> children_;
  Weak<NSWindow> sheetParent_;  // for a sheet, equals `owner_` until `close`
  NSArray<NSWindow> sheets_;
  Scene scene_;            // the last scene sent to the window system; empty after `close`
  int displayPauses_ = 0;  // the number of DisplayPause objects
  bool isMovableByWindowBackground_ = false;
  bool canHide_ = true;
  bool isOpen_ = false;
  bool isOnScreen_ = false;
  bool isMiniaturized_ = false;
};

}  // namespace vel
