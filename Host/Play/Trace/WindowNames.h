#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/AppKit/NSWindow.h"

namespace vel::host {

/// The names of the windows in a scenario. The caller must add every window of the host except
/// modal windows and sheets: the first call of `nameOf` for one of these creates a name such as
/// "sheet-1". Does not keep the windows alive.
class WindowNames {
 public:
  void add(const Strong<NSWindow>& window, std::string_view name);

  [[nodiscard]] std::string nameOf(NSWindow& window);
  /// Returns `std::nullopt` if `window` is null.
  [[nodiscard]] std::optional<std::string> nameOf(const Strong<NSWindow>& window);

  /// Returns the window with this name, or null if no such window exists.
  [[nodiscard]] Strong<NSWindow> window(std::string_view name) const;

 private:
  struct Entry {
    Weak<NSWindow> window;
    std::string name;
  };
  std::vector<Entry> entries_;
  int modalWindowCount_ = 0;
  int sheetCount_ = 0;
};

}  // namespace vel::host
