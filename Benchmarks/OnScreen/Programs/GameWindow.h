// The window of a small game that uses XCB only. The game draws a ball on a dark background.
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "Benchmarks/OnScreen/OwnedReply.h"

namespace vel::bench {

class GameWindow {
 public:
  static constexpr std::uint16_t kWidth = 640;
  static constexpr std::uint16_t kHeight = 480;

  /// Opens the window and waits until it is visible.
  GameWindow() {
    if (xcb_connection_has_error(connection_) != 0) {
      std::fprintf(stderr, "cannot open the display\n");
      std::exit(1);
    }
    screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
    window_ = xcb_generate_id(connection_);
    const std::uint32_t values[] = {kBackgroundColor, XCB_EVENT_MASK_EXPOSURE};
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, screen_->root, 320, 240, kWidth,
                      kHeight, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values);
    context_ = xcb_generate_id(connection_);
    xcb_create_gc(connection_, context_, window_, 0, nullptr);
    xcb_map_window(connection_, window_);
    xcb_flush(connection_);
    for (bool isVisible = false; !isVisible;) {
      const OwnedReply<xcb_generic_event_t> event{xcb_wait_for_event(connection_)};
      if (event == nullptr) {
        std::fprintf(stderr, "the connection to the display is lost\n");
        std::exit(1);
      }
      isVisible = (event->response_type & 0x7F) == XCB_EXPOSE;
    }
  }
  GameWindow(const GameWindow&) = delete;
  GameWindow& operator=(const GameWindow&) = delete;
  ~GameWindow() { xcb_disconnect(connection_); }

  [[nodiscard]] xcb_window_t id() const { return window_; }

  void handleEvents() {
    while (const OwnedReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_)}) {
    }
  }

  void draw(std::int64_t frame) {
    const xcb_rectangle_t background{0, 0, kWidth, kHeight};
    const xcb_rectangle_t ball{static_cast<std::int16_t>(frame % (kWidth - 60)), 200, 60, 60};
    fill(kBackgroundColor, background);
    fill(kBallColor, ball);
    xcb_flush(connection_);
  }

  /// True if the screen is white near the top left corner of the window. Blocks for two round
  /// trips to the X server.
  [[nodiscard]] bool isCornerWhite() {
    const OwnedReply<xcb_translate_coordinates_reply_t> position{xcb_translate_coordinates_reply(
        connection_, xcb_translate_coordinates(connection_, window_, screen_->root, 20, 20),
        nullptr)};
    if (position == nullptr) {
      return false;
    }
    const OwnedReply<xcb_get_image_reply_t> image{
        xcb_get_image_reply(connection_,
                            xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, screen_->root,
                                          position->dst_x, position->dst_y, 1, 1, ~0U),
                            nullptr)};
    if (image == nullptr) {
      return false;
    }
    const std::uint8_t* const pixel = xcb_get_image_data(image.get());
    return pixel[0] == 255 && pixel[1] == 255 && pixel[2] == 255;
  }

 private:
  static constexpr std::uint32_t kBackgroundColor = 0x204080;
  static constexpr std::uint32_t kBallColor = 0xFFB020;

  void fill(std::uint32_t color, const xcb_rectangle_t& rectangle) {
    xcb_change_gc(connection_, context_, XCB_GC_FOREGROUND, &color);
    xcb_poly_fill_rectangle(connection_, window_, context_, 1, &rectangle);
  }

  xcb_connection_t* connection_ = xcb_connect(nullptr, nullptr);
  const xcb_screen_t* screen_ = nullptr;
  xcb_window_t window_ = XCB_WINDOW_NONE;
  xcb_gcontext_t context_ = XCB_NONE;
};

}  // namespace vel::bench
