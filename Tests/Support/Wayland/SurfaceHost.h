#pragma once

#include <wayland-client.h>
#include <xdg-shell.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Platform/Foundation/Geometry.h"
#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/NativeWindow.h"

namespace vel::test {

/// Acts as a host of the library: a client with a Wayland window in one colour. It draws in the
/// constructor, in `draw`, `drawFrame` and `resize`, and when the compositor changes the size.
class SurfaceHost : NonCopyable {
 public:
  /// Connects to the compositor, and waits until the compositor has a picture of the window.
  SurfaceHost(const std::string& display, const std::string& title, CGSize size,
              std::uint32_t color);
  ~SurfaceHost();

  [[nodiscard]] wl_display* display() const { return display_; }
  [[nodiscard]] wl_compositor* compositor() const { return compositor_; }
  /// Describes the window and its xdg_toplevel for `adoptWindow`.
  [[nodiscard]] WaylandSurface window() const;
  /// Reads and dispatches the events of the host, without blocking.
  void pump();
  /// Commits the surface with a picture of the current size. A call on another thread is allowed if
  /// the size does not change during the call.
  void draw();
  /// Requests a frame callback and draws. `frameCount` counts the callbacks that the host has
  /// received.
  void drawFrame();
  /// Changes the size and draws.
  void resize(CGSize size);
  void setFullscreen(bool isFullscreen);
  /// Destroys the window.
  void destroyWindow();

  [[nodiscard]] CGSize size() const { return size_; }
  [[nodiscard]] bool isAskedToClose() const { return isAskedToClose_; }
  /// How many times a pointer button was pressed in the surface of the host.
  [[nodiscard]] int presses() const { return presses_; }
  /// How many times a pointer button was pressed in other surfaces of the connection.
  [[nodiscard]] int pressesElsewhere() const { return pressesElsewhere_; }
  /// True if the seat has a touch screen.
  [[nodiscard]] bool hasTouch() const { return touch_ != nullptr; }
  /// The number of touches in the surface of the host.
  [[nodiscard]] int touches() const { return touches_; }
  /// The number of touches in other surfaces of the connection.
  [[nodiscard]] int touchesElsewhere() const { return touchesElsewhere_; }
  [[nodiscard]] int frameCount() const { return frameCount_; }
  /// True if the pointer has entered a surface that has user data and that the host did not
  /// create. A toolkit would mistake this data for its own data.
  [[nodiscard]] bool hasEnteredForeignSurfaceWithData() const {
    return hasEnteredForeignSurfaceWithData_;
  }
  /// The number of `wl_surface.enter` events of the host's surface. The host binds no output, so
  /// each of these events names an output that the host does not know.
  [[nodiscard]] int outputEntries() const { return outputEntries_; }
  /// The number of events that the host has received and not ignored.
  [[nodiscard]] int eventCount() const { return eventCount_; }

 private:
  friend struct HostEvents;

  [[nodiscard]] wl_buffer* makeBuffer(int width, int height) const;

  wl_display* display_;
  wl_registry* registry_;
  wl_compositor* compositor_ = nullptr;
  wl_shm* shm_ = nullptr;
  xdg_wm_base* windowManager_ = nullptr;
  wl_seat* seat_ = nullptr;
  wl_pointer* pointer_ = nullptr;
  wl_touch* touch_ = nullptr;
  std::vector<wl_buffer*> buffers_;
  CGSize bufferSize_;  // the size of the newest buffer
  wl_surface* surface_ = nullptr;
  xdg_surface* role_ = nullptr;  // the xdg_surface of `surface_`
  xdg_toplevel* toplevel_ = nullptr;
  CGSize size_;
  CGSize ownSize_;      // used when the compositor sends a size of zero
  CGSize pendingSize_;  // the size in the latest configure event
  std::uint32_t color_;
  bool isConfigured_ = false;
  bool isAskedToClose_ = false;
  bool isPointerInside_ = false;
  bool hasEnteredForeignSurfaceWithData_ = false;
  int presses_ = 0;
  int pressesElsewhere_ = 0;
  int touches_ = 0;
  int touchesElsewhere_ = 0;
  int frameCount_ = 0;
  int outputEntries_ = 0;
  int eventCount_ = 0;
};

}  // namespace vel::test
