#pragma once

#include <xcb/render.h>

#include <map>
#include <optional>

#include "Platform/WindowSystem/X11/Connection.h"

namespace vel::x11 {

/// The picture formats of the server's Render extension. The first call of `formatOf` reads the
/// formats from the server. Without the extension, no indicator is drawn, and this class logs one
/// line.
class RenderExtension {
 public:
  explicit RenderExtension(Connection& connection) : connection_(connection) {}

  /// Returns the format of pictures in windows with this visual. Returns no value if Render cannot
  /// draw in such windows. The first call blocks for round trips to the X server.
  std::optional<xcb_render_pictformat_t> formatOf(xcb_visualid_t visual);
  /// The format of masks: eight bits of opacity. Valid after `formatOf` has returned a format.
  [[nodiscard]] xcb_render_pictformat_t maskFormat() const { return maskFormat_; }

 private:
  void readFormats();

  Connection& connection_;
  bool hasReadFormats_ = false;
  xcb_render_pictformat_t maskFormat_ = XCB_NONE;
  std::map<xcb_visualid_t, xcb_render_pictformat_t> formats_;
};

}  // namespace vel::x11
