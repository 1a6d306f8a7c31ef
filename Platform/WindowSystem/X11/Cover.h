#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "Platform/WindowSystem/WindowSystem.h"
#include "Platform/WindowSystem/X11/Connection.h"
#include "Platform/WindowSystem/X11/PixelFormat.h"
#include "Platform/WindowSystem/X11/ScreenCoordinates.h"
#include "Platform/WindowSystem/X11/Spinner.h"

namespace vel::x11 {

/// What is laid over the content of one window, ours or somebody else's: child windows, one for
/// each item of a scene, and a shield against pointer input while another window is modal. They lie
/// above all other children of the window and take the pointer's input. The server paints them
/// itself, from the moment they are there; what fills the window reaches beyond it, so that growth
/// uncovers nothing.
///
/// A child that the window's owner adds is seen until we have heard of it and are above it again.
/// And where the owner grabs buttons on the window, the server looks for grabs before it looks for
/// the window below the pointer: he gets those presses all the same.
class Cover {
 public:
  Cover(Connection& connection, ScreenCoordinates& coordinates, RenderExtension& render,
        xcb_window_t window, xcb_visualid_t visual, std::uint8_t depth);
  Cover(const Cover&) = delete;
  Cover& operator=(const Cover&) = delete;
  Cover(Cover&&) = delete;
  Cover& operator=(Cover&&) = delete;
  ~Cover();

  /// Shows the scene in the window, which is as large as `frame`.
  void show(const Scene& scene, PixelRect frame);
  void setShielded(bool shielded);
  /// The window no longer exists, and so does nothing in it.
  void windowEnded();

  /// Whether the window is one of the cover's.
  [[nodiscard]] bool owns(xcb_window_t window) const;
  /// Whether the event says that another child of the window may lie above the cover.
  [[nodiscard]] bool isOvertakenBy(const xcb_generic_event_t& event) const;
  void raise();

  /// Whether something in it turns.
  [[nodiscard]] bool isAnimated() const;
  /// Draws the indicators as they are to be at the moment `now`.
  void animate(Nanoseconds now);

 private:
  struct Pane {
    xcb_window_t window = XCB_WINDOW_NONE;
    SceneItem item;
    PixelRect place;
    CGColor color;  // of an indicator: what it lies on
    std::unique_ptr<Spinner> spinner;
  };

  [[nodiscard]] Pane paneFor(const Scene& scene, std::size_t index, PixelRect frame) const;
  void open(Pane& pane);
  void update(Pane& pane, Pane&& wanted);
  void close(Pane& pane);
  void destroy(xcb_window_t window);

  Connection& connection_;
  ScreenCoordinates& coordinates_;
  RenderExtension& render_;
  xcb_window_t window_;
  xcb_visualid_t visual_;
  std::uint8_t depth_;
  PixelFormat format_;
  std::vector<Pane> panes_;  // back to front
  xcb_window_t shield_ = XCB_WINDOW_NONE;
  std::vector<xcb_window_t>
      closed_;  // lately; the server may not have heard of all that went before
};

}  // namespace vel::x11
