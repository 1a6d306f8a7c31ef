#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/AppKit/NSWindow.h"

namespace vel::host {

/// What the windows of a play are called. The host names its own; those that presentations make are
/// named when they are first asked for. Windows are not kept alive.
class WindowNames {
 public:
  void give(const Strong<NSWindow>& window, std::string_view name);

  [[nodiscard]] std::string nameOf(NSWindow& window);
  /// The same; nothing for none.
  [[nodiscard]] std::optional<std::string> nameOf(const Strong<NSWindow>& window);

  /// The window of that name; none if there is none, or no longer.
  [[nodiscard]] Strong<NSWindow> window(std::string_view name) const;

 private:
  struct Entry {
    Weak<NSWindow> window;
    std::string name;
  };
  std::vector<Entry> entries_;
  int modalWindows_ = 0;
  int sheets_ = 0;
};

}  // namespace vel::host
