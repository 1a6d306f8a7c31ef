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

  /// Returns the pixels of the screen at `frame`, the frame of a window. The pixels show other
  /// windows that are in front of this window. If a part of `frame` is off the screen, the result
  /// does not contain this part. Returns no value if all of `frame` is off the screen, if the
  /// server's pixel format is not supported, or if a request fails. Blocks for round trips.
  std::optional<WindowPicture> capture(PixelRect frame);

 private:
  Connection& connection_;
};

}  // namespace vel::x11
