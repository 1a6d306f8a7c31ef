#pragma once

#include <optional>
#include <string>

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/X11/Connection.h"
#include "Platform/WindowSystem/X11/PixelRect.h"
#include "Platform/WindowSystem/X11/StyleHints.h"

namespace vel::x11 {

/// The server's replies about a window. If the window does not exist, the pointers are null and the
/// properties have no value.
struct WindowState {
  XcbPointer<xcb_get_window_attributes_reply_t> attributes;
  XcbPointer<xcb_get_geometry_reply_t> geometry;
  XcbPointer<xcb_translate_coordinates_reply_t> origin;  // the position in the root window
  std::optional<Property> wmState;
  std::optional<Property> netWmState;

  [[nodiscard]] bool isComplete() const {
    return attributes != nullptr && geometry != nullptr && origin != nullptr;
  }
  // The following operations require that `isComplete` returns true.

  /// The rectangle of the window, in coordinates of the root window.
  [[nodiscard]] PixelRect frame() const {
    return {origin->dst_x, origin->dst_y, geometry->width, geometry->height};
  }
  /// Returns true if the window and all its ancestors are mapped.
  [[nodiscard]] bool isViewable() const;
  /// Returns true if the window itself is not mapped, whether or not its ancestors are.
  [[nodiscard]] bool isUnmapped() const;
  /// Returns true if WM_STATE is IconicState.
  [[nodiscard]] bool isIconic() const;
};

/// What the back end reads before it adopts a window. An adopted window was created by another
/// program or by the host, not by us.
struct WindowInspection {
  xcb_window_t id = XCB_WINDOW_NONE;
  WindowState state;
  XcbPointer<xcb_query_tree_reply_t> tree;
  XcbPointer<xcb_get_input_focus_reply_t> inputFocus;
  StyleHints hints;
  std::optional<Property> supportingWmCheck;
  std::string className;
  std::string title;

  /// Returns true if this is the window that a window manager creates to announce itself. The
  /// _NET_SUPPORTING_WM_CHECK of such a window contains its own id.
  [[nodiscard]] bool isSupportingWmCheckWindow() const;
};

/// Reads windows from the server. The operations may block for round trips.
class WindowInspector final : public NonCopyable {
 public:
  explicit WindowInspector(Connection& connection) : connection_(connection) {}

  WindowState readState(xcb_window_t id);
  WindowInspection inspect(xcb_window_t id);
  /// Returns a text that says why the window cannot be adopted; null if it can be adopted.
  const char* reasonNotToAdopt(const WindowInspection& inspection);
  /// Returns true if the window is fullscreen, or maximised in at least one direction.
  [[nodiscard]] bool isMaximizedOrFullscreen(const WindowState& state) const;
  /// Returns true if the focus is on the window or on one of its descendants.
  bool hasFocus(const WindowInspection& inspection);

 private:
  // Returns true if the window is the frame that a window manager has put around a client's window.
  bool isFrame(const WindowInspection& inspection);

  Connection& connection_;
};

}  // namespace vel::x11
