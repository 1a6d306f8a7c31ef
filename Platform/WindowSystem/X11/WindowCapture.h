#pragma once

#include <optional>

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/WindowSystem.h"
#include "Platform/WindowSystem/X11/Connection.h"
#include "Platform/WindowSystem/X11/PixelRect.h"

namespace vel::x11 {

/// Reads the pixels of the screen.
class WindowCapture final : public NonCopyable {
 public:
  explicit WindowCapture(Connection& connection) : connection_(connection) {}

  /// Returns the pixels of the screen at `frame`, the frame of a window. The pixels include other
  /// windows in front of this window, but not a part of `frame` that is off the screen. Returns no
  /// value if all of `frame` is off the screen, or if the server's pixel format is not supported.
  /// Blocks for round trips.
  std::optional<WindowPicture> capture(PixelRect frame);

 private:
  Connection& connection_;
};

}  // namespace vel::x11
