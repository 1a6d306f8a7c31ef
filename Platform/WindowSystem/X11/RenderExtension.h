#pragma once

#include <xcb/render.h>

#include <map>
#include <optional>

#include "Platform/WindowSystem/X11/Connection.h"

namespace vel::x11 {

/// The picture formats of the server's Render extension. The constructor requests the formats. The
/// first call of `formatOf` reads the reply, or logs that the server has no Render extension.
class RenderExtension {
 public:
  explicit RenderExtension(Connection& connection);

  /// Returns the picture format for windows with this visual. Returns no value if Render cannot
  /// draw in such windows. The first call blocks until the server has replied.
  std::optional<xcb_render_pictformat_t> formatOf(xcb_visualid_t visual);
  /// The picture format of masks: eight bits of opacity. Valid after `formatOf` has returned a
  /// format.
  [[nodiscard]] xcb_render_pictformat_t maskFormat() const { return maskFormat_; }

 private:
  void readFormats();

  Connection& connection_;
  bool isPresent_ = false;
  bool hasReadFormats_ = false;
  xcb_render_query_pict_formats_cookie_t pendingFormats_{};  // valid until the formats are read
  xcb_render_pictformat_t maskFormat_ = XCB_NONE;
  std::map<xcb_visualid_t, xcb_render_pictformat_t> formats_;
};

}  // namespace vel::x11
