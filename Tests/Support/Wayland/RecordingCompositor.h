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

/// The state of a wl_surface. A commit updates the state; only `isModal` and `titleLength` change
/// without a commit.
struct SurfaceRecord {
  std::uint32_t id = 0;      // the id of the wl_surface
  std::uint32_t parent = 0;  // the id of the parent; 0 if the surface is not a subsurface
  CGPoint position;          // relative to the parent; zero if the surface is not a subsurface
  CGSize bufferSize;         // in pixels; zero without a buffer
  int bufferScale = 1;
  CGSize destination;  // the size that wp_viewport sets; zero if not set
  int commitCount = 0;
  bool isModal = false;  // the state that xdg_dialog_v1 sets
  int titleLength = 0;   // the length of the xdg_toplevel's title, in bytes

  /// The size of the surface, in surface coordinates.
  [[nodiscard]] CGSize size() const;
};

/// A Wayland compositor for one client. It draws nothing. It records the requests of the client and
/// sends the events that the test chooses. It runs in a child process, so that the client may block
/// until the compositor replies. Each function except `display` first handles all requests that the
/// client has flushed. The function sends all events before it returns.
class RecordingCompositor : NonCopyable {
 public:
  /// Starts with wl_compositor, wl_subcompositor and wl_shm.
  RecordingCompositor();
  ~RecordingCompositor();

  /// The value of `WAYLAND_DISPLAY` for the client.
  [[nodiscard]] std::string display() const { return (folder_ / "wayland-1").string(); }

  /// Announces a global object and returns its number. Other functions take this number as
  /// `global`, `output` or `seat`.
  int addGlobal(const std::string& interface);
  int addOutput(int scale);
  /// Adds a seat with a keyboard and a pointer.
  int addSeat() { return addGlobal("wl_seat"); }
  void removeGlobal(int global);

  // The functions from `setOutputScale` to `requestClose` send events to the client. `surface` is
  // the id of a wl_surface.

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

  /// Makes each later wl_shm.create_pool request fail with a protocol error.
  void refusePools();

  /// Handles the requests that the client has flushed, as each command does.
  void handleRequests() { execute("surfaces"); }
  /// The surfaces in the order of their creation.
  std::vector<SurfaceRecord> surfaces();
  /// The record of one surface. Throws if the surface does not exist.
  SurfaceRecord surface(std::uint32_t id);
  /// Returns the subsurfaces of `parent`. If `parent` is 0, returns the surfaces that are not
  /// subsurfaces.
  std::vector<SurfaceRecord> children(std::uint32_t parent);
  /// The number of the client's protocol objects, by interface.
  std::map<std::string, int> objects();
  /// Returns the names of the recorded requests that begin with `prefix`, such as
  /// "xdg_toplevel.destroy". Then forgets all recorded requests.
  std::vector<std::string> takeRequests(const std::string& prefix);

 private:
  /// Sends a command to the child process and returns the reply.
  std::string execute(const std::string& command);

  std::filesystem::path folder_;  // the XDG_RUNTIME_DIR of the compositor
  int control_ = -1;              // the socket for commands to the child process
  pid_t process_ = 0;             // the child process
};

}  // namespace vel::test
