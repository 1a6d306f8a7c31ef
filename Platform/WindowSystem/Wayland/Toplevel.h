#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

#include "Platform/Foundation/Geometry.h"
#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/Wayland/Connection.h"
#include "Platform/WindowSystem/Wayland/Frame.h"
#include "Platform/WindowSystem/WindowSystem.h"

namespace vel::wayland {

/// The role xdg_toplevel of a surface, which makes the surface a window of the library. The
/// compositor shows the window while this object exists and the surface has a buffer.
class Toplevel final : public NonCopyable {
 public:
  struct Handlers {
    /// Called when the surface must get a buffer. `size` is the size that the compositor requires.
    /// If its width or height is zero, the client chooses this length.
    std::function<void(CGSize size)> configured;
    std::function<void()> closeRequested;
  };

  /// `owner` is the window in front of which the compositor keeps this window; it may be null. If
  /// `frameContext` is not null, libdecor draws the frame. Commits the surface, which must not have
  /// a buffer.
  Toplevel(Connection& connection, wl_surface* surface, const WindowDescription& description,
           xdg_toplevel* owner, const FrameContext* frameContext, Handlers handlers);
  ~Toplevel();

  [[nodiscard]] xdg_toplevel* proxy() const;
  /// True if the compositor has configured the surface. Only then may the surface have a buffer.
  [[nodiscard]] bool isConfigured() const { return isConfigured_; }
  /// True if the client chooses the size. The compositor chooses the size of a maximised or
  /// fullscreen window, and a commit with another size ends the connection.
  [[nodiscard]] bool isFloating() const;
  /// The frame that libdecor draws; null if there is no such frame.
  [[nodiscard]] const Frame* frame() const { return frame_.get(); }

  /// Shortens a title that does not fit into a request.
  void setTitle(std::string_view title);
  /// Sets the size, and allows or disables resizing by the user. If libdecor draws the frame, sets
  /// the controls of the frame. Otherwise, asks the compositor to draw a frame if the style mask
  /// has a title bar. The next commit of the surface applies the changes.
  void setStyle(NSWindowStyleMask styleMask, CGSize size);
  /// Lets the user move the window while the pointer button of `serial` is pressed.
  void move(wl_seat* seat, std::uint32_t serial) const;

 private:
  friend struct ToplevelEvents;

  void createRole(const Connection& connection, wl_surface* surface);

  Handlers handlers_;
  std::unique_ptr<Frame> frame_;
  // These objects are null if libdecor draws the frame, because libdecor then owns the role.
  Proxy<xdg_surface> surface_;
  Proxy<xdg_toplevel> toplevel_;
  Proxy<zxdg_toplevel_decoration_v1> decoration_;
  CGSize pendingSize_;  // the size in the latest configure event
  bool isPendingFloating_ = true;
  bool isFloating_ = true;  // not used if libdecor draws the frame
  bool isConfigured_ = false;
};

/// Allows resizing of a toplevel, or fixes its size to `size`. The next commit of the surface
/// applies the change.
void setResizable(xdg_toplevel* toplevel, bool isResizable, CGSize size);

}  // namespace vel::wayland
