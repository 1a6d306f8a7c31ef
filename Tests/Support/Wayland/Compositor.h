#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "Platform/Foundation/NonCopyable.h"
#include "Tests/Support/X11/Process.h"
#include "Tests/Support/X11/XClient.h"
#include "Tests/Support/X11/XServer.h"

namespace vel::test {

/// A Wayland compositor that runs in a window of an Xvfb server. This window is 1024 by 768 pixels
/// and is in the upper left corner of the X screen. All coordinates are pixels of the X screen. The
/// compositor centres a new window of a client and gives it the focus.
class Compositor : NonCopyable {
 public:
  virtual ~Compositor();

  /// The value of `WAYLAND_DISPLAY` for clients.
  [[nodiscard]] std::string display() const { return (folder_ / "wayland-1").string(); }
  virtual void focusWindow(const std::string& title) const = 0;
  /// Asks the client to close the window.
  virtual void closeWindow(const std::string& title) const = 0;
  virtual void resizeWindow(const std::string& title, int width, int height) const = 0;
  /// Moves the upper left corner of the window to this point.
  virtual void moveWindow(const std::string& title, int x, int y) const = 0;
  /// The display name for X clients. The compositor starts Xwayland when the first X client
  /// connects. Throws if the compositor was started without Xwayland.
  [[nodiscard]] virtual std::string xwaylandDisplay() const = 0;

  /// The pixels of this area of the X screen.
  [[nodiscard]] Picture picture(PixelRect area) const { return user_.screenPicture(area); }
  /// The pixels of the compositor's window.
  [[nodiscard]] Picture picture() const { return picture({0, 0, 1024, 768}); }
  /// Clicks the main button at this point.
  virtual void click(int x, int y) { user_.click(x, y); }
  void movePointer(int x, int y) { user_.movePointer(x, y); }
  /// Presses the main button.
  void pressButton() { user_.pressButton(); }
  void releaseButton() { user_.releaseButton(); }
  /// Moves the pointer from one point to another while the main button is pressed.
  void drag(int fromX, int fromY, int toX, int toY);
  /// The X client that acts as the user. It is connected to the Xvfb server.
  [[nodiscard]] XClient& user() { return user_; }
  /// Kills the compositor with SIGKILL to simulate a crash.
  void kill() { process_.kill(); }

 protected:
  /// Starts Xvfb with these additional arguments.
  explicit Compositor(const std::vector<std::string>& serverArguments = {});

  [[nodiscard]] const XServer& server() const { return server_; }
  /// The XDG_RUNTIME_DIR of the compositor.
  [[nodiscard]] const std::filesystem::path& folder() const { return folder_; }
  /// Starts the compositor with this command. Does not wait until the compositor accepts
  /// clients.
  void start(std::vector<std::string> command);

 private:
  XServer server_;
  XClient user_;
  std::filesystem::path folder_;
  Process process_;
};

enum class CompositorKind : std::uint8_t { Sway, Weston };

/// Starts a compositor and waits until it accepts clients.
std::unique_ptr<Compositor> startCompositor(CompositorKind kind);
/// Does the same as `startCompositor`. The compositor also accepts X clients, through Xwayland.
std::unique_ptr<Compositor> startCompositorWithXwayland(CompositorKind kind);

/// "Sway" or "Weston", for names of tests.
std::string nameOf(CompositorKind kind);
inline void PrintTo(CompositorKind kind, std::ostream* out) { *out << nameOf(kind); }

}  // namespace vel::test
