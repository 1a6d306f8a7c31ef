#include "Platform/WindowSystem/X11/Spinner.h"

#include <cmath>
#include <numbers>

#include "Platform/WindowSystem/X11/Requests.h"

namespace vel::x11 {

namespace {

// The dimensions of the spokes, in fractions of the spinner's side length.
constexpr double kOuterRadius = 0.5;
constexpr double kInnerRadius = 0.24;
constexpr double kSpokeWidth = 0.09;
constexpr double kTipWidth = 0.05;
constexpr double kTipLength = 0.02;

// All spokes are black. Each spoke has a different opacity.
constexpr double kMaxOpacity = 0.72;
constexpr double kMinOpacity = 0.14;

xcb_render_fixed_t toFixed(double value) {
  return static_cast<xcb_render_fixed_t>(std::lround(value * 65536));
}

std::uint16_t toColorComponent(double value) {
  return static_cast<std::uint16_t>(std::lround(value * 65535));
}

}  // namespace

Spinner::Spinner(Connection& connection, const RenderExtension& render,
                 xcb_render_pictformat_t format, xcb_window_t window, std::uint8_t depth, int side,
                 CGColor background)
    : connection_(connection),
      window_(window),
      side_(side),
      background_(background),
      maskFormat_(render.maskFormat()),
      pixmap_(connection.makeId()),
      picture_(connection.makeId()) {
  const auto length = static_cast<std::uint16_t>(side_);
  connection_.track(xcb_create_pixmap(connection_.get(), depth, pixmap_, window_, length, length),
                    "CreatePixmap", window_);
  connection_.track(
      xcb_render_create_picture(connection_.get(), picture_, pixmap_, format, 0, nullptr),
      "RenderCreatePicture", window_);
  for (unsigned i = 0; i < kSpokes; ++i) {
    shades_.at(i) = connection_.makeId();
    const double opacity = kMaxOpacity + (kMinOpacity - kMaxOpacity) * i / (kSpokes - 1);
    connection_.track(xcb_render_create_solid_fill(connection_.get(), shades_.at(i),
                                                   {0, 0, 0, toColorComponent(opacity)}),
                      "RenderCreateSolidFill", window_);
  }
}

Spinner::~Spinner() {
  for (const xcb_render_picture_t shade : shades_) {
    connection_.track(xcb_render_free_picture(connection_.get(), shade), "RenderFreePicture",
                      window_);
  }
  connection_.track(xcb_render_free_picture(connection_.get(), picture_), "RenderFreePicture",
                    window_);
  connection_.track(xcb_free_pixmap(connection_.get(), pixmap_), "FreePixmap", window_);
}

void Spinner::draw(unsigned darkestSpoke) {
  const auto length = static_cast<std::uint16_t>(side_);
  const xcb_rectangle_t wholePicture{0, 0, length, length};
  const xcb_render_color_t background{toColorComponent(background_.red),
                                      toColorComponent(background_.green),
                                      toColorComponent(background_.blue), toColorComponent(1)};
  connection_.track(xcb_render_fill_rectangles(connection_.get(), XCB_RENDER_PICT_OP_SRC, picture_,
                                               background, 1, &wholePicture),
                    "RenderFillRectangles", window_);
  for (unsigned spoke = 0; spoke < kSpokes; ++spoke) {
    drawSpoke(spoke, shades_.at((darkestSpoke + kSpokes - spoke) % kSpokes));
  }
  changeWindowAttributes(connection_, window_, XCB_CW_BACK_PIXMAP, {pixmap_});
  clearWindow(connection_, window_);
}

// A spoke is a bar with tapered tips. The triangle strip goes from the centre outwards.
void Spinner::drawSpoke(unsigned spoke, xcb_render_picture_t shade) {
  const double angle = 2 * std::numbers::pi * spoke / kSpokes;
  const double outwardsX = std::sin(angle);
  const double outwardsY = -std::cos(angle);
  const double middle = side_ / 2.0;
  // The width of the bar at a distance from the centre.
  struct CrossSection {
    double radius;
    double width;
  };
  constexpr std::array<CrossSection, 4> kCrossSections{{{kInnerRadius, kTipWidth},
                                                        {kInnerRadius + kTipLength, kSpokeWidth},
                                                        {kOuterRadius - kTipLength, kSpokeWidth},
                                                        {kOuterRadius, kTipWidth}}};
  std::array<xcb_render_pointfix_t, 2 * kCrossSections.size()> points{};
  for (std::size_t i = 0; i < kCrossSections.size(); ++i) {
    const double x = middle + side_ * kCrossSections.at(i).radius * outwardsX;
    const double y = middle + side_ * kCrossSections.at(i).radius * outwardsY;
    const double halfWidth = side_ * kCrossSections.at(i).width / 2;
    points.at(2 * i) = {toFixed(x - halfWidth * outwardsY), toFixed(y + halfWidth * outwardsX)};
    points.at(2 * i + 1) = {toFixed(x + halfWidth * outwardsY), toFixed(y - halfWidth * outwardsX)};
  }
  connection_.track(
      xcb_render_tri_strip(connection_.get(), XCB_RENDER_PICT_OP_OVER, shade, picture_, maskFormat_,
                           0, 0, static_cast<std::uint32_t>(points.size()), points.data()),
      "RenderTriStrip", window_);
}

}  // namespace vel::x11
