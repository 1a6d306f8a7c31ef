#pragma once

#include <map>
#include <memory>
#include <string>

#include "Platform/WindowSystem/ReportQueue.h"
#include "Platform/WindowSystem/Wayland/Canvas.h"
#include "Platform/WindowSystem/Wayland/FocusTracker.h"
#include "Platform/WindowSystem/Wayland/ForeignParent.h"
#include "Platform/WindowSystem/Wayland/Frame.h"
#include "Platform/WindowSystem/Wayland/Toplevel.h"
#include "Platform/WindowSystem/WindowSystem.h"

namespace vel {

/// The Wayland back end. It adopts surfaces of its own process and covers them with subsurfaces. It
/// also opens windows of its own. It works on a connection of its own or on the connection of the
/// host.
///
/// Wayland has no screen coordinates, no stacking order and no screenshots for clients. The back
/// end declines these operations.
class WaylandWindowSystem final : public WindowSystem {
 public:
  /// Connects to a compositor. An empty name means the compositor that `WAYLAND_DISPLAY` names.
  /// On failure, sets `error` to the reason and returns null.
  static std::unique_ptr<WaylandWindowSystem> open(const std::string& displayName,
                                                   std::string& error);
  /// Uses the connection of the host. The host disconnects after the back end is destroyed.
  static std::unique_ptr<WaylandWindowSystem> share(wl_display* display, std::string& error);
  ~WaylandWindowSystem() override;

  /// True if the back end can keep a window in front of this surface.
  [[nodiscard]] bool canOwnWindows(const WaylandSurface& surface) const;

  void setDelegate(WindowSystemDelegate* delegate) override { reports_.setDelegate(delegate); }
  [[nodiscard]] WaitHandle waitHandle() const override;
  bool deliverEvents() override;
  [[nodiscard]] Nanoseconds nextDeadline() const override;

  WindowHandle createWindow(const WindowDescription& description) override;
  /// Adopts a surface of the connection. Blocks for a round trip.
  std::optional<AdoptedWindow> adoptWindow(const NativeWindow& native, std::string& error) override;
  void releaseWindow(WindowHandle handle) override;
  void orderFront(WindowHandle handle) override;
  void orderOut(WindowHandle handle) override;
  void requestFocus(WindowHandle handle) override;
  /// Declined: Wayland reports no miniaturisation.
  void requestMiniaturized(WindowHandle /*window*/, bool /*miniaturized*/) override {}
  /// Changes the size and ignores the position. A maximised or fullscreen window keeps its size,
  /// and the back end reports this size. Only its owner can resize an adopted surface. For
  /// an adopted surface, pass the size that the owner has reported. If resizing is disabled, the
  /// next commit of the owner fixes the new size.
  void setFrame(WindowHandle handle, CGRect frame) override;
  void setTitle(WindowHandle handle, std::string_view title) override;
  /// Disables resizing if the back end knows the xdg_toplevel, and reports all other removed
  /// controls as remaining controls.
  void setStyleMask(WindowHandle handle, NSWindowStyleMask styleMask) override;
  void setMovableByBackground(WindowHandle handle, bool movable) override;
  void setScene(WindowHandle handle, const Scene& scene) override;
  void setModalWindow(WindowHandle handle) override;
  /// Declined: a Wayland client cannot read the screen.
  std::optional<WindowPicture> picture(WindowHandle /*window*/) override { return std::nullopt; }

 private:
  struct Window {
    WindowHandle handle = WindowHandle::None;
    /// The current values of the properties. `styleMask` is what `setStyleMask` has set.
    WindowDescription description;
    Scene scene;
    /// The surface of the owner and its role, if the window is adopted. The role is null if the
    /// owner has not passed it.
    wl_surface* adoptedSurface = nullptr;
    xdg_toplevel* adoptedToplevel = nullptr;
    NSWindowStyleMask ownersMask = 0;  // the mask of an adopted window before its first change
    /// True if the style mask has changed since the last report of the remaining controls.
    bool hasNewStyleMask = false;
    bool isOrderedIn = false;  // true from `orderFront` until `orderOut`; always if adopted
    /// The surface of the back end: its own window, or the cover of an adopted window while the
    /// cover is shown. Only a cover has a subsurface. Only a window of the back end has a toplevel.
    wayland::Proxy<wl_surface> surface;
    wayland::Proxy<wl_subsurface> subsurface;
    std::unique_ptr<wayland::Toplevel> toplevel;
    wayland::Proxy<xdg_dialog_v1> dialog;  // of the toplevel, from when the window is first modal
    std::unique_ptr<wayland::ForeignParent> foreignParent;
    std::unique_ptr<wayland::Canvas> canvas;

    [[nodiscard]] bool isAdopted() const { return adoptedSurface != nullptr; }
  };

  explicit WaylandWindowSystem(std::unique_ptr<wayland::Connection> connection);
  static std::unique_ptr<WaylandWindowSystem> start(std::unique_ptr<wayland::Connection> connection,
                                                    std::string& error);

  Window* find(WindowHandle handle);
  [[nodiscard]] WindowHandle findBySurface(const wl_surface* surface) const;
  [[nodiscard]] const wl_surface* findContent(wl_surface* surface) const;
  void buttonPressed(WindowHandle handle, wl_seat* seat, std::uint32_t serial);
  // True if another window is modal.
  [[nodiscard]] bool isShielded(const Window& window) const;
  // Opens, updates or closes the cover of an adopted window.
  void updateCover(Window& window);
  static void closeCover(Window& window);
  // The first call loads libdecor. Returns null if libdecor cannot or must not draw frames.
  const wayland::FrameContext* frameContext();
  void openToplevel(Window& window);
  static void closeToplevel(Window& window);
  // Makes an open window of the back end modal or modeless for the compositor. Does nothing if the
  // compositor does not support xdg_wm_dialog_v1.
  void setModal(Window& window, bool isModal) const;
  // A window gets or loses its frame when it opens.
  void reopenToplevel(Window& window);
  // The compositor has configured a window of the back end.
  void configured(WindowHandle handle, CGSize size);
  void reportFrame(const Window& window);
  void setAdoptedStyle(const Window& window, NSWindowStyleMask previousMask) const;
  // Adds a report of the remaining controls for each window whose style mask has changed. The
  // platform layer removes one control at a time, so the report waits until `deliverEvents`.
  void reportRemainingControls();
  // True if the back end has a surface on the screen: a cover or a window of its own.
  [[nodiscard]] bool hasSurface() const;
  // Releases all windows and reports `displayLost` if the connection is broken.
  void checkConnection();

  std::unique_ptr<wayland::Connection> connection_;
  std::unique_ptr<wayland::FrameContext> frameContext_;
  bool hasLoadedFrameContext_ = false;
  ReportQueue reports_;
  std::map<WindowHandle, std::unique_ptr<Window>> windows_;
  std::uint64_t lastHandle_ = 0;
  WindowHandle modalWindow_ = WindowHandle::None;
  std::unique_ptr<wayland::FocusTracker> focus_;
  Nanoseconds nextFrameTime_ = 0;  // of the spinners
  Nanoseconds lastReadTime_ = 0;   // when the back end has last read the connection
  bool isConnectionLost_ = false;
};

}  // namespace vel
