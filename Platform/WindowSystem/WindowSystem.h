// The port: the operations that the platform layer calls on a window system, and the reports that
// the window system makes.
//
// A back end contains no policy. It carries out each operation and reports what happened. It never
// calls the library or the host, and it makes no decision about key windows, modality or closing.
// All operations and reports run on the main thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/Geometry.h"
#include "Platform/Foundation/NonCopyable.h"
#include "Platform/Foundation/Time.h"
#include "Platform/Foundation/WaitHandle.h"
#include "Platform/WindowSystem/NativeWindow.h"

namespace vel {

/// The controls and decorations of a window, one bit each.
using NSWindowStyleMask = std::uint64_t;

inline constexpr NSWindowStyleMask NSWindowStyleMaskBorderless = 0;
inline constexpr NSWindowStyleMask NSWindowStyleMaskTitled = 1;
inline constexpr NSWindowStyleMask NSWindowStyleMaskClosable = 2;
inline constexpr NSWindowStyleMask NSWindowStyleMaskMiniaturizable = 4;
inline constexpr NSWindowStyleMask NSWindowStyleMaskResizable = 8;
inline constexpr NSWindowStyleMask NSWindowStyleMaskDocModalWindow = 64;

/// The identifier of a window within its back end.
enum class WindowHandle : std::uint64_t { None = 0 };

enum class WindowKind : std::uint8_t { Plain, Modal, Sheet };

/// The initial state of a new window.
struct WindowDescription {
  std::string className;
  std::string title;
  /// In screen coordinates, in points. The origin is the lower left corner of the first screen.
  CGRect frame;
  NSWindowStyleMask styleMask = NSWindowStyleMaskBorderless;
  WindowKind kind = WindowKind::Plain;
  /// The window that a modal window or a sheet belongs to; None for a plain window.
  WindowHandle ownerWindow = WindowHandle::None;
  bool isMovableByBackground = false;
};

/// The state of a window at its adoption. The owner of the window is the program that opened it:
/// another program, or the host.
struct AdoptedWindow {
  WindowHandle handle = WindowHandle::None;
  /// The class that the window has in the window system, for example in WM_CLASS on X11.
  std::string className;
  std::string title;
  CGRect frame;
  NSWindowStyleMask styleMask = NSWindowStyleMaskBorderless;
  /// True if the window is mapped, even if other windows obscure it. A window that is not on screen
  /// counts as miniaturised.
  bool isOnScreen = true;
  bool hasFocus = false;
};

/// One drawn element: a filled rectangle or a spinner (an activity indicator).
struct SceneItem {
  enum class Kind : std::uint8_t { Fill, Spinner };
  Kind kind = Kind::Fill;
  /// In points. The origin is the lower left corner of the window's content.
  CGRect frame;
  /// For `Kind::Fill` only.
  CGColor color;
  /// For `Kind::Spinner` only: true while the spinner turns.
  bool isAnimated = false;
  bool operator==(const SceneItem&) const = default;
};

/// The elements that the platform layer draws in a window, back to front. The rest of the window
/// shows what its owner draws.
using Scene = std::vector<SceneItem>;

/// The pixels of the screen within a window's frame. Parts outside the screen are cut off.
struct WindowPicture {
  /// In pixels.
  int width = 0;
  int height = 0;
  /// One byte each for red, green and blue; row by row from the top.
  std::vector<std::uint8_t> pixels;
};

/// Receives a back end's reports about windows. A back end calls the delegate from `deliverEvents`.
/// A back end that knows the result of an operation immediately also calls the delegate from inside
/// the operation.
class VEL_EXPORT WindowSystemDelegate : public NonCopyable {
 public:
  virtual ~WindowSystemDelegate() = default;

