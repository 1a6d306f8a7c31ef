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

/// Hides the content of a window behind a scene. Each item of the scene is a fill or a spinner. For
/// each item, the cover creates a child of the window. The child takes the pointer input in its
/// area. The picture of the item is the child's background, so the server shows the picture as soon
/// as it maps the child. For an item that fills the window, the cover makes the child larger than
/// the window, so a growing window shows no gap. The cover keeps these children above the window's
/// other children.
///
/// While another window is modal, the cover also has a shield. The shield is an invisible child of
/// the window and takes all pointer input of the window.
///
/// An adopted window is owned by another program or by the host. The owner can draw over the
/// window's children. So if the first item of the scene fills an adopted window, the cover also
/// opens an overlay: a window above the adopted window. The overlay also shows the first item. With
/// an overlay, the cover creates the children for the other items in the overlay, not in the
/// adopted window.
///
/// The owner can unmap or destroy the cover's windows. `repair` maps or recreates them.
///
/// Limits: without an overlay, a child that the window's owner adds is visible until `handle`
/// raises the cover. If the owner has grabbed a button on its window, a press of that button
/// reaches the owner: the server checks grabs before it looks for the window under the pointer.
class Cover final : public NonCopyable {
 public:
  /// `overlay` is null for a window that we created, and if the server does not support overlays.
  Cover(Connection& connection, ScreenCoordinates& coordinates, RenderExtension& render,
        xcb_window_t window, xcb_visualid_t visual, std::uint8_t depth,
        std::unique_ptr<Overlay> overlay);
  ~Cover();

  /// Replaces the scene. `frame` is the frame of the window; its position is ignored.
  void show(const Scene& scene, PixelRect frame);
  /// Creates the shield. Does nothing if the shield exists.
  void openShield();
  /// Destroys the shield. Does nothing if there is no shield.
  void closeShield();
  /// Call this when the window has been destroyed: the server has then also destroyed its children.
  void windowDestroyed();

  /// Returns true if the server has mapped the window's children that show the scene. Returns false
  /// if the scene is empty. Does not check the overlay and its children.
  [[nodiscard]] bool isMapped() const;
  /// Returns true if the server has mapped the windows that show the scene, and all their
  /// ancestors. Returns false if the scene is empty. Blocks for a round trip.
  [[nodiscard]] bool isViewable() const;
  /// The time by which `isMapped` should return true. `kNever` if `isMapped` returns true, if the
  /// scene is empty, or if `logMissedMapDeadline` has logged.
  [[nodiscard]] Nanoseconds mapDeadline() const;
  /// If `mapDeadline` has passed, logs once that the cover is not on the screen.
  void logMissedMapDeadline(Nanoseconds now);
  /// Returns true if `window` is one of the cover's windows.
  [[nodiscard]] bool owns(xcb_window_t window) const;
  /// Processes an event about the window or the cover. Raises the cover if the event may have put
  /// another child of the window above the cover.
  void handle(const xcb_generic_event_t& event);
  /// Maps the windows of the cover that another client has unmapped. Recreates the windows that
  /// another client has destroyed.
  void repair();
  /// Puts the cover above all other children of the window, and the overlay above the window.
  void raise();

  /// Returns true if a spinner of the cover is animated.
  [[nodiscard]] bool isAnimated() const;
  /// Draws the animated spinners as they look at the time `now`.
  void animate(Nanoseconds now);

 private:
  /// The state of a window of the cover, as the server's events report it.
  enum class ChildState : std::uint8_t { BeingMapped, Mapped, Unmapped, Destroyed };
  struct Child {
    xcb_window_t window = XCB_WINDOW_NONE;
    ChildState state = ChildState::BeingMapped;

    // True until we close the child, even if another client has destroyed its window.
    [[nodiscard]] bool isOpen() const { return window != XCB_WINDOW_NONE; }
    [[nodiscard]] bool isDestroyed() const { return isOpen() && state == ChildState::Destroyed; }
  };
  /// An item of the scene and its window.
  struct Pane {
    Child child;  // not open if the item cannot be drawn
    // True for a child of the overlay. The cover then ignores `child.state`.
    bool isInOverlay = false;
    SceneItem item;
    PixelRect frame;
    CGColor background;
    std::unique_ptr<Spinner> spinner;  // null unless the item is a spinner
  };

  [[nodiscard]] PixelFormat pixelFormatOf(const Pane& pane) const;
  [[nodiscard]] bool needsOverlay(const Scene& scene, PixelRect frame) const;
  // Returns a new pane for the item at `index`, without creating its window.
  [[nodiscard]] Pane describePane(const Scene& scene, std::size_t index, PixelRect frame) const;
  void openPane(Pane& pane);
  // Makes `pane` show what `newPane` describes.
  void updatePane(Pane& pane, Pane&& newPane);
  void closePane(Pane& pane);
  // Like `closePane`, but sends no request: the pane's window is already destroyed, or will be
  // destroyed with its parent.
  void forgetPane(Pane& pane);
  void openOverlay();
  void closeOverlay();
  // Moves the panes in the overlay to their frames.
  void movePanesInOverlay();
  void createShield();
  // Destroys `window` and adds it to `recentlyDestroyedWindows_`.
  void destroy(xcb_window_t window);

  [[nodiscard]] Child* findChild(xcb_window_t window);
  void updateState(const xcb_generic_event_t& event);
  // Returns true if `event` may have put another child of the window above the cover.
  [[nodiscard]] bool isObscuredBy(const xcb_generic_event_t& event) const;
  void mapIfUnmapped(Child& child);

  Connection& connection_;
  ScreenCoordinates& coordinates_;
  RenderExtension& render_;
  xcb_window_t window_;
  xcb_visualid_t visual_;
  std::uint8_t depth_;
  PixelFormat pixelFormat_;
  std::unique_ptr<Overlay> overlay_;
  bool usesOverlay_ = false;  // the result of `needsOverlay` for the shown scene
  std::vector<Pane> panes_;   // back to front
  Child shield_;
  Nanoseconds mapDeadline_ = kNever;
  // The windows that `destroy` has destroyed most recently. If `window_` was destroyed first, our
  // DestroyWindow requests for its children fail. `windowDestroyed` ensures that these errors are
  // not logged.
  std::vector<xcb_window_t> recentlyDestroyedWindows_;
};

}  // namespace vel::x11
