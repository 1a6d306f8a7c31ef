#pragma once

#include <string>

#include "Tests/Support/Wayland/Compositor.h"

namespace vel::test {

/// The compositor sway. It adds no borders to windows. If the test runs as root, the user `nobody`
/// runs sway.
class Sway : public Compositor {
 public:
  struct Options {
    /// A second output is to the right of the first output.
    int outputCount = 1;
    bool hasXwayland = false;
  };

  Sway() : Sway(Options()) {}
  explicit Sway(const Options& options);

  /// Runs a sway command. Repeats a failed command, because a window that it names may not be on
  /// screen yet. Throws if the command still fails after `kTimeout`.
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
