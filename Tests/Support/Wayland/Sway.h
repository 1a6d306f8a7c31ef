#pragma once

#include <filesystem>
#include <string>

#include "Platform/Foundation/NonCopyable.h"
#include "Tests/Support/X11/Process.h"
#include "Tests/Support/X11/XClient.h"
#include "Tests/Support/X11/XServer.h"

namespace vel::test {

/// The Wayland compositor sway in a window of an Xvfb server. The screen of sway is 1024 by 768
/// pixels and begins at the upper left corner of the X screen. New windows are centred, have no
/// frame and get the focus. sway does not run as root, so root starts it as the user nobody.
class Sway : NonCopyable {
 public:
  Sway();
  ~Sway();

  /// The value of `WAYLAND_DISPLAY` for clients.
  [[nodiscard]] std::string display() const { return (folder_ / "wayland-1").string(); }
  /// Runs a command of sway until it succeeds. A command about a window succeeds when sway has
  /// shown the window.
  void run(const std::string& command) const;
  void focusWindow(const std::string& title) const { run(selectorOf(title) + "focus"); }
  void closeWindow(const std::string& title) const { run(selectorOf(title) + "kill"); }
  void resizeWindow(const std::string& title, int width, int height) const;
  /// The pixels that the screen of sway shows.
  [[nodiscard]] Picture picture(PixelRect area) const { return user_.screenPicture(area); }
  /// Moves the pointer of the seat and presses the main button.
  void click(int x, int y) { user_.click(x, y); }
  /// Moves the pointer of the seat from one point to another while the main button is pressed.
  void drag(int fromX, int fromY, int toX, int toY);
  /// Kills sway with SIGKILL, like a crash.
  void kill() { process_.kill(); }

 private:
  static std::string selectorOf(const std::string& title) { return "[title=\"^" + title + "$\"] "; }

  XServer server_;
  XClient user_;
  std::filesystem::path folder_;
  Process process_;
};

}  // namespace vel::test
