#pragma once

#include <xcb/render.h>

#include <map>
#include <optional>

#include "Platform/WindowSystem/X11/Connection.h"

namespace vel::x11 {

/// What the server's Render extension can draw with; asked for when it is first needed. Without it
/// covers have no indicator; the log says so once.
class RenderExtension {
 public:
  explicit RenderExtension(Connection& connection) : connection_(connection) {}

  /// The format of pictures in windows of a visual; none where the server cannot draw there.
  std::optional<xcb_render_pictformat_t> formatOf(xcb_visualid_t visual);
  /// The format of masks, eight bits of opacity.
  [[nodiscard]] xcb_render_pictformat_t mask() const { return mask_; }

 private:
  void ask();

  Connection& connection_;
  bool asked_ = false;
  xcb_render_pictformat_t mask_ = XCB_NONE;
  std::map<xcb_visualid_t, xcb_render_pictformat_t> formats_;
};

}  // namespace vel::x11
