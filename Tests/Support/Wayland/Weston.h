#pragma once

#include <string>

#include "Tests/Support/Wayland/Compositor.h"

namespace vel::test {

/// The compositor weston. It loads the module weston-control.c, which executes the commands of the
/// tests.
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
  /// Moves the pointer to the lower right corner of the screen, where only one pixel of the pointer
  /// is visible. Pictures of the screen contain the pointer.
  void hidePointer();
  void addTouchScreen() const { run("add-touch-screen"); }
  /// Touches the touch screen at a point and lifts the finger.
  void touch(int x, int y) const;

 private:
  /// Sends a command to the module until the command succeeds: a command for a window fails until
  /// the window exists. Throws after `kTimeout`.
  void run(const std::string& command) const;
};

}  // namespace vel::test
