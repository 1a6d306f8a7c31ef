#pragma once

#include <cstdint>

#include "Platform/Foundation/Geometry.h"
#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/X11/Connection.h"
#include "Platform/WindowSystem/X11/PixelRect.h"

namespace vel::x11 {

class WindowTable;

/// A window that hides an adopted window. An adopted window was created by its owner, not by us.
/// The overlay is a sibling directly above the adopted window, with the same position and size. If
/// the adopted window fills its parent, and the parent is not the root window, the overlay has the
/// maximum size of a window instead. The overlay clips what the owner draws, even if the owner
/// draws with IncludeInferiors, raises child windows or uses OpenGL. An overlay that was a child
/// of the adopted window would not hide such drawing.
///
/// The overlay takes no input: the server sends pointer events to the window below it. If the
/// window manager has put the adopted window into a frame window, the overlay moves with the frame
/// window. If the parent is the root window, the overlay follows a move or a resize of the adopted
/// window only when we receive the event.
///
/// On Xwayland, an overlay whose parent is the root window is a separate Wayland surface.
/// Compositors show this surface above all windows and on all workspaces. So this overlay is mapped
/// only while the adopted window has the focus.
///
/// Another client can destroy the parent window at any time. The server then also destroys the
/// overlay. So errors of requests on the overlay are not logged.
class Overlay final : public NonCopyable {
 public:
  /// The state of the adopted window, which the overlay covers.
  struct CoveredWindow {
    xcb_window_t window = XCB_WINDOW_NONE;
    xcb_window_t parent = XCB_WINDOW_NONE;
    /// In the coordinates of `parent`.
    PixelRect frame;
    int borderWidth = 0;
    bool isMapped = false;
    bool hasFocus = false;
  };

  /// `coveredWindow` is the adopted window's state at adoption. `windows` contains the windows
  /// whose events the back end has selected. May block for round trips.
  Overlay(Connection& connection, WindowTable& windows, const CoveredWindow& coveredWindow);
  ~Overlay() { close(); }

  /// Returns true if the server has the Shape extension, which an overlay needs.
  static bool isSupported(const Connection& connection);

  /// Creates the overlay's window, unmapped. The caller then creates child windows in the overlay
  /// and calls `show`.
  void open(CGColor background);
  /// Maps the overlay now, or lets `handle` map it as soon as `mustBeMapped` returns true. May
  /// block for round trips.
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
  /// The visual and the depth of the overlay's window. They change when the adopted window gets
  /// another parent.
  [[nodiscard]] xcb_visualid_t visual() const { return visual_; }
  [[nodiscard]] std::uint8_t depth() const { return depth_; }
  void setBackground(CGColor color);
  /// Puts the overlay directly above the adopted window.
  void restack();

  /// Processes an event, so that the overlay follows the adopted window. Closes the overlay if the
  /// overlay's window is destroyed, or if the adopted window gets another parent. May block for
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
  // Returns true if a Wayland compositor shows the overlay above all windows.
  [[nodiscard]] bool isAboveAllWindows() const;
  void readVisual();
  [[nodiscard]] std::uint32_t pixel(CGColor color) const;
  void selectParentEvents(std::uint32_t events);

  Connection& connection_;
  WindowTable& windows_;
  CoveredWindow coveredWindow_;
  bool coveredWindowFillsParent_;  // the last result of `coveredWindowFillsParent()`
  xcb_visualid_t visual_ = XCB_NONE;
  std::uint8_t depth_ = 0;
  // True from `show` until `close`, even while the overlay is unmapped.
  bool isShown_ = false;
  xcb_window_t window_ = XCB_WINDOW_NONE;
};

}  // namespace vel::x11
