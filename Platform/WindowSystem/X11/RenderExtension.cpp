#include "Platform/WindowSystem/X11/RenderExtension.h"

#include "Platform/Foundation/NSLog.h"

namespace vel::x11 {

RenderExtension::RenderExtension(Connection& connection) : connection_(connection) {
  const xcb_query_extension_reply_t* const extension =
      xcb_get_extension_data(connection_.get(), &xcb_render_id);
  isPresent_ = extension != nullptr && extension->present != 0;
  if (isPresent_) {
    const auto version = xcb_render_query_version(connection_.get(), 0, 11);
    xcb_discard_reply(connection_.get(), version.sequence);
    pendingFormats_ = xcb_render_query_pict_formats(connection_.get());
  }
}

std::optional<xcb_render_pictformat_t> RenderExtension::formatOf(xcb_visualid_t visual) {
  if (!hasReadFormats_) {
    hasReadFormats_ = true;
    readFormats();
  }
  const auto entry = formats_.find(visual);
  // A visual's format is useless without the mask format: drawing needs both.
  return entry == formats_.end() || maskFormat_ == XCB_NONE ? std::nullopt
                                                            : std::optional(entry->second);
}

void RenderExtension::readFormats() {
  if (!isPresent_) {
    NSLog("X11: the display cannot draw indicators: it has no Render extension");
    return;
  }
  const auto reply = connection_.waitForReply(xcb_render_query_pict_formats_reply, pendingFormats_,
                                              "RenderQueryPictFormats", connection_.root());
  if (reply == nullptr) {
    return;
  }
  for (auto next = xcb_render_query_pict_formats_formats_iterator(reply.get()); next.rem > 0;
       xcb_render_pictforminfo_next(&next)) {
    const xcb_render_pictforminfo_t& info = *next.data;
    if (info.type == XCB_RENDER_PICT_TYPE_DIRECT && info.depth == 8 &&
        info.direct.alpha_mask == 0xFF) {
      maskFormat_ = info.id;
    }
  }
  for (auto screens = xcb_render_query_pict_formats_screens_iterator(reply.get()); screens.rem > 0;
       xcb_render_pictscreen_next(&screens)) {
    for (auto depths = xcb_render_pictscreen_depths_iterator(screens.data); depths.rem > 0;
         xcb_render_pictdepth_next(&depths)) {
      for (auto visuals = xcb_render_pictdepth_visuals_iterator(depths.data); visuals.rem > 0;
           xcb_render_pictvisual_next(&visuals)) {
        formats_[visuals.data->visual] = visuals.data->format;
      }
    }
  }
}

}  // namespace vel::x11
