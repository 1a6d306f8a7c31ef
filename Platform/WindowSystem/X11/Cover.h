#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/WindowSystem.h"
#include "Platform/WindowSystem/X11/Connection.h"
#include "Platform/WindowSystem/X11/PixelFormat.h"
#include "Platform/WindowSystem/X11/ScreenCoordinates.h"
#include "Platform/WindowSystem/X11/Spinner.h"

namespace vel::x11 {

/// What we show over the content of one window, adopted or created by us: a child window for each
/// item of a scene, and a shield that takes the pointer input while another window is modal. The
/// children are above all other children of the window, and take the pointer input. Their
/// background is the picture, so the server shows it as soon as it maps them. A child that fills
/// the window is larger than the window, so it still fills the window after growth.
///
/// Limits: a child that the window's owner adds is visible until we receive the event and raise the
/// cover. A button that the owner has grabbed on its window reaches the owner, because the server
/// checks grabs before it looks for the window under the pointer.
class Cover final : public NonCopyable {
 public:
  Cover(Connection& connection, ScreenCoordinates& coordinates, RenderExtension& render,
        xcb_window_t window, xcb_visualid_t visual, std::uint8_t depth);
  ~Cover();

  /// Replaces the scene. `frame` has the size of the window.
  void show(const Scene& scene, PixelRect frame);
  void setShielded(bool shielded);
  /// The window has been destroyed, and with it the windows of the cover.
  void windowEnded();

  /// Returns true if `window` is one of the cover's windows.
  [[nodiscard]] bool owns(xcb_window_t window) const;
  /// Returns true if another child of the window can be above the cover after the event.
  [[nodiscard]] bool isOvertakenBy(const xcb_generic_event_t& event) const;
  /// Puts the cover above all other children of the window.
  void raise();

  /// Returns true if an indicator of the cover turns.
  [[nodiscard]] bool isAnimated() const;
  /// Turns the indicators to their position at the time `now`.
  void animate(Nanoseconds now);

 private:
  /// The child window for one item of the scene.
  struct Pane {
    xcb_window_t window = XCB_WINDOW_NONE;  // none if the item cannot be drawn
    SceneItem item;
    PixelRect frame;
    CGColor background;
    std::unique_ptr<Spinner> spinner;  // only of an indicator
  };

  [[nodiscard]] Pane describePane(const Scene& scene, std::size_t index, PixelRect frame) const;
  void openPane(Pane& pane);
  void updatePane(Pane& pane, Pane&& newPane);
  void closePane(Pane& pane);
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
  std::vector<xcb_window_t> recentlyDestroyed_;  // errors for these can still arrive
};

}  // namespace vel::x11