  /// The input focus moved to this window. None means that no window of the application has the
  /// focus.
  virtual void focusMoved(WindowHandle window) = 0;
  /// The user switched from another application to `window`. The back end has already called
  /// `focusMoved` for this window. None means that no window of the application has the focus yet.
  /// The delegate then requests the focus for the window that had it when the user left.
  virtual void applicationActivated(WindowHandle window) = 0;
  /// The user switched to another application. Called before the `focusMoved` that reports None.
  virtual void applicationDeactivated() = 0;
  /// The user asked to close the window. The window is still open.
  virtual void closeRequested(WindowHandle window) = 0;
  /// The window no longer exists. Its handle is invalid.
  virtual void windowDestroyed(WindowHandle window) = 0;
  /// The user or another program moved or resized the window.
  virtual void frameChanged(WindowHandle window, CGRect frame) = 0;
  /// The window was miniaturised or restored. The back end also reports this when the owner of an
  /// adopted window unmaps or maps the window.
  virtual void miniaturizedChanged(WindowHandle window, bool isMiniaturized) = 0;
  /// The owner of an adopted window changed the window's style mask. The back end delays this
  /// report while `setStyleMask` overrides the style mask.
  virtual void styleMaskChanged(WindowHandle window, NSWindowStyleMask styleMask) = 0;
  /// The stacking order has changed. `windows` lists windows on screen in their new order, front to
  /// back. Windows that are not listed keep their positions.
  virtual void orderChanged(const std::vector<WindowHandle>& windows) = 0;
  /// Reports, after a change of the style mask, the controls that the window manager still offers
  /// although the mask excludes them. `controls` is 0 (NSWindowStyleMaskBorderless) if the window
  /// manager honours the mask.
  virtual void remainingControlsDetected(WindowHandle window, NSWindowStyleMask controls) = 0;
  /// The connection to the window system is lost. All windows are gone and all handles are invalid.
  virtual void displayLost(std::string_view reason) = 0;
};

/// A window system. Operations on an invalid handle do nothing.
class VEL_EXPORT WindowSystem : public NonCopyable {
 public:
  virtual ~WindowSystem() = default;

  /// Sets the receiver of all reports; null stops them. The back end does not own the delegate.
  virtual void setDelegate(WindowSystemDelegate* delegate) = 0;

  /// The handle that becomes readable when events arrive. The handle is invalid if the window
  /// system has no such handle.
  [[nodiscard]] virtual WaitHandle waitHandle() const = 0;
  /// Reports the events that have arrived. Returns true if an event has arrived. May block for a
  /// round trip to the window system, but never to wait for an event.
  virtual bool deliverEvents() = 0;
  /// The time on the steady clock at which `deliverEvents` must run even if no input arrives: for
  /// events that have already been read, or for the next frame of a spinner. 0 means now.
  /// `kNever` means that `deliverEvents` must run only when input arrives.
  [[nodiscard]] virtual Nanoseconds nextDeadline() const = 0;

  /// Creates a window that is not on screen yet.
  virtual WindowHandle createWindow(const WindowDescription& description) = 0;
  /// Adopts a window that another program or the host has opened. On failure, sets `error` to the
  /// reason and returns `std::nullopt`.
  virtual std::optional<AdoptedWindow> adoptWindow(const NativeWindow& native,
                                                   std::string& error) = 0;
  /// Destroys a window that `createWindow` made. Restores and releases an adopted window.
  virtual void releaseWindow(WindowHandle window) = 0;

  /// Shows the window in front of all other windows.
  virtual void orderFront(WindowHandle window) = 0;
  /// Hides the window. An adopted window stays on screen: only its owner may hide it.
  virtual void orderOut(WindowHandle window) = 0;
  /// Requests the input focus. `focusMoved` reports when the window has the focus.
  virtual void requestFocus(WindowHandle window) = 0;
  /// Requests that the window is miniaturised or restored. `miniaturizedChanged` reports the
  /// result.
  virtual void requestMiniaturized(WindowHandle window, bool isMiniaturized) = 0;
  virtual void setFrame(WindowHandle window, CGRect frame) = 0;
  virtual void setTitle(WindowHandle window, std::string_view title) = 0;
  virtual void setStyleMask(WindowHandle window, NSWindowStyleMask styleMask) = 0;
  virtual void setMovableByBackground(WindowHandle window, bool isMovable) = 0;
  /// Replaces what the platform layer draws in the window. The change is visible immediately.
  virtual void setScene(WindowHandle window, const Scene& scene) = 0;
  /// Discards pointer input to all windows of the application except `window`. None allows pointer
  /// input to all windows again.
  virtual void setModalWindow(WindowHandle window) = 0;

  /// Returns true if the window's scene is on the screen, even if other windows obscure it. Returns
  /// false for an empty scene, and while the window, or a window in which the back end draws the
  /// scene, is not mapped. A back end that cannot find out returns true. May block for a round trip
  /// to the window system.
  virtual bool isSceneOnScreen(WindowHandle /*window*/) { return true; }

  /// Captures the screen within the window's frame, including windows that obscure the window.
  /// Returns `std::nullopt` if the back end has no screen or the window is not on the screen.
  /// Blocks for a round trip to the window system.
  virtual std::optional<WindowPicture> picture(WindowHandle window) = 0;
};

}  // namespace vel
