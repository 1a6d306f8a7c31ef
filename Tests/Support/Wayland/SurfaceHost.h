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

/// Acts as a host of the library: a client with a Wayland window in one colour.
class SurfaceHost : NonCopyable {
 public:
  /// Connects to the compositor, opens the window, draws, and waits until the compositor has
  /// handled the requests.
  SurfaceHost(const std::string& display, const std::string& title, CGSize size,
              std::uint32_t color);
  ~SurfaceHost();

  [[nodiscard]] wl_display* display() const { return display_; }
  [[nodiscard]] wl_compositor* compositor() const { return compositor_; }
  /// Describes the window and its xdg_toplevel for `adoptWindow`.
  [[nodiscard]] WaylandSurface window() const;
  /// Reads and dispatches the events of the host, without blocking. Draws if the compositor has
  /// changed the size.
  void pump();
  /// Commits the surface with a buffer of the current size. Another thread may call this function
  /// if the size does not change during the call.
  void draw();
  /// Requests a frame callback and draws.
  void drawFrame();
  /// Changes the size and draws.
  void resize(CGSize size);
  void setFullscreen(bool isFullscreen);
  void destroyWindow();

  [[nodiscard]] CGSize size() const { return size_; }
  [[nodiscard]] bool isAskedToClose() const { return isAskedToClose_; }
  /// The number of presses of pointer buttons in the surface of the host.
  [[nodiscard]] int presses() const { return presses_; }
  /// The number of presses of pointer buttons in other surfaces of the connection.
  [[nodiscard]] int pressesElsewhere() const { return pressesElsewhere_; }
  /// True if the seat has a touch screen.
  [[nodiscard]] bool hasTouch() const { return touch_ != nullptr; }
  /// The number of touches in the surface of the host.
  [[nodiscard]] int touches() const { return touches_; }
  /// The number of touches in other surfaces of the connection.
  [[nodiscard]] int touchesElsewhere() const { return touchesElsewhere_; }
  /// The number of frame callbacks that the host has received.
  [[nodiscard]] int frameCount() const { return frameCount_; }
  /// True if the pointer has entered another owner's surface that has user data. A toolkit would
  /// mistake this data for its own data.
  [[nodiscard]] bool hasEnteredForeignSurfaceWithData() const {
    return hasEnteredForeignSurfaceWithData_;
  }
  /// The number of `wl_surface.enter` events of the host's surface. The host itself binds no
  /// output.
  [[nodiscard]] int outputEntries() const { return outputEntries_; }
  /// The number of events that the host has handled. Ignored events do not count.
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
  CGSize ownSize_;      // the size if the compositor sends a size of zero
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
