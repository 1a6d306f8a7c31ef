#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "Platform/Foundation/Geometry.h"
#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/Wayland/Connection.h"
#include "Platform/WindowSystem/WindowSystem.h"

namespace vel::wayland {

/// The role xdg_toplevel of a surface, which makes the surface a window of the library. The
/// compositor shows the window while this object exists and the surface has a buffer.
class Toplevel final : public NonCopyable {
 public:
  struct Handlers {
    /// Called when the surface must get a buffer. `size` is the size that the compositor requires,
    /// or zero if the client chooses the size.
    std::function<void(CGSize size)> configured;
    std::function<void()> closeRequested;
  };

  /// `owner` is the window in front of which the compositor keeps this window; it may be null.
  /// Commits the surface, which must not have a buffer.
  Toplevel(Connection& connection, wl_surface* surface, const WindowDescription& description,
           xdg_toplevel* owner, Handlers handlers);
  ~Toplevel();

  [[nodiscard]] xdg_toplevel* proxy() const { return toplevel_.get(); }
  /// True if the surface may have a buffer: the compositor has configured it.
  [[nodiscard]] bool isConfigured() const { return isConfigured_; }

  void setTitle(std::string_view title);
  /// Allows resizing, or fixes the size to `size`. Asks the compositor to draw a frame if the style
  /// mask has a title bar. The next commit of the surface applies the changes.
  void setStyle(NSWindowStyleMask styleMask, CGSize size);
  /// Lets the user move the window while the pointer button of `serial` is pressed.
  void move(wl_seat* seat, std::uint32_t serial);

 private:
  friend struct ToplevelEvents;

  Handlers handlers_;
  Proxy<xdg_surface> surface_;
  Proxy<xdg_toplevel> toplevel_;
  Proxy<zxdg_toplevel_decoration_v1> decoration_;
  CGSize pendingSize_;  // the size in the latest configure event
  bool isConfigured_ = false;
};

/// Allows resizing of a toplevel, or fixes its size to `size`. The next commit of the surface
/// applies the change.
void setResizable(xdg_toplevel* toplevel, bool isResizable, CGSize size);

}  // namespace vel::wayland
