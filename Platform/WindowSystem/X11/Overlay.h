#pragma once

#include <cstdint>

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/X11/Connection.h"
#include "Platform/WindowSystem/X11/PixelRect.h"

namespace vel::x11 {

class WindowTable;

/// A window directly above an adopted window: its sibling, with the same position and size. The
/// server clips the adopted window's drawing by this window, even if the owner draws with
/// IncludeInferiors, raises its child windows or uses OpenGL. A child of the adopted window does
/// not hide such drawing.
///
/// The overlay takes no input: the pointer goes through it to the adopted window. In a window
/// manager's frame, the overlay moves with the frame. Without a frame, it follows a move or a
/// resize when we receive the event.
///
/// Another client can destroy the parent window, and the overlay with it, at any time. So errors of
/// requests on the overlay are not logged.
class Overlay final : public NonCopyable {
 public:
  /// The adopted window, as it was when it was adopted.
  struct Covered {
    xcb_window_t window = XCB_WINDOW_NONE;
    xcb_window_t parent = XCB_WINDOW_NONE;
    /// In the parent.
    PixelRect frame;
    int borderWidth = 0;
    bool isMapped = false;
  };

  /// `windows` has the windows whose events the back end has selected. May block for a round trip.
  Overlay(Connection& connection, WindowTable& windows, const Covered& covered);
  ~Overlay() { close(); }

  /// Returns whether the server has the Shape extension. The overlay needs it.
  static bool isSupported(const Connection& connection);

  /// Creates the window. The caller draws in it and then calls `show`.
  void open(std::uint32_t backgroundPixel);
  /// Maps the window, or waits until the adopted window is mapped.
  void show();
  void close();
  [[nodiscard]] bool isOpen() const { return window_ != XCB_WINDOW_NONE; }
  /// The X id; XCB_WINDOW_NONE if the overlay is not open. The window has the root window's visual
  /// and depth.
  [[nodiscard]] xcb_window_t window() const { return window_; }
  void setBackground(std::uint32_t pixel);
  /// Puts the overlay directly above the adopted window.
  void restack();

  /// Follows the adopted window. Closes the overlay if it is destroyed, or if the adopted window
  /// has another parent. May block for a round trip.
  void handle(const xcb_generic_event_t& event);

 private:
  void handleOwnEvent(const xcb_generic_event_t& event);
  void handleCoveredEvent(const xcb_generic_event_t& event);
  void setCoveredMapped(bool isMapped);
  void setCoveredFrame(PixelRect frame);
  [[nodiscard]] PixelRect placement() const;
  [[nodiscard]] bool readFillsParent() const;
  void selectParentEvents(std::uint32_t events);

  Connection& connection_;
  WindowTable& windows_;
  Covered covered_;
  bool fillsParent_;  // the adopted window has the size of its parent
  bool isShown_ = false;
  xcb_window_t window_ = XCB_WINDOW_NONE;
};

}  // namespace vel::x11
