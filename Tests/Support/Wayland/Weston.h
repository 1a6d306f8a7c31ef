#pragma once

#include <string>

#include "Tests/Support/Wayland/Compositor.h"

namespace vel::test {

/// The compositor weston. weston has no commands for windows, so it loads the module
/// weston-control.c, which adds such commands.
class Weston : public Compositor {
 public:
  struct Options {
    bool hasXwayland = false;
  };

  Weston() : Weston(Options()) {}
  explicit Weston(const Options& options);

  void focusWindow(const std::string& title) const override { run("focus " + title); }
  void closeWindow(const std::string& title) const override { run("close " + title); }
  void resizeWindow(const std::string& title, int width, int height) const override;
  void moveWindow(const std::string& title, int x, int y) const override;
  [[nodiscard]] std::string xwaylandDisplay() const override;
  void click(int x, int y) override;
  /// Pictures of the screen contain the pointer. This function moves the pointer to the lower right
  /// corner of the screen, where only one pixel of the pointer is visible.
  void hidePointer();
  void addTouchScreen() const { run("add-touch-screen"); }
  /// Touches the touch screen at a point and lifts the finger.
  void touch(int x, int y) const;

 private:
  /// Repeats a command of the module until the command succeeds. Throws after `kTimeout`. A command
  /// about a window fails until the window exists.
  void run(const std::string& command) const;
};

}  // namespace vel::test
