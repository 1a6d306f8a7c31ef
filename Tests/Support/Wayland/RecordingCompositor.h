#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "Platform/Foundation/Geometry.h"
#include "Platform/Foundation/NonCopyable.h"

namespace vel::test {

/// The state of a wl_surface after the latest commit of the surface. The modal state and the title
/// change without a commit.
struct SurfaceRecord {
  std::uint32_t id = 0;      // the id of the protocol object
  std::uint32_t parent = 0;  // the id of the parent of a subsurface; 0 for other surfaces
  CGPoint position;          // of a subsurface, relative to the parent
  CGSize bufferSize;         // in pixels; zero without a buffer
  int bufferScale = 1;
  CGSize destination;  // of wp_viewport; zero if it is not set
  int commitCount = 0;
  bool isModal = false;  // of xdg_dialog_v1
  int titleLength = 0;   // of xdg_toplevel, in bytes

  /// The size in surface coordinates.
  [[nodiscard]] CGSize size() const;
};

/// A Wayland compositor for one client. It draws nothing. It records the requests of the client and
/// sends the events that the test chooses. It runs in a child process, because a client can block
/// until the compositor replies. Each function except `display` first handles all requests
/// that the client has flushed. When the function returns, the client can read the events.
class RecordingCompositor : NonCopyable {
 public:
  /// Starts with wl_compositor, wl_subcompositor and wl_shm.
  RecordingCompositor();
  ~RecordingCompositor();

  /// The value of `WAYLAND_DISPLAY` for the client.
  [[nodiscard]] std::string display() const { return (folder_ / "wayland-1").string(); }

  /// Announces a global object and returns its number. Pass this number as `global`, `output` or
  /// `seat`.
  int addGlobal(const std::string& interface);
  int addOutput(int scale);
  /// Adds a seat with a keyboard and a pointer.
  int addSeat() { return addGlobal("wl_seat"); }
  void removeGlobal(int global);

  // The functions from `setOutputScale` to `requestClose` send events. `surface` is the id of a
  // surface.

  void setOutputScale(int output, int scale);
  void enterOutput(std::uint32_t surface, int output);
  void leaveOutput(std::uint32_t surface, int output);
  /// Sends the scale of wp_fractional_scale_v1.
  void setScale(std::uint32_t surface, double scale);
  void enterKeyboard(int seat, std::uint32_t surface);
  void leaveKeyboard(int seat, std::uint32_t surface);
  /// Moves the pointer into the surface and presses the main button.
  void pressButton(int seat, std::uint32_t surface);
  void configure(std::uint32_t surface, CGSize size);
  void configureMaximised(std::uint32_t surface, CGSize size);
  void configureFullscreen(std::uint32_t surface, CGSize size);
  void requestClose(std::uint32_t surface);

  /// From now on, wl_shm.create_pool causes a protocol error.
  void refusePools();

  /// Handles the requests that the client has flushed, and does nothing else.
  void handleRequests() { execute("surfaces"); }
  /// The surfaces in the order of their creation.
  std::vector<SurfaceRecord> surfaces();
  /// The record of one surface. Throws if the surface does not exist.
  SurfaceRecord surface(std::uint32_t id);
  /// Returns the subsurfaces of `parent`. If `parent` is 0, returns the surfaces that are not
  /// subsurfaces.
  std::vector<SurfaceRecord> children(std::uint32_t parent);
  /// The number of protocol objects of each interface.
  std::map<std::string, int> objects();
  /// Returns the names of the requests that the client has sent since the previous call, such as
  /// "xdg_toplevel.destroy". Omits names that do not begin with `prefix`.
  std::vector<std::string> takeRequests(const std::string& prefix);

 private:
  /// Sends a command to the compositor and returns its reply.
  std::string execute(const std::string& command);

  std::filesystem::path folder_;  // the XDG_RUNTIME_DIR of the compositor
  int control_ = -1;              // a socket for commands
  pid_t process_ = 0;
};

}  // namespace vel::test
