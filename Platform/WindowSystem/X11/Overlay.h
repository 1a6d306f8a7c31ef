#pragma once

#include <cstdint>

#include "Platform/Foundation/Geometry.h"
#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/X11/Connection.h"
#include "Platform/WindowSystem/X11/PixelRect.h"

namespace vel::x11 {

class WindowTable;

/// A window that covers an adopted window. An adopted window was created by its owner: another
/// program or the host. The overlay is a sibling directly above the adopted window. A child of the
/// adopted window would not hide OpenGL content, other child windows that the owner raises, or
/// drawing with IncludeInferiors.
///
/// The overlay usually has the position and size of the adopted window. If the adopted window fills
/// a parent other than the root window, the overlay has the maximum size of an X window instead.
/// The overlay then still fills the parent when the parent grows.
///
/// The overlay takes no input: the server sends pointer events to the window below it.
///
/// The server moves the overlay together with the parent, for example a frame window of the window
/// manager. If the parent is the root window, the overlay follows the adopted window only when
/// ConfigureNotify arrives.
///
/// On Xwayland, an overlay whose parent is the root window is a separate Wayland surface. Because
/// compositors show this surface above all windows and on all workspaces, the overlay is mapped
/// only while the adopted window has the focus.
///
/// Errors of requests on the overlay are not logged, because the overlay may already be destroyed:
/// if another client destroys the parent, the server also destroys the overlay.
class Overlay final : public NonCopyable {
 public:
  /// The adopted window and its state.
  struct CoveredWindow {
    xcb_window_t window = XCB_WINDOW_NONE;
    xcb_window_t parent = XCB_WINDOW_NONE;
    /// In the coordinates of `parent`.
    PixelRect frame;
    int borderWidth = 0;
    bool isMapped = false;
    bool hasFocus = false;
  };

  /// `coveredWindow` is the adopted window's state at adoption. `windows` contains the back
  /// end's windows. May block for round trips.
  Overlay(Connection& connection, WindowTable& windows, const CoveredWindow& coveredWindow);
  ~Overlay() { close(); }

  /// Returns true if the server has the Shape extension, which an overlay needs.
  static bool isSupported(const Connection& connection);

  /// Creates the X window, but does not map it. The caller then creates child windows in the
  /// overlay and calls `show`.
  void open(CGColor background);
  /// Maps the overlay now, or in a later `handle` if `mustBeMapped` still returns false. May block
  /// for round trips.
  void show();
  void close();
  [[nodiscard]] bool isOpen() const { return window_ != XCB_WINDOW_NONE; }
  /// Returns true if `show` has been called and the adopted window is mapped. On Xwayland, if
  /// the parent is the root window, the adopted window must also have the focus. May block for
  /// round trips.
  [[nodiscard]] bool mustBeMapped() const;
  /// The X id; XCB_WINDOW_NONE if the overlay is not open.
  [[nodiscard]] xcb_window_t window() const { return window_; }
  /// True if the overlay has the maximum size of a window, false if it has the size of the adopted
  /// window.
  [[nodiscard]] bool hasMaximumSize() const { return coveredWindowFillsParent_; }
  /// The visual and the depth of the X window. Both may change when the adopted window gets another
  /// parent.
  [[nodiscard]] xcb_visualid_t visual() const { return visual_; }
  [[nodiscard]] std::uint8_t depth() const { return depth_; }
  void setBackground(CGColor color);
  /// Puts the overlay directly above the adopted window.
  void restack();

  /// Processes an event, so that the overlay follows the adopted window. Closes the overlay if the
  /// X window is destroyed, or if the adopted window gets another parent. May block for
  /// round trips.
  void handle(const xcb_generic_event_t& event);

 private:
  void handleOwnEvent(const xcb_generic_event_t& event);
  void handleCoveredWindowEvent(const xcb_generic_event_t& event);
  void handleFocusEvent(const xcb_generic_event_t& event);
  void coveredWindowMapped();
  void coveredWindowUnmapped();
  void setCoveredWindowFrame(PixelRect frame);
  [[nodiscard]] PixelRect overlayFrame() const;
  // Returns true if the adopted window has no border and the same area as its parent. Always false
  // if the parent is the root window. May block for a round trip.
  [[nodiscard]] bool coveredWindowFillsParent() const;
  // Returns true if the overlay is a separate Wayland surface, which the compositor shows above all
  // windows.
  [[nodiscard]] bool isAboveAllWindows() const;
  void readVisual();
  [[nodiscard]] std::uint32_t pixel(CGColor color) const;
  void selectParentEvents(std::uint32_t events);

  Connection& connection_;
  WindowTable& windows_;
  CoveredWindow coveredWindow_;
  // The last result of `coveredWindowFillsParent()`, which may block.
  bool coveredWindowFillsParent_;
  xcb_visualid_t visual_ = XCB_NONE;
  std::uint8_t depth_ = 0;
  // True from `show` until `close`, even while the overlay is unmapped.
  bool isShown_ = false;
  xcb_window_t window_ = XCB_WINDOW_NONE;
};

}  // namespace vel::x11
