// The port: what a window system does for the platform layer, and what it reports.
//
// A back end is mechanism only. It does what it is told and reports what happened; it never calls
// the library or the host, and it decides nothing about key windows, modality or closing.
// Everything here belongs to the main thread.
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

namespace vel {

/// Which controls and decorations a window has, one bit each.
using NSWindowStyleMask = std::uint64_t;

inline constexpr NSWindowStyleMask NSWindowStyleMaskBorderless = 0;
inline constexpr NSWindowStyleMask NSWindowStyleMaskTitled = 1;
inline constexpr NSWindowStyleMask NSWindowStyleMaskClosable = 2;
inline constexpr NSWindowStyleMask NSWindowStyleMaskMiniaturizable = 4;
inline constexpr NSWindowStyleMask NSWindowStyleMaskResizable = 8;
inline constexpr NSWindowStyleMask NSWindowStyleMaskDocModalWindow = 64;

/// A back end's name for one of its windows.
enum class WindowHandle : std::uint64_t { None = 0 };

enum class WindowKind : std::uint8_t { Plain, Modal, Sheet };

/// What a window is made from.
struct WindowDescription {
  std::string className;
  std::string title;
  /// On the screen, in points; the origin is the lower left corner of the first screen.
  CGRect frame;
  NSWindowStyleMask styleMask = NSWindowStyleMaskBorderless;
  WindowKind kind = WindowKind::Plain;
  /// The window that a modal window or a sheet belongs to.
  WindowHandle owner = WindowHandle::None;
  bool movableByBackground = false;
};

/// A window of somebody else, as it was found.
struct AdoptedWindow {
  WindowHandle handle = WindowHandle::None;
  std::string className;
  std::string title;
  CGRect frame;
  NSWindowStyleMask styleMask = NSWindowStyleMaskBorderless;
  /// Whether it can be seen, but for what lies over it; else it counts as miniaturised.
  bool onScreen = true;
  bool hasFocus = false;
};

/// One thing to draw: a filled rectangle, or a spinning indicator.
struct SceneItem {
  enum class Kind : std::uint8_t { Fill, Spinner };
  Kind kind = Kind::Fill;
  /// In the window's content, in points, from its lower left corner.
  CGRect frame;
  /// Fill only.
  CGColor color;
  /// Spinner only: whether it turns.
  bool animates = false;
  bool operator==(const SceneItem&) const = default;
};

/// What the platform layer draws in a window, back to front. Where it draws nothing, the window
/// shows what its owner draws.
using Scene = std::vector<SceneItem>;

/// What is seen on the screen in a window's place, as far as that is on the screen.
struct WindowPicture {
  /// In pixels.
  int width = 0;
  int height = 0;
  /// Red, green and blue, a byte each, row by row from the top.
  std::vector<std::uint8_t> pixels;
};

/// Hears what happened to windows. Called from inside `deliverEvents` and, where a back end learns
/// of the outcome at once, from inside the operation that asked for it.
class VEL_EXPORT WindowSystemDelegate : public NonCopyable {
 public:
  virtual ~WindowSystemDelegate() = default;

  /// The input focus is now with this window, or with none of ours.
  virtual void focusMoved(WindowHandle window) = 0;
  /// The user came back from another application, to the window named here (after `focusMoved` has
  /// told of it) or, with None, to whichever had the focus when he left.
  virtual void applicationActivated(WindowHandle window) = 0;
  /// The user goes to another application. Sent before `focusMoved` tells that no window of ours
  /// has the focus.
  virtual void applicationDeactivated() = 0;
  /// The user asked to close the window; it is still open.
  virtual void closeRequested(WindowHandle window) = 0;
  /// The window no longer exists; its handle is void.
  virtual void windowDestroyed(WindowHandle window) = 0;
  /// The window has been moved or resized by somebody else.
  virtual void frameChanged(WindowHandle window, CGRect frame) = 0;
  /// The window has been miniaturised or brought back. Of somebody else's, also where its owner has
  /// taken it off the screen in another way, or put it there.
  virtual void miniaturizedChanged(WindowHandle window, bool miniaturized) = 0;
  /// The owner of an adopted window has given it this style mask. Not told while another one is
  /// set: then it waits until the window has again the one it had.
  virtual void styleMaskChanged(WindowHandle window, NSWindowStyleMask styleMask) = 0;
  /// The windows named here, all on screen, lie in this order now, front to back. One that is not
  /// named lies where it lay.
  virtual void orderChanged(const std::vector<WindowHandle>& windows) = 0;
  /// After a change of style: which controls the window manager still offers although the window's
  /// style mask takes them away; Borderless (0) when it honoured the mask.
  virtual void controlsKept(WindowHandle window, NSWindowStyleMask controls) = 0;
  /// The connection is lost and with it every window; all handles are void.
  virtual void displayLost(std::string_view reason) = 0;
};

/// A window system. Operations on a void handle do nothing.
class VEL_EXPORT WindowSystem : public NonCopyable {
 public:
  virtual ~WindowSystem() = default;

  /// Who hears what happened; none stops the reports. Not owned.
  virtual void setDelegate(WindowSystemDelegate* delegate) = 0;

  /// Has input when events have come. Invalid if there is nothing to wait for.
  [[nodiscard]] virtual WaitHandle waitHandle() const = 0;
  /// Reports what has happened; answers whether there was anything. Waits for no event, only for
  /// the window system's answers.
  virtual bool deliverEvents() = 0;
  /// When `deliverEvents` has something to do apart from new input on the handle (events read
  /// already, the next picture of an indicator): a moment on the steady clock, 0 for now, `kNever`
  /// for nothing.
  [[nodiscard]] virtual Nanoseconds nextDeadline() const = 0;

  /// Makes a window, not yet on screen.
  virtual WindowHandle createWindow(const WindowDescription& description) = 0;
  /// Takes part in a window of somebody else, named by the window system's own id; nothing, with
  /// the reason in `error`, where that cannot be done.
  virtual std::optional<AdoptedWindow> adoptWindow(std::uint64_t nativeId, std::string& error) = 0;
  /// Ends a window of ours; lets go of an adopted one, which stays as it is.
  virtual void releaseWindow(WindowHandle window) = 0;

  /// Puts the window on screen, in front.
  virtual void orderFront(WindowHandle window) = 0;
  /// Takes the window off the screen. An adopted one stays there: it is its owner's to hide.
  virtual void orderOut(WindowHandle window) = 0;
  /// Asks for the input focus; `focusMoved` tells when it has come.
  virtual void requestFocus(WindowHandle window) = 0;
  /// Asks to miniaturise the window or to bring it back; `miniaturizedChanged` tells when it is
  /// done.
  virtual void requestMiniaturized(WindowHandle window, bool miniaturized) = 0;
  virtual void setFrame(WindowHandle window, CGRect frame) = 0;
  virtual void setTitle(WindowHandle window, std::string_view title) = 0;
  virtual void setStyleMask(WindowHandle window, NSWindowStyleMask styleMask) = 0;
  virtual void setMovableByBackground(WindowHandle window, bool movable) = 0;
  /// Replaces what is drawn in the window, and shows it at once.
  virtual void setScene(WindowHandle window, const Scene& scene) = 0;
  /// While a window is named here, pointer input to the application's other windows goes nowhere.
  virtual void setModalWindow(WindowHandle window) = 0;

  /// What is seen in the window's place now, with whatever lies over it; none where there is no
  /// screen to look at, or the window is not on it. Waits for the display.
  virtual std::optional<WindowPicture> picture(WindowHandle window) = 0;
};

}  // namespace vel
