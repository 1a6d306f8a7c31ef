#include "Platform/WindowSystem/X11/Spinner.h"

#include <cmath>
#include <numbers>

#include "Platform/Foundation/NSLog.h"

namespace vel::x11 {

namespace {

// The shape, in parts of the side.
constexpr double kOuterRadius = 0.5;
constexpr double kInnerRadius = 0.24;
constexpr double kWidth = 0.09;
constexpr double kTipWidth = 0.05;
constexpr double kTipLength = 0.02;

constexpr double kDarkest = 0.72;
constexpr double kLightest = 0.14;

xcb_render_fixed_t fixed(double value) {
  return static_cast<xcb_render_fixed_t>(std::lround(value * 65536));
}

std::uint16_t component(double value) {
  return static_cast<std::uint16_t>(std::lround(value * 65535));
}

}  // namespace

std::optional<xcb_render_pictformat_t> Render::formatOf(xcb_visualid_t visual) {
  if (!asked_) {
    asked_ = true;
    ask();
  }
  const auto found = formats_.find(visual);
  return found == formats_.end() || mask_ == XCB_NONE ? std::nullopt : std::optional(found->second);
}

void Render::ask() {
  const xcb_query_extension_reply_t* const extension =
      xcb_get_extension_data(connection_.get(), &xcb_render_id);
  if (extension == nullptr || extension->present == 0) {
    NSLog("X11: the display cannot draw indicators: it has no Render extension");
    return;
  }
  connection_.answer(xcb_render_query_version_reply,
                     xcb_render_query_version(connection_.get(), 0, 11), "RenderQueryVersion",
                     connection_.root());
  const auto reply = connection_.answer(xcb_render_query_pict_formats_reply,
                                        xcb_render_query_pict_formats(connection_.get()),
                                        "RenderQueryPictFormats", connection_.root());
  if (reply == nullptr) {
    return;
  }
  for (auto next = xcb_render_query_pict_formats_formats_iterator(reply.get()); next.rem > 0;
       xcb_render_pictforminfo_next(&next)) {
    const xcb_render_pictforminfo_t& info = *next.data;
    if (info.type == XCB_RENDER_PICT_TYPE_DIRECT && info.depth == 8 &&
        info.direct.alpha_mask == 0xFF) {
      mask_ = info.id;
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

Spinner::Spinner(Connection& connection, const Render& render, xcb_render_pictformat_t format,
                 xcb_window_t window, std::uint8_t depth, int side, CGColor background)
    : connection_(connection),
      window_(window),
      side_(side),
      background_(background),
      mask_(render.mask()),
      pixmap_(connection.makeId()),
      picture_(connection.makeId()) {
  const auto length = static_cast<std::uint16_t>(side_);
  connection_.sent(xcb_create_pixmap(connection_.get(), depth, pixmap_, window_, length, length),
                   "CreatePixmap", window_);
  connection_.sent(
      xcb_render_create_picture(connection_.get(), picture_, pixmap_, format, 0, nullptr),
      "RenderCreatePicture", window_);
  for (unsigned i = 0; i < kSpokes; ++i) {
    inks_.at(i) = connection_.makeId();
    const double shade = kDarkest + (kLightest - kDarkest) * i / (kSpokes - 1);
    connection_.sent(
        xcb_render_create_solid_fill(connection_.get(), inks_.at(i), {0, 0, 0, component(shade)}),
        "RenderCreateSolidFill", window_);
  }
}

Spinner::~Spinner() {
  for (const xcb_render_picture_t ink : inks_) {
    connection_.sent(xcb_render_free_picture(connection_.get(), ink), "RenderFreePicture", window_);
  }
  connection_.sent(xcb_render_free_picture(connection_.get(), picture_), "RenderFreePicture",
                   window_);
  connection_.sent(xcb_free_pixmap(connection_.get(), pixmap_), "FreePixmap", window_);
}

void Spinner::draw(unsigned position) {
  const auto length = static_cast<std::uint16_t>(side_);
  const xcb_rectangle_t whole{0, 0, length, length};
  const xcb_render_color_t paper{component(background_.red), component(background_.green),
                                 component(background_.blue), component(1)};
  connection_.sent(xcb_render_fill_rectangles(connection_.get(), XCB_RENDER_PICT_OP_SRC, picture_,
                                              paper, 1, &whole),
                   "RenderFillRectangles", window_);
  for (unsigned spoke = 0; spoke < kSpokes; ++spoke) {
    drawSpoke(spoke, inks_.at((position + kSpokes - spoke) % kSpokes));
  }
  connection_.sent(
      xcb_change_window_attributes(connection_.get(), window_, XCB_CW_BACK_PIXMAP, &pixmap_),
      "ChangeWindowAttributes", window_);
  connection_.sent(xcb_clear_area(connection_.get(), 0, window_, 0, 0, 0, 0), "ClearArea", window_);
}

// A bar with blunt tips, in one strip of triangles from the inside out.
void Spinner::drawSpoke(unsigned spoke, xcb_render_picture_t ink) {
  const double angle = 2 * std::numbers::pi * spoke / kSpokes;
  const double outwardsX = std::sin(angle);
  const double outwardsY = -std::cos(angle);
  const double middle = side_ / 2.0;
  struct Cut {
    double radius;
    double width;
  };
  constexpr std::array<Cut, 4> kCuts{{{kInnerRadius, kTipWidth},
                                      {kInnerRadius + kTipLength, kWidth},
                                      {kOuterRadius - kTipLength, kWidth},
                                      {kOuterRadius, kTipWidth}}};
  std::array<xcb_render_pointfix_t, 2 * kCuts.size()> points{};
  for (std::size_t i = 0; i < kCuts.size(); ++i) {
    const double x = middle + side_ * kCuts.at(i).radius * outwardsX;
    const double y = middle + side_ * kCuts.at(i).radius * outwardsY;
    const double half = side_ * kCuts.at(i).width / 2;
    points.at(2 * i) = {fixed(x - half * outwardsY), fixed(y + half * outwardsX)};
    points.at(2 * i + 1) = {fixed(x + half * outwardsY), fixed(y - half * outwardsX)};
  }
  connection_.sent(
      xcb_render_tri_strip(connection_.get(), XCB_RENDER_PICT_OP_OVER, ink, picture_, mask_, 0, 0,
                           static_cast<std::uint32_t>(points.size()), points.data()),
      "RenderTriStrip", window_);
}

}  // namespace vel::x11
