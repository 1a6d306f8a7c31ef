#pragma once

#include <string>

#include "Tests/Support/Wayland/Compositor.h"

namespace vel::test {

/// The compositor sway. Windows have no frame. If the test runs as root, sway runs as the user
/// nobody.
class Sway : public Compositor {
 public:
  struct Options {
    /// With two outputs, the second one is to the right of the first one.
    int outputCount = 1;
    bool hasXwayland = false;
  };

  Sway() : Sway(Options()) {}
  explicit Sway(const Options& options);

  /// Repeats a sway command until the command succeeds. A command about a window fails until sway
  /// shows the window. Throws if the command still fails after `kTimeout`.
  void run(const std::string& command) const;
  void focusWindow(const std::string& title) const override { run(selectorOf(title) + "focus"); }
  void closeWindow(const std::string& title) const override { run(selectorOf(title) + "kill"); }
  void resizeWindow(const std::string& title, int width, int height) const override;
  void moveWindow(const std::string& title, int x, int y) const override;
  [[nodiscard]] std::string xwaylandDisplay() const override;

 private:
  static std::string selectorOf(const std::string& title) { return "[title=\"^" + title + "$\"] "; }
  void placeSecondOutput();
};

}  // namespace vel::test
