#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "Platform/Foundation/Geometry.h"
#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/WindowSystem.h"

struct libdecor;
struct libdecor_configuration;
struct libdecor_frame;
struct wl_display;
struct wl_surface;
struct xdg_toplevel;

namespace vel::wayland {

struct Libdecor;

/// The connection of libdecor to the compositor. libdecor uses and dispatches the default event
/// queue of the display, so the display must not belong to the host. `WaylandWindowSystem` owns the
/// context.
class FrameContext final : public NonCopyable {
 public:
  /// Loads libdecor. If libdecor does not work, logs the reason and returns null. Blocks for round
  /// trips.
  static std::unique_ptr<FrameContext> create(wl_display* display);
  ~FrameContext();

  /// Reads the connection without blocking, and dispatches the events of the default queue. Returns
  /// true if there were any.
  bool dispatch();
  /// True if events wait in the default queue.
  [[nodiscard]] bool hasQueuedEvents() const;

 private:
  friend class Frame;

  FrameContext(wl_display* display, std::unique_ptr<const Libdecor> functions, libdecor* context);

  wl_display* display_;
  std::unique_ptr<const Libdecor> functions_;
  libdecor* context_;
};

/// The frame that libdecor draws around a surface, and the role xdg_toplevel of this surface. The
/// surface is the content of the frame.
class Frame final : public NonCopyable {
 public:
  struct Handlers {
    /// Called when the surface must get a buffer. `size` is the size of the content that the
    /// compositor requires, or zero if the size does not change.
    std::function<void(CGSize size)> configured;
    std::function<void()> closeRequested;
  };

  /// Returns null if libdecor cannot draw a frame.
  static std::unique_ptr<Frame> create(const FrameContext& context, wl_surface* surface,
                                       Handlers handlers);
  ~Frame();

  [[nodiscard]] xdg_toplevel* toplevel() const;
  /// False if the window is maximised, fullscreen or tiled.
  [[nodiscard]] bool isFloating() const;
  /// True if libdecor draws a part of the frame on this surface. A compositor can move the keyboard
  /// to such a part when the user clicks on it.
  [[nodiscard]] bool contains(wl_surface* surface) const;

  /// Commits the surface, which must not have a buffer.
  void map();
  void setTitle(std::string_view title);
  /// Makes the controls of the frame match the style mask, and sets the size of the content. The
  /// user can move every window. The next commit of the surface applies the size.
  void setStyle(NSWindowStyleMask styleMask, CGSize size);

 private:
  friend struct FrameEvents;

  struct Size {
    int width = 0;
    int height = 0;
    bool operator==(const Size&) const = default;
  };

  Frame(const FrameContext& context, wl_surface* surface, Handlers handlers);
  void configure(libdecor_configuration* configuration);
  // The size of the content that the compositor requires. If it requires none, the floating size.
  Size contentSizeIn(libdecor_configuration* configuration);
  void allowAllSizes();
  // `configuration` is null if the commit does not reply to a configure event.
  void commit(libdecor_configuration* configuration);

  const Libdecor& functions_;
  wl_surface* surface_;
  Handlers handlers_;
  libdecor_frame* frame_ = nullptr;
  Size size_;          // of the content
  Size floatingSize_;  // the latest `size_` while `isFloating` was true
  bool isResizable_ = true;
  bool isConfigured_ = false;
};

}  // namespace vel::wayland
