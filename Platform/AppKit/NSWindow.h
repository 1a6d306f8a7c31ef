#pragma once

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

/// A window. It is open from when it is ordered in until it is closed or ordered out, and on screen
/// while open and not miniaturised. The application keeps open windows alive. Main thread.
class VEL_EXPORT NSWindow : public Class<NSWindow, "NSWindow"> {
 public:
  NSWindow(CGRect frame, NSWindowStyleMask styleMask) : frame_(frame), styleMask_(styleMask) {}
  ~NSWindow() override;

  /// A window that is not open yet, with a plain content view.
  static Strong<NSWindow> initWithContentRectStyleMask(CGRect frame, NSWindowStyleMask styleMask) {
    return initAs<NSWindow>(frame, styleMask);
  }
  /// The same, of a subclass.
  template <class Window, class... Arguments>
  static Strong<Window> initAs(Arguments&&... arguments) {
    auto window = make<Window>(std::forward<Arguments>(arguments)...);
    window->makeContentView();
    return window;
  }

  /// On the screen, in points.
  [[nodiscard]] CGRect frame() const { return frame_; }
  void setFrame(CGRect frame);
  [[nodiscard]] std::string_view title() const { return title_; }
  void setTitle(std::string_view title);

  [[nodiscard]] NSWindowStyleMask styleMask() const { return styleMask_; }
  void setStyleMask(NSWindowStyleMask styleMask);
  /// Whether dragging the window anywhere moves it. Off at first.
  [[nodiscard]] bool isMovableByWindowBackground() const { return movableByWindowBackground_; }
  void setMovableByWindowBackground(bool movable);
  /// Whether the window goes when the application is hidden. On at first. Only kept: no window
  /// system here hides applications.
  [[nodiscard]] bool canHide() const { return canHide_; }
  void setCanHide(bool canHide) { canHide_ = canHide; }

  /// None only where it was taken away.
  [[nodiscard]] Strong<NSView> contentView() const { return contentView_; }
  void setContentView(const Strong<NSView>& view);
  [[nodiscard]] Strong<NSViewController> contentViewController() const {
    return contentViewController_;
  }
  /// Makes the controller's view the content view, at the window's size; none gives a plain content
  /// view.
  void setContentViewController(const Strong<NSViewController>& controller);

  /// Ties `child` to this window. It does not open it.
  void addChildWindow(const Strong<NSWindow>& child);
  [[nodiscard]] Strong<NSWindow> parentWindow() const { return parent_.lock(); }
  /// Whether a presentation made the window, and how.
  [[nodiscard]] WindowKind kind() const { return kind_; }
  /// The window that this one is a sheet of; none for any other window.
  [[nodiscard]] Strong<NSWindow> sheetParent() const { return sheetParent_.lock(); }
  [[nodiscard]] NSArray<NSWindow> sheets() const { return sheets_; }

  /// Opens the window, in front; an open one comes to the front. Becoming key is another matter.
  void orderFront();
  /// The same, and becoming key as by `makeKeyWindow`.
  void makeKeyAndOrderFront();
  /// Closes an open window: its sheets first, then its controllers disappear, then key passes on.
  /// It can be ordered in again; a presentation in it has ended.
  void close();
  /// The same: off the screen is closed here.
  void orderOut() { close(); }
  /// Closes the window as its close control would: only where it has one.
  void performClose();
  void miniaturize();
  void deminiaturize();

  /// Makes an on-screen window key; it does not change the order. In memory that has happened when
  /// this returns. On a display it is asked for: the window is key once
  /// NSWindowDidBecomeKeyNotification has been posted for it, in a later pass of the run loop, and
  /// not at all where the window manager lets the user stay where he is.
  void makeKeyWindow();
  [[nodiscard]] bool isKeyWindow() const;
  /// Whether the window is run modally now.
  [[nodiscard]] bool isModalPanel() const;

  /// Whether the window is open.
  [[nodiscard]] bool isVisible() const { return open_; }
  [[nodiscard]] bool isMiniaturized() const { return miniaturized_; }
  [[nodiscard]] bool isOnScreen() const { return onScreen_; }

  /// What the window system calls this window; None while it has none.
  [[nodiscard]] WindowHandle handle() const { return handle_; }

  /// Shows what has changed in the window's views.
  void setNeedsDisplay();

 private:
  friend class NSApplication;
  friend class NSView;
  friend class NSViewController;

  /// While one is there, what changes in the window is not shown; at its end it is. A view comes on
  /// screen as its controllers have made it on the way, and not half made.
  class Unshown : private NonCopyable {
   public:
    explicit Unshown(Strong<NSWindow> window) : window_(std::move(window)) {
      ++window_->changesUnshown_;
    }
    ~Unshown() {
      --window_->changesUnshown_;
      window_->setNeedsDisplay();
    }

   private:
    Strong<NSWindow> window_;
  };

  static Strong<NSWindow> presentationWindow(WindowKind kind, CGSize size,
                                             const Strong<NSWindow>& owner,
                                             NSWindowStyleMask styleMask);
  void makeContentView();
  void replaceContentView(const Strong<NSView>& view);
  void contentViewLeft() { contentView_ = nullptr; }
  void realize();
  void open(bool key);
  void presentationEnded();
  // What the window system reports.
  void frameChanged(CGRect frame);
  void miniaturizedChanged(bool miniaturized);
  void vanished();

  CGRect frame_;
  NSWindowStyleMask styleMask_;
  std::string title_;
  WindowKind kind_ = WindowKind::Plain;
  Weak<NSWindow> owner_;
  WindowHandle handle_ = WindowHandle::None;
  Strong<NSView> contentView_;
  Strong<NSViewController> contentViewController_;
  Weak<NSWindow> parent_;
  NSArray<NSWindow> children_;
  Weak<NSWindow> sheetParent_;
  NSArray<NSWindow> sheets_;
  Scene scene_;
  int changesUnshown_ = 0;  // how many Unshown there are
  bool movableByWindowBackground_ = false;
  bool canHide_ = true;
  bool open_ = false;
  bool onScreen_ = false;
  bool miniaturized_ = false;
};

}  // namespace vel
