#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/WindowSystem.h"
#include "Platform/WindowSystem/X11/Connection.h"
#include "Platform/WindowSystem/X11/Overlay.h"
#include "Platform/WindowSystem/X11/PixelFormat.h"
#include "Platform/WindowSystem/X11/ScreenCoordinates.h"
#include "Platform/WindowSystem/X11/Spinner.h"
#include "Platform/WindowSystem/X11/Timing.h"

namespace vel::x11 {

/// The windows that hide the content of one window of the back end: a child window for each
/// item of a scene, and a shield that takes the pointer input while another window is modal. The
/// children are above all other children of the window, and take the pointer input. Their
/// background is the picture, so the server shows it as soon as it maps them. A child that fills
/// the window is larger than the window, so it still fills the window after growth.
///
/// The owner of an adopted window can draw over its children. So if the scene's first item fills an
/// adopted window, an overlay repeats that item above the window and contains the other items.
///
/// The owner can unmap or destroy all children of its window. `repair` reverses this.
///
/// Limits: without an overlay, a child that the window's owner adds is visible until we receive the
/// event and raise the cover. A button that the owner has grabbed on its window reaches the owner,
/// because the server checks grabs before it looks for the window under the pointer.
class Cover final : public NonCopyable {
 public:
  /// `overlay` is null for a window of our own.
  Cover(Connection& connection, ScreenCoordinates& coordinates, RenderExtension& render,
        xcb_window_t window, xcb_visualid_t visual, std::uint8_t depth,
        std::unique_ptr<Overlay> overlay);
  ~Cover();

  /// Replaces the scene. `frame` has the size of the window.
  void show(const Scene& scene, PixelRect frame);
  void setShielded(bool shielded);
  /// The window has been destroyed, and with it the children of the cover.
  void windowDestroyed();

  /// Returns true if the server has mapped all children that show the scene. Returns false if there
  /// is no scene.
  [[nodiscard]] bool isMapped() const;
  /// When the server should have mapped the children that show the scene; `kNever` if it has.
  [[nodiscard]] Nanoseconds mapDeadline() const;
  /// Logs, after `mapDeadline`, that the cover is not on the screen.
  void reportIfUnmapped(Nanoseconds now);
  /// Returns true if `window` is one of the cover's windows.
  [[nodiscard]] bool owns(xcb_window_t window) const;
  /// Follows the window, and raises the cover if another child can be above it after the event.
  void handle(const xcb_generic_event_t& event);
  /// Maps or creates again what another client has unmapped or destroyed.
  void repair();
  /// Puts the cover above all other children of the window, and the overlay above the window.
  void raise();

  /// Returns true if an indicator of the cover turns.
  [[nodiscard]] bool isAnimated() const;
  /// Turns the indicators to their position at the time `now`.
  void animate(Nanoseconds now);

 private:
  /// The state of a child of the window, from the events about it.
  enum class ChildState : std::uint8_t { BeingMapped, Mapped, Unmapped, Destroyed };
  struct Child {
    xcb_window_t window = XCB_WINDOW_NONE;
    ChildState state = ChildState::BeingMapped;

    [[nodiscard]] bool isOpen() const { return window != XCB_WINDOW_NONE; }
  };
  /// The window for one item of the scene.
  struct Pane {
    Child child;               // not open if the item cannot be drawn
    bool isInOverlay = false;  // a child of the overlay; its state is not tracked
    SceneItem item;
    PixelRect frame;
    CGColor background;
    std::unique_ptr<Spinner> spinner;  // only of an indicator
  };

  [[nodiscard]] bool needsOverlay(const Scene& scene, PixelRect frame) const;
  [[nodiscard]] Pane describePane(const Scene& scene, std::size_t index, PixelRect frame) const;
  void openPane(Pane& pane);
  void updatePane(Pane& pane, Pane&& newPane);
  void closePane(Pane& pane);
  void forgetPane(Pane& pane);
  void openOverlay();
  void closeOverlay();
  void openShield();
  void destroy(xcb_window_t window);

  [[nodiscard]] Child* findChild(xcb_window_t window);
  void updateState(const xcb_generic_event_t& event);
  [[nodiscard]] bool isObscuredBy(const xcb_generic_event_t& event) const;
  [[nodiscard]] bool mustReopen(Child& child);

  Connection& connection_;
  ScreenCoordinates& coordinates_;
  RenderExtension& render_;
  xcb_window_t window_;
  xcb_visualid_t visual_;
  std::uint8_t depth_;
  PixelFormat format_;
  PixelFormat overlayFormat_;
  std::unique_ptr<Overlay> overlay_;
  bool usesOverlay_ = false;
  std::vector<Pane> panes_;  // back to front
  Child shield_;
  Nanoseconds mapDeadline_ = kNever;
  std::vector<xcb_window_t> recentlyDestroyed_;  // errors for these can still arrive
};

}  // namespace vel::x11
